// Generic inverse real DFT entries: the length picks the sized kernel.
#include "frame/length_dispatch.h"

namespace {

#define KFPG_RDFT_INV_ENTRY(N, NAME, T) kfpg##NAME##_##N##_##T,
#define KFPG_RDFT_INV_TABLE(NAME, T)                                              \
    const kfpg::LengthTable<kfp##T, kfp##T> k##NAME##_##T = {                      \
        KFPG_FOR_LENGTHS(KFPG_RDFT_INV_##NAME##_##T)};

#define KFPG_RDFT_INV_DFTInv_CCSToR_32f(N) KFPG_RDFT_INV_ENTRY(N, DFTInv_CCSToR, 32f)
#define KFPG_RDFT_INV_DFTInv_CCSToR_64f(N) KFPG_RDFT_INV_ENTRY(N, DFTInv_CCSToR, 64f)
#define KFPG_RDFT_INV_DFTInv_PackToR_32f(N) KFPG_RDFT_INV_ENTRY(N, DFTInv_PackToR, 32f)
#define KFPG_RDFT_INV_DFTInv_PackToR_64f(N) KFPG_RDFT_INV_ENTRY(N, DFTInv_PackToR, 64f)
#define KFPG_RDFT_INV_DFTInv_PermToR_32f(N) KFPG_RDFT_INV_ENTRY(N, DFTInv_PermToR, 32f)
#define KFPG_RDFT_INV_DFTInv_PermToR_64f(N) KFPG_RDFT_INV_ENTRY(N, DFTInv_PermToR, 64f)

KFPG_RDFT_INV_TABLE(DFTInv_CCSToR, 32f)
KFPG_RDFT_INV_TABLE(DFTInv_CCSToR, 64f)
KFPG_RDFT_INV_TABLE(DFTInv_PackToR, 32f)
KFPG_RDFT_INV_TABLE(DFTInv_PackToR, 64f)
KFPG_RDFT_INV_TABLE(DFTInv_PermToR, 32f)
KFPG_RDFT_INV_TABLE(DFTInv_PermToR, 64f)

}  // namespace

#define KFPG_RDFT_INV_GENERIC(NAME, T)                                                              \
    extern "C" KfpStatus kfpg##NAME##_##T(const kfp##T* pSrc, kfp##T* pDst, int len, int flag) { \
        return kfpg::dispatchByLength(k##NAME##_##T, pSrc, pDst, len, flag);                        \
    }

KFPG_RDFT_INV_GENERIC(DFTInv_CCSToR, 32f)
KFPG_RDFT_INV_GENERIC(DFTInv_CCSToR, 64f)
KFPG_RDFT_INV_GENERIC(DFTInv_PackToR, 32f)
KFPG_RDFT_INV_GENERIC(DFTInv_PackToR, 64f)
KFPG_RDFT_INV_GENERIC(DFTInv_PermToR, 32f)
KFPG_RDFT_INV_GENERIC(DFTInv_PermToR, 64f)
