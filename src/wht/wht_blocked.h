// Orders 8..13: the array as a matrix of contiguous rows. Row transforms go
// from pSrc into the work buffer, then column transforms go from the buffer
// into pDst, scaled. Three-pass orders first finish every super-block of
// 2^cross rows in the buffer, using the scratch area after the N elements.
#pragma once

#include "wht/wht_layout.h"
#include "wht/wht_path.h"

namespace kfpg::wht {

template <int K, class T, class Path>
inline void blockedWht(const T* src, T* dst, T s, T* work) {
    constexpr Passes p = passesFor<T>(K);
    constexpr long n = 1L << K;
    constexpr long row = 1L << p.row;
    if constexpr (p.cross == 0) {
        for (long r = 0; r < n; r += row) Path::row(src + r, work + r);
        for (long c = 0; c < row; c += kLanes<T>) Path::column(work + c, dst + c, s);
    } else {
        constexpr long block = row << p.cross;
        T* scratch = work + n;
        for (long b = 0; b < n; b += block) {
            for (long r = 0; r < block; r += row) Path::row(src + b + r, scratch + r);
            for (long c = 0; c < row; c += kLanes<T>) Path::cross(scratch + c, work + b + c);
        }
        for (long c = 0; c < block; c += kLanes<T>) Path::column(work + c, dst + c, s);
    }
}

}  // namespace kfpg::wht
