// Interim loop versions of the WHT pieces, used until the generated
// straight-line pieces are wired in.
#pragma once

#include "wht/wht_leaves.h"

namespace kfpg::wht {

namespace interim {
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
inline void butterflies(T* v, long n, long stride) {
    for (long h = 1; h < n; h *= 2)
        for (long i = 0; i < n; i += 2 * h)
            for (long j = i; j < i + h; ++j) {
                const T a = v[j * stride], b = v[(j + h) * stride];
                v[j * stride] = a + b;
                v[(j + h) * stride] = a - b;
            }
}
}  // namespace interim

template <int K, class T, Access A>
void lineWht(const T* src, T* dst, T s) {
    T v[1 << K];
    for (long i = 0; i < (1 << K); ++i) v[i] = interim::get(src + i);
    interim::butterflies(v, 1 << K, 1);
    for (long i = 0; i < (1 << K); ++i) interim::put(dst + i, v[i] * s);
}

template <int K, class T, Access A>
void rowWht(const T* src, T* dst) {
    for (long i = 0; i < (1 << K); ++i) dst[i] = interim::get(src + i);
    interim::butterflies(dst, 1 << K, 1);
}

template <int K, class T, Access A>
void columnWht(const T* src, T* dst, long stride, T s) {
    for (long lane = 0; lane < kLanes<T>; ++lane) {
        T v[1 << K];
        for (long i = 0; i < (1 << K); ++i) v[i] = src[i * stride + lane];
        interim::butterflies(v, 1 << K, 1);
        for (long i = 0; i < (1 << K); ++i) interim::put(dst + i * stride + lane, v[i] * s);
    }
}

template <int K, class T>
void crossWht(const T* src, T* dst, long stride) {
    for (long lane = 0; lane < kLanes<T>; ++lane) {
        T v[1 << K];
        for (long i = 0; i < (1 << K); ++i) v[i] = src[i * stride + lane];
        interim::butterflies(v, 1 << K, 1);
        for (long i = 0; i < (1 << K); ++i) dst[i * stride + lane] = v[i];
    }
}

}  // namespace kfpg::wht
