// Interim loop versions of the WHT paths, used until the generated
// straight-line paths are wired in.
#pragma once

#include "wht/wht_layout.h"
#include "wht/wht_leaves.h"

namespace kfpg::wht::interim {

// Element access that tolerates any byte alignment of the caller's arrays.
template <class T>
inline T get(const T* p) {
    T v;
    __builtin_memcpy(&v, p, sizeof v);
    return v;
}
template <class T>
inline void put(T* p, T v) {
    __builtin_memcpy(p, &v, sizeof v);
}

template <class T>
inline void butterflies(T* v, long n) {
    for (long h = 1; h < n; h *= 2)
        for (long i = 0; i < n; i += 2 * h)
            for (long j = i; j < i + h; ++j) {
                const T a = v[j], b = v[j + h];
                v[j] = a + b;
                v[j + h] = a - b;
            }
}

// Strided WHT of `lanes` adjacent columns, scaled by s.
template <class T>
inline void columns(const T* src, T* dst, long n, long stride, T s, bool scale) {
    for (long lane = 0; lane < kLanes<T>; ++lane) {
        T v[64];
        for (long i = 0; i < n; ++i) v[i] = get(src + i * stride + lane);
        butterflies(v, n);
        for (long i = 0; i < n; ++i) put(dst + i * stride + lane, scale ? v[i] * s : v[i]);
    }
}

template <int K, class T>
struct Path {
    static void line(const T* src, T* dst, T s) {
        T v[1 << K];
        for (long i = 0; i < (1 << K); ++i) v[i] = get(src + i);
        butterflies(v, 1 << K);
        for (long i = 0; i < (1 << K); ++i) put(dst + i, v[i] * s);
    }
    static constexpr Passes p = passesFor<T>(K < 8 ? 8 : K);
    static void row(const T* src, T* dst) {
        for (long i = 0; i < (1L << p.row); ++i) dst[i] = get(src + i);
        butterflies(dst, 1L << p.row);
    }
    static void cross(const T* src, T* dst) { columns(src, dst, 1L << p.cross, 1L << p.row, T(1), false); }
    static void column(const T* src, T* dst, T s) {
        columns(src, dst, 1L << p.last, 1L << (p.row + p.cross), s, true);
    }
};

}  // namespace kfpg::wht::interim
