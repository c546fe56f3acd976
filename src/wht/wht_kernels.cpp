// The exported kernels kfpgWHT_<order>_32f/_64f. Orders 4..13 (and order 3
// in 64f) test both arrays for 16-byte alignment first and hand a misaligned
// call unchanged to their unaligned path; orders 1..3 work element by
// element and have one path.
#include "wht/wht_kernel.h"

namespace {
using kfpg::wht::Access;
using kfpg::wht::checkedWht;
using kfpg::wht::misaligned;
}  // namespace

#define KFPG_WHT_ONE_PATH(K, T, SUFFIX)                                                               \
    extern "C" KfpStatus kfpgWHT_##K##_##SUFFIX(const T* pSrc, T* pDst, int flag, unsigned char* pBuffer) { \
        return checkedWht<K, T, Access::Aligned>(pSrc, pDst, flag, pBuffer);                          \
    }

// The unaligned path is a function of its own, kept out of line so that the
// aligned kernel stays small.
#define KFPG_WHT_TWO_PATHS(K, T, SUFFIX)                                                                        \
    extern "C" __attribute__((noinline)) KfpStatus owngWHT_##K##_##SUFFIX##_unaligned(                          \
        const T* pSrc, T* pDst, int flag, unsigned char* pBuffer) {                                             \
        return checkedWht<K, T, Access::Unaligned>(pSrc, pDst, flag, pBuffer);                                  \
    }                                                                                                           \
    extern "C" KfpStatus kfpgWHT_##K##_##SUFFIX(const T* pSrc, T* pDst, int flag, unsigned char* pBuffer) {     \
        if (misaligned(pSrc) || misaligned(pDst)) return owngWHT_##K##_##SUFFIX##_unaligned(pSrc, pDst, flag, pBuffer); \
        return checkedWht<K, T, Access::Aligned>(pSrc, pDst, flag, pBuffer);                                    \
    }

#define KFPG_WHT_BOTH_TYPES(MACRO, K) MACRO(K, kfp32f, 32f) MACRO(K, kfp64f, 64f)

KFPG_WHT_BOTH_TYPES(KFPG_WHT_ONE_PATH, 1)
KFPG_WHT_BOTH_TYPES(KFPG_WHT_ONE_PATH, 2)
KFPG_WHT_ONE_PATH(3, kfp32f, 32f)

// Order 3 in 64f keeps its unaligned path inside the kernel.
extern "C" KfpStatus kfpgWHT_3_64f(const kfp64f* pSrc, kfp64f* pDst, int flag, unsigned char* pBuffer) {
    if (misaligned(pSrc) || misaligned(pDst)) return checkedWht<3, kfp64f, Access::Unaligned>(pSrc, pDst, flag, pBuffer);
    return checkedWht<3, kfp64f, Access::Aligned>(pSrc, pDst, flag, pBuffer);
}

KFPG_WHT_BOTH_TYPES(KFPG_WHT_TWO_PATHS, 4)
KFPG_WHT_BOTH_TYPES(KFPG_WHT_TWO_PATHS, 5)
KFPG_WHT_BOTH_TYPES(KFPG_WHT_TWO_PATHS, 6)
KFPG_WHT_BOTH_TYPES(KFPG_WHT_TWO_PATHS, 7)
KFPG_WHT_BOTH_TYPES(KFPG_WHT_TWO_PATHS, 8)
KFPG_WHT_BOTH_TYPES(KFPG_WHT_TWO_PATHS, 9)
KFPG_WHT_BOTH_TYPES(KFPG_WHT_TWO_PATHS, 10)
KFPG_WHT_BOTH_TYPES(KFPG_WHT_TWO_PATHS, 11)
KFPG_WHT_BOTH_TYPES(KFPG_WHT_TWO_PATHS, 12)
KFPG_WHT_BOTH_TYPES(KFPG_WHT_TWO_PATHS, 13)
