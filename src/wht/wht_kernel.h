// The argument checks and buffer handling every WHT kernel shares, in their
// fixed order: null pointers, flag, then (orders 8..13) a missing work
// buffer taken from kfpMalloc for the duration of the call.
#pragma once

#include <cstdint>

#include "kfpcore.h"
#include "kfpgen.h"
#include "wht/wht_blocked.h"
#include "wht/wht_layout.h"
#include "wht/wht_leaves.h"
#include "wht/wht_leaves_interim.h"
#include "wht/wht_scale.h"

namespace kfpg::wht {

inline bool misaligned(const void* p) { return reinterpret_cast<std::uintptr_t>(p) % 16 != 0; }

template <int K, class T, Access A>
inline KfpStatus checkedWht(const T* src, T* dst, int flag, unsigned char* buffer) {
    if (!src || !dst) return StatusNullPointer;
    T s;
    if (!scaleFor<T, K>(flag, s)) return StatusFlagError;
    if constexpr (K <= kMaxLineOrder) {
        lineWht<K, T, A>(src, dst, s);
    } else {
        // The allocation is not tested: there is no status for its failure.
        unsigned char* own = buffer ? nullptr : static_cast<unsigned char*>(kfpMalloc(bufferBytes<T>(K)));
        blockedWht<K, T, A>(src, dst, s, reinterpret_cast<T*>(buffer ? buffer : own));
        if (!buffer) kfpFree(own);
    }
    return StatusOk;
}

}  // namespace kfpg::wht
