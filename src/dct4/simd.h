// 128-bit vectors for the DCT-IV stages: Vec<float> holds 4 lanes, Vec<double>
// 2, written with the compiler's vector extensions so that it can fold signs
// and schedule freely. Loads and stores go through memcpy (any alignment).
#pragma once

#include <emmintrin.h>
#include <xmmintrin.h>

#include <cstring>

namespace kfpg::dct4 {

template <class Real>
struct Simd;

template <>
struct Simd<float> {
    typedef float V __attribute__((vector_size(16)));
    static constexpr int kLanes = 4;
    static V splat(float x) { return V{x, x, x, x}; }
    static V reverse(V v) { return __builtin_shuffle(v, (__attribute__((vector_size(16))) int){3, 2, 1, 0}); }
    // Transposes L vectors: lane j of v[i] goes to lane i of v[j].
    static void transpose(V* v) {
        __m128 a = (__m128)v[0], b = (__m128)v[1], c = (__m128)v[2], d = (__m128)v[3];
        _MM_TRANSPOSE4_PS(a, b, c, d);
        v[0] = (V)a, v[1] = (V)b, v[2] = (V)c, v[3] = (V)d;
    }
};

template <>
struct Simd<double> {
    typedef double V __attribute__((vector_size(16)));
    static constexpr int kLanes = 2;
    static V splat(double x) { return V{x, x}; }
    static V reverse(V v) { return __builtin_shuffle(v, (__attribute__((vector_size(16))) long long){1, 0}); }
    static void transpose(V* v) {
        const V a = v[0], b = v[1];
        v[0] = __builtin_shuffle(a, b, (__attribute__((vector_size(16))) long long){0, 2});
        v[1] = __builtin_shuffle(a, b, (__attribute__((vector_size(16))) long long){1, 3});
    }
};

template <class V, class Real>
inline __attribute__((always_inline)) V load(const Real* p) {
    V v;
    std::memcpy(&v, p, sizeof v);
    return v;
}

template <class V, class Real>
inline __attribute__((always_inline)) void store(Real* p, V v) {
    std::memcpy(p, &v, sizeof v);
}

}  // namespace kfpg::dct4
