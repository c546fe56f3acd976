// Orders 8..13: the array as a matrix of contiguous rows. Row transforms go
// from pSrc into an intermediate array in the work buffer, then column
// transforms go from there into pDst, scaled. Three-pass orders first
// finish every super-block of 2^cross rows in place in the intermediate
// array.
//
// Speed at every placement of pDst against the buffer: the column pass
// reads 2^last lines at a fixed stride and stores to the same offsets of
// pDst, so the two share L1 sets and 4 KB store aliases whenever their
// addresses agree modulo the stride's set period (see setPeriod).
// - The columns are walked downward when pDst lies less than half a period
//   above the intermediate array, upward otherwise: walking toward pDst's
//   offset, a load would meet the aliased address of a store still in
//   flight a few columns later.
// - Three-pass orders have one super-block of room after the N elements;
//   when pDst falls within a cache line of the intermediate array's sets,
//   the array moves half a period up into that room.
#pragma once

#include <cstdint>

#include "wht/wht_layout.h"
#include "wht/wht_path.h"

namespace kfpg::wht {

constexpr long kPageBytes = 4096;
constexpr long kLineBytes = 64;

// Addresses `stride` bytes apart fall into the same L1 set and 4 KB alias
// class once per this many bytes of address difference: the stride's
// largest power-of-two factor, at most a page.
constexpr long setPeriod(long strideBytes) {
    const long factor = strideBytes & -strideBytes;
    return factor < kPageBytes ? factor : kPageBytes;
}

// (to - from) modulo `period` bytes, a power of two.
inline long distanceModulo(const void* from, const void* to, long period) {
    return static_cast<long>((reinterpret_cast<std::uintptr_t>(to) - reinterpret_cast<std::uintptr_t>(from)) &
                             static_cast<std::uintptr_t>(period - 1));
}

// The final 2^last-point column transforms of `columns` columns `stride`
// elements apart, from mid into pDst.
template <long Stride, long Columns, class T, class Path>
inline void finalPass(const T* mid, T* dst, T s) {
    constexpr long period = setPeriod(Stride * static_cast<long>(sizeof(T)));
    const long ahead = distanceModulo(mid, dst, period);
    const bool downward = ahead > 0 && ahead < period / 2;
    // One loop for both directions keeps one copy of the column code.
    const long step = downward ? -kLanes<T> : kLanes<T>;
    long c = downward ? Columns - kLanes<T> : 0;
    for (long i = 0; i < Columns / kLanes<T>; ++i, c += step) Path::column(mid + c, dst + c, s);
}

template <int K, class T, class Path>
inline void blockedWht(const T* src, T* dst, T s, T* work) {
    constexpr Passes p = passesFor<T>(K);
    constexpr long n = 1L << K;
    constexpr long row = 1L << p.row;
    if constexpr (p.cross == 0) {
        for (long r = 0; r < n; r += row) Path::row(src + r, work + r);
        finalPass<row, row, T, Path>(work, dst, s);
    } else {
        constexpr long block = row << p.cross;
        constexpr long period = setPeriod(block * static_cast<long>(sizeof(T)));
        static_assert(period / 2 <= block * static_cast<long>(sizeof(T)), "the move must fit the room of one super-block");
        const long ahead = distanceModulo(work, dst, period);
        T* mid = ahead < kLineBytes || ahead > period - kLineBytes ? work + period / 2 / static_cast<long>(sizeof(T)) : work;
        for (long b = 0; b < n; b += block) {
            for (long r = 0; r < block; r += row) Path::row(src + b + r, mid + b + r);
            for (long c = 0; c < row; c += kLanes<T>) Path::cross(mid + b + c, mid + b + c);
        }
        finalPass<block, block, T, Path>(mid, dst, s);
    }
}

}  // namespace kfpg::wht
