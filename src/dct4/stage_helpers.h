// Small vector helpers used by the generated DCT-IV stages (build tree,
// generated/dct4/): lane reversal, 4x4 / 2x2 transposes, rotation by a
// (cos, sin) pair from a plan table, the last butterflies of the root
// output side.
#pragma once

#include <emmintrin.h>
#include <xmmintrin.h>

namespace kfpg::dct4 {

inline __m128 reversed(__m128 v) { return _mm_shuffle_ps(v, v, 0x1B); }
inline __m128d reversed(__m128d v) { return _mm_shuffle_pd(v, v, 1); }

inline void transpose(__m128& a, __m128& b, __m128& c, __m128& d) { _MM_TRANSPOSE4_PS(a, b, c, d); }
inline void transpose(__m128d& a, __m128d& b) {
    const __m128d lo = _mm_unpacklo_pd(a, b);
    b = _mm_unpackhi_pd(a, b);
    a = lo;
}

inline __m128 load(const float* p) { return _mm_load_ps(p); }
inline __m128d load(const double* p) { return _mm_load_pd(p); }
inline void storeu(float* p, __m128 v) { _mm_storeu_ps(p, v); }
inline void storeu(double* p, __m128d v) { _mm_storeu_pd(p, v); }
inline __m128 add(__m128 a, __m128 b) { return _mm_add_ps(a, b); }
inline __m128d add(__m128d a, __m128d b) { return _mm_add_pd(a, b); }
inline __m128 sub(__m128 a, __m128 b) { return _mm_sub_ps(a, b); }
inline __m128d sub(__m128d a, __m128d b) { return _mm_sub_pd(a, b); }
inline __m128 negated(__m128 v) { return _mm_xor_ps(v, _mm_set1_ps(-0.0f)); }
inline __m128d negated(__m128d v) { return _mm_xor_pd(v, _mm_set1_pd(-0.0)); }
inline __m128 mul(__m128 a, __m128 b) { return _mm_mul_ps(a, b); }
inline __m128d mul(__m128d a, __m128d b) { return _mm_mul_pd(a, b); }

// (re + i im) e^{-i theta} with c = cos theta and s = sin theta read from cs
// and cs + lanes: re' = re c + im s, im' = im c - re s.
template <class V, class T>
inline void rotate(V& re, V& im, const T* cs) {
    const V c = load(cs), s = load(cs + 16 / sizeof(T));
    const V r = add(mul(re, c), mul(im, s));
    im = sub(mul(im, c), mul(re, s));
    re = r;
}

// The same rotation with the imaginary result negated: im' = re s - im c.
template <class V, class T>
inline void rotateNegated(V& re, V& im, const T* cs) {
    const V c = load(cs), s = load(cs + 16 / sizeof(T));
    const V r = add(mul(re, c), mul(im, s));
    im = sub(mul(re, s), mul(im, c));
    re = r;
}

// Root output side, from A = DCT-II(a) and D = DCT-II(b'), d vectors each
// for every one of `groups` consecutive vector groups q: lo + p loStride + q
// lanes gets A[p] + D[d-p] (p < d, D[d] = 0) and hi + (p-1) hiStride - q lanes
// gets A[p] - D[d-p] lanes reversed (p = 1..d, A[d] = 0).
template <int d, int groups, class T>
inline void combineHalves(const T* A, const T* D, T* lo, long loStride, T* hi, long hiStride) {
    constexpr int lanes = 16 / sizeof(T);
    for (int q = 0; q < groups; ++q) storeu(lo + q * lanes, load(A + q * d * lanes));
    for (int p = 1; p < d; ++p)
        for (int q = 0; q < groups; ++q) {
            const auto a = load(A + (q * d + p) * lanes), b = load(D + (q * d + d - p) * lanes);
            storeu(lo + p * loStride + q * lanes, add(a, b));
            storeu(hi + (p - 1) * hiStride - q * lanes, reversed(sub(a, b)));
        }
    for (int q = 0; q < groups; ++q)
        storeu(hi + (d - 1) * hiStride - q * lanes, reversed(negated(load(D + q * d * lanes))));
}

}  // namespace kfpg::dct4
