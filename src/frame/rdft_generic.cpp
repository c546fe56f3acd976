// Generic real DFT entries: the length picks the sized kernel.
#include "frame/length_dispatch.h"

namespace {

#define KFPG_RDFT_ENTRY(N, NAME, T) kfpg##NAME##_##N##_##T,
#define KFPG_RDFT_TABLE(NAME, T)                                                   \
    const kfpg::LengthTable<kfp##T, kfp##T> k##NAME##_##T = {                       \
        KFPG_FOR_LENGTHS(KFPG_RDFT_##NAME##_##T)};

#define KFPG_RDFT_DFTFwd_RToCCS_32f(N) KFPG_RDFT_ENTRY(N, DFTFwd_RToCCS, 32f)
#define KFPG_RDFT_DFTFwd_RToCCS_64f(N) KFPG_RDFT_ENTRY(N, DFTFwd_RToCCS, 64f)
#define KFPG_RDFT_DFTFwd_RToPack_32f(N) KFPG_RDFT_ENTRY(N, DFTFwd_RToPack, 32f)
#define KFPG_RDFT_DFTFwd_RToPack_64f(N) KFPG_RDFT_ENTRY(N, DFTFwd_RToPack, 64f)
#define KFPG_RDFT_DFTFwd_RToPerm_32f(N) KFPG_RDFT_ENTRY(N, DFTFwd_RToPerm, 32f)
#define KFPG_RDFT_DFTFwd_RToPerm_64f(N) KFPG_RDFT_ENTRY(N, DFTFwd_RToPerm, 64f)

KFPG_RDFT_TABLE(DFTFwd_RToCCS, 32f)
KFPG_RDFT_TABLE(DFTFwd_RToCCS, 64f)
KFPG_RDFT_TABLE(DFTFwd_RToPack, 32f)
KFPG_RDFT_TABLE(DFTFwd_RToPack, 64f)
KFPG_RDFT_TABLE(DFTFwd_RToPerm, 32f)
KFPG_RDFT_TABLE(DFTFwd_RToPerm, 64f)

}  // namespace

#define KFPG_RDFT_GENERIC(NAME, T)                                                                  \
    extern "C" KfpStatus kfpg##NAME##_##T(const kfp##T* pSrc, kfp##T* pDst, int len, int flag) { \
        return kfpg::dispatchByLength(k##NAME##_##T, pSrc, pDst, len, flag);                        \
    }

KFPG_RDFT_GENERIC(DFTFwd_RToCCS, 32f)
KFPG_RDFT_GENERIC(DFTFwd_RToCCS, 64f)
KFPG_RDFT_GENERIC(DFTFwd_RToPack, 32f)
KFPG_RDFT_GENERIC(DFTFwd_RToPack, 64f)
KFPG_RDFT_GENERIC(DFTFwd_RToPerm, 32f)
KFPG_RDFT_GENERIC(DFTFwd_RToPerm, 64f)
