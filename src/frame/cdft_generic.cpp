// Generic complex DFT entries: the length picks the sized kernel.
#include "frame/length_dispatch.h"

namespace {

#define KFPG_CDFT_FWD_32(N) kfpgDFTFwd_CToC_##N##_32fc,
#define KFPG_CDFT_FWD_64(N) kfpgDFTFwd_CToC_##N##_64fc,
#define KFPG_CDFT_INV_32(N) kfpgDFTInv_CToC_##N##_32fc,
#define KFPG_CDFT_INV_64(N) kfpgDFTInv_CToC_##N##_64fc,

const kfpg::LengthTable<kfp32fc, kfp32fc> kForward32 = {KFPG_FOR_LENGTHS(KFPG_CDFT_FWD_32)};
const kfpg::LengthTable<kfp64fc, kfp64fc> kForward64 = {KFPG_FOR_LENGTHS(KFPG_CDFT_FWD_64)};
const kfpg::LengthTable<kfp32fc, kfp32fc> kInverse32 = {KFPG_FOR_LENGTHS(KFPG_CDFT_INV_32)};
const kfpg::LengthTable<kfp64fc, kfp64fc> kInverse64 = {KFPG_FOR_LENGTHS(KFPG_CDFT_INV_64)};

}  // namespace

extern "C" KfpStatus kfpgDFTFwd_CToC_32fc(const kfp32fc* pSrc, kfp32fc* pDst, int len, int flag) {
    return kfpg::dispatchByLength(kForward32, pSrc, pDst, len, flag);
}

extern "C" KfpStatus kfpgDFTFwd_CToC_64fc(const kfp64fc* pSrc, kfp64fc* pDst, int len, int flag) {
    return kfpg::dispatchByLength(kForward64, pSrc, pDst, len, flag);
}

extern "C" KfpStatus kfpgDFTInv_CToC_32fc(const kfp32fc* pSrc, kfp32fc* pDst, int len, int flag) {
    return kfpg::dispatchByLength(kInverse32, pSrc, pDst, len, flag);
}

extern "C" KfpStatus kfpgDFTInv_CToC_64fc(const kfp64fc* pSrc, kfp64fc* pDst, int len, int flag) {
    return kfpg::dispatchByLength(kInverse64, pSrc, pDst, len, flag);
}
