// Small vector helpers used by the generated DCT-IV stages (build tree,
// generated/dct4/): lane reversal, 4x4 / 2x2 transposes, rotation by a
// (cos, sin) pair from a plan table.
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

// (re + i im) e^{-i theta} with c = cos theta and s = sin theta read from cs
// and cs + lanes: re' = re c + im s, im' = im c - re s.
inline void rotate(__m128& re, __m128& im, const float* cs) {
    const __m128 c = _mm_load_ps(cs), s = _mm_load_ps(cs + 4);
    const __m128 r = _mm_add_ps(_mm_mul_ps(re, c), _mm_mul_ps(im, s));
    im = _mm_sub_ps(_mm_mul_ps(im, c), _mm_mul_ps(re, s));
    re = r;
}
inline void rotate(__m128d& re, __m128d& im, const double* cs) {
    const __m128d c = _mm_load_pd(cs), s = _mm_load_pd(cs + 2);
    const __m128d r = _mm_add_pd(_mm_mul_pd(re, c), _mm_mul_pd(im, s));
    im = _mm_sub_pd(_mm_mul_pd(im, c), _mm_mul_pd(re, s));
    re = r;
}

}  // namespace kfpg::dct4
