// Generic real DFT entries, both directions: the length picks the sized kernel.
#include "frame/length_dispatch.h"

// One sized kernel per length, for KFPG_FOR_LENGTHS.
#define KFPG_FWD_CCS_32(N) kfpgDFTFwd_RToCCS_##N##_32f,
#define KFPG_FWD_CCS_64(N) kfpgDFTFwd_RToCCS_##N##_64f,
#define KFPG_FWD_PACK_32(N) kfpgDFTFwd_RToPack_##N##_32f,
#define KFPG_FWD_PACK_64(N) kfpgDFTFwd_RToPack_##N##_64f,
#define KFPG_FWD_PERM_32(N) kfpgDFTFwd_RToPerm_##N##_32f,
#define KFPG_FWD_PERM_64(N) kfpgDFTFwd_RToPerm_##N##_64f,
#define KFPG_INV_CCS_32(N) kfpgDFTInv_CCSToR_##N##_32f,
#define KFPG_INV_CCS_64(N) kfpgDFTInv_CCSToR_##N##_64f,
#define KFPG_INV_PACK_32(N) kfpgDFTInv_PackToR_##N##_32f,
#define KFPG_INV_PACK_64(N) kfpgDFTInv_PackToR_##N##_64f,
#define KFPG_INV_PERM_32(N) kfpgDFTInv_PermToR_##N##_32f,
#define KFPG_INV_PERM_64(N) kfpgDFTInv_PermToR_##N##_64f,

// The generic entry `name` over the sized kernels that `entry` lists.
#define KFPG_RDFT_GENERIC(name, T, entry)                                                  \
    extern "C" KfpStatus name(const kfp##T* pSrc, kfp##T* pDst, int len, int flag) {     \
        static const kfpg::LengthTable<kfp##T, kfp##T> table = {KFPG_FOR_LENGTHS(entry)}; \
        return kfpg::dispatchByLength(table, pSrc, pDst, len, flag);                      \
    }

KFPG_RDFT_GENERIC(kfpgDFTFwd_RToCCS_32f, 32f, KFPG_FWD_CCS_32)
KFPG_RDFT_GENERIC(kfpgDFTFwd_RToCCS_64f, 64f, KFPG_FWD_CCS_64)
KFPG_RDFT_GENERIC(kfpgDFTFwd_RToPack_32f, 32f, KFPG_FWD_PACK_32)
KFPG_RDFT_GENERIC(kfpgDFTFwd_RToPack_64f, 64f, KFPG_FWD_PACK_64)
KFPG_RDFT_GENERIC(kfpgDFTFwd_RToPerm_32f, 32f, KFPG_FWD_PERM_32)
KFPG_RDFT_GENERIC(kfpgDFTFwd_RToPerm_64f, 64f, KFPG_FWD_PERM_64)
KFPG_RDFT_GENERIC(kfpgDFTInv_CCSToR_32f, 32f, KFPG_INV_CCS_32)
KFPG_RDFT_GENERIC(kfpgDFTInv_CCSToR_64f, 64f, KFPG_INV_CCS_64)
KFPG_RDFT_GENERIC(kfpgDFTInv_PackToR_32f, 32f, KFPG_INV_PACK_32)
KFPG_RDFT_GENERIC(kfpgDFTInv_PackToR_64f, 64f, KFPG_INV_PACK_64)
KFPG_RDFT_GENERIC(kfpgDFTInv_PermToR_32f, 32f, KFPG_INV_PERM_32)
KFPG_RDFT_GENERIC(kfpgDFTInv_PermToR_64f, 64f, KFPG_INV_PERM_64)
