// The one mechanism behind every generic entry point by length: a constant
// 63-entry table of sized kernels indexed by len - 2, built with the
// header's KFPG_FOR_LENGTHS X-macro, and a range check before anything else.
//
//   #define FWD_32(N) kfpgDFTFwd_CToC_##N##_32fc,
//   const kfpg::LengthTable<kfp32fc, kfp32fc> kFwd32 = {KFPG_FOR_LENGTHS(FWD_32)};
//   ... return kfpg::dispatchByLength(kFwd32, pSrc, pDst, len, flag);
#pragma once

#include "kfpgen.h"

namespace kfpg {

template <class Src, class Dst>
using SizedKernel = KfpStatus (*)(const Src* pSrc, Dst* pDst, int flag);

template <class Src, class Dst>
using LengthTable = SizedKernel<Src, Dst>[63];

// len outside 2..64 (as an unsigned len - 2 above 62): StatusSizeError;
// otherwise the sized kernel's status, arguments passed through unchanged.
template <class Src, class Dst>
inline KfpStatus dispatchByLength(const LengthTable<Src, Dst>& table, const Src* pSrc, Dst* pDst, int len, int flag) {
    const unsigned index = static_cast<unsigned>(len) - 2u;
    if (index > 62u) return StatusSizeError;
    return table[index](pSrc, pDst, flag);
}

}  // namespace kfpg
