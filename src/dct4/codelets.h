// The DCT-IV compute stages that kfpg_gen emits (gen/families/dct4.cpp), for
// P = 32f (float, 4-lane groups) and 64f (double, 2-lane groups).
//
// Root split (N = 2dm, M = N/d): the input side runs d odd-frequency real
// DFTs R_M, lane r reading u[r + 2d n] of the antisymmetric extension
// u[p] = x[p] (p < N), -x[2N-1-p] (p >= N), and writes the work array in rows
// (k, c) of d lanes: w[(2k + c) d + r], c = 0 real, 1 imaginary part. The
// output side rotates F_r[i] by the table's (cos, sin) of
// theta = pi (2i+1)(2r+1) / (4N) and runs a DCT-II / DST-II pair of size d:
//   y[M p + i] = A[p] + B[p],  y[M p - 1 - i] = A[p] - B[p].
// A sub-transform larger than 64 is split again with radix d': its input side
// is the same leaf on d' times as many lanes (lane l reads offset
// 2l - (l mod d) with stride 2v, d the root divisor), its output side
// twiddles by its table and runs complex DFTs of size d'.
#pragma once

#define KFPG_DCT4_DECLARE_STAGES(P, Real)                                                                     \
    /* R_M on v lanes of x (length n) into rows (k, c) of v lanes at dst. */                                  \
    void owngDCT4_leaf_2_##P(const Real* x, int n, Real* dst, int v, int rootD);                              \
    void owngDCT4_leaf_4_##P(const Real* x, int n, Real* dst, int v, int rootD);                              \
    void owngDCT4_leaf_8_##P(const Real* x, int n, Real* dst, int v, int rootD);                              \
    void owngDCT4_leaf_16_##P(const Real* x, int n, Real* dst, int v, int rootD);                             \
    void owngDCT4_leaf_32_##P(const Real* x, int n, Real* dst, int v, int rootD);                             \
    void owngDCT4_leaf_64_##P(const Real* x, int n, Real* dst, int v, int rootD);                             \
    /* Root output side of divisor d: work rows w into y, env4 table. */                                     \
    void owngDCT4_output_4_##P(const Real* w, Real* y, int n, const Real* table);                             \
    void owngDCT4_output_8_##P(const Real* w, Real* y, int n, const Real* table);                             \
    void owngDCT4_output_16_##P(const Real* w, Real* y, int n, const Real* table);                            \
    void owngDCT4_output_32_##P(const Real* w, Real* y, int n, const Real* table);                            \
    /* Output side of a recursive split with divisor d' on v lanes, env8 table. */                           \
    void owngDCT4_split_2_##P(const Real* src, Real* dst, int v, int groups, int sub, const Real* table);     \
    void owngDCT4_split_4_##P(const Real* src, Real* dst, int v, int groups, int sub, const Real* table);     \
    void owngDCT4_split_8_##P(const Real* src, Real* dst, int v, int groups, int sub, const Real* table);     \
    void owngDCT4_split_16_##P(const Real* src, Real* dst, int v, int groups, int sub, const Real* table);    \
    void owngDCT4_split_32_##P(const Real* src, Real* dst, int v, int groups, int sub, const Real* table);    \
    /* DCT-IV of length N, reading every input before the first store. */                                   \
    void owngDCT4_direct_2_##P(const Real* x, Real* y);                                                       \
    void owngDCT4_direct_4_##P(const Real* x, Real* y);                                                       \
    void owngDCT4_direct_8_##P(const Real* x, Real* y);                                                       \
    void owngDCT4_direct_16_##P(const Real* x, Real* y);                                                      \
    void owngDCT4_direct_32_##P(const Real* x, Real* y);

namespace kfpg::dct4 {
KFPG_DCT4_DECLARE_STAGES(32f, float)
KFPG_DCT4_DECLARE_STAGES(64f, double)
// Divisor 2 is a 64f output side only (d must be a multiple of the lanes).
void owngDCT4_output_2_64f(const double* w, double* y, int n, const double* table);
}  // namespace kfpg::dct4
