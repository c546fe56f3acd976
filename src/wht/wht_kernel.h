// The argument checks and buffer handling every WHT kernel shares, in their
// fixed order: (alignment, in the exported kernel) null pointers, flag, then
// for orders 8..13 a missing work buffer taken from kfpMalloc for the
// duration of the call. The macros define the exported kernels around the
// paths of an order.
#pragma once

#include <cstdint>

#include "kfpcore.h"
#include "kfpgen.h"
#include "wht/wht_blocked.h"
#include "wht/wht_layout.h"
#include "wht/wht_scale.h"

namespace kfpg::wht {

inline bool misaligned(const void* p) { return reinterpret_cast<std::uintptr_t>(p) % 16 != 0; }

template <int K, class T, class Path>
inline KfpStatus checkedWht(const T* src, T* dst, int flag, unsigned char* buffer) {
    if (!src || !dst) return StatusNullPointer;
    T s;
    if (!scaleFor<T, K>(flag, s)) return StatusFlagError;
    if constexpr (K <= kMaxLineOrder) {
        Path::line(src, dst, s);
    } else {
        // The allocation is not tested: there is no status for its failure.
        unsigned char* own = buffer ? nullptr : static_cast<unsigned char*>(kfpMalloc(bufferBytes<T>(K)));
        blockedWht<K, T, Path>(src, dst, s, reinterpret_cast<T*>(buffer ? buffer : own));
        if (!buffer) kfpFree(own);
    }
    return StatusOk;
}

// Two paths in one function (order 3 in 64f).
template <int K, class T, class Aligned, class Unaligned>
inline KfpStatus dualPathWht(const T* src, T* dst, int flag, unsigned char* buffer) {
    if (misaligned(src) || misaligned(dst)) return checkedWht<K, T, Unaligned>(src, dst, flag, buffer);
    return checkedWht<K, T, Aligned>(src, dst, flag, buffer);
}

}  // namespace kfpg::wht

// Orders 1, 2 and order 3 in 32f: element by element, no alignment test.
#define KFPG_WHT_ONE_PATH(K, T, SUFFIX, PATH)                                                                   \
    extern "C" KfpStatus kfpgWHT_##K##_##SUFFIX(const T* pSrc, T* pDst, int flag, unsigned char* pBuffer) {     \
        return kfpg::wht::checkedWht<K, T, PATH>(pSrc, pDst, flag, pBuffer);                                    \
    }

// Order 3 in 64f: the unaligned path is a second copy inside the kernel.
#define KFPG_WHT_INNER_TWO_PATHS(K, T, SUFFIX, ALIGNED, UNALIGNED)                                              \
    extern "C" KfpStatus kfpgWHT_##K##_##SUFFIX(const T* pSrc, T* pDst, int flag, unsigned char* pBuffer) {     \
        return kfpg::wht::dualPathWht<K, T, ALIGNED, UNALIGNED>(pSrc, pDst, flag, pBuffer);                     \
    }

// Orders 4..13: a misaligned call is handed unchanged to the internal twin
// owngWHT_<order>_<type>_unaligned, kept out of line so that the aligned
// kernel stays small.
#define KFPG_WHT_TWO_PATHS(K, T, SUFFIX, ALIGNED, UNALIGNED)                                                    \
    extern "C" __attribute__((noinline)) KfpStatus owngWHT_##K##_##SUFFIX##_unaligned(                          \
        const T* pSrc, T* pDst, int flag, unsigned char* pBuffer) {                                             \
        return kfpg::wht::checkedWht<K, T, UNALIGNED>(pSrc, pDst, flag, pBuffer);                               \
    }                                                                                                           \
    extern "C" KfpStatus kfpgWHT_##K##_##SUFFIX(const T* pSrc, T* pDst, int flag, unsigned char* pBuffer) {     \
        if (kfpg::wht::misaligned(pSrc) || kfpg::wht::misaligned(pDst))                                         \
            return owngWHT_##K##_##SUFFIX##_unaligned(pSrc, pDst, flag, pBuffer);                               \
        return kfpg::wht::checkedWht<K, T, ALIGNED>(pSrc, pDst, flag, pBuffer);                                 \
    }
