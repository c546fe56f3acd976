// Compute stages of the split DCT-IV, over groups of vector lanes.
//
// Root split (N = 2dm, M = N/d): the input side runs d odd-frequency real
// DFTs R_M, lane r reading u[r + 2d n] of the antisymmetric extension
// u[p] = x[p] (p < N), -x[2N-1-p] (p >= N), and writes the work array in rows
// (k, c) of d lanes: w[(2k + c) d + r], c = 0 real, 1 imaginary part. The
// output side rotates F_r[i] by the table's (cos, sin) of
// theta = pi (2i+1)(2r+1) / (4N) and runs a DCT-II / DST-II pair of size d:
//   y[M p + i] = A[p] + B[p],  y[M p - 1 - i] = A[p] - B[p].
// A sub-transform larger than 64 is split again (radix d'): its input side is
// the same leaf on d' times as many lanes, its output side twiddles and runs
// complex DFTs of size d'. A leaf on v lanes reads lane l at offset
// 2l - (l mod d) with stride 2v, d being the root divisor.
#pragma once

#include "dct4/codelets.h"
#include "dct4/simd.h"

namespace kfpg::dct4 {

// R_M on v lanes into rows (k, c) of v lanes at dst.
template <class Real, int M>
void inputLeaf(const Real* x, int n, Real* dst, int v, int rootD) {
    using S = Simd<Real>;
    using V = typename S::V;
    constexpr int L = S::kLanes;
    const int stride = 2 * v;
    for (int lane = 0; lane < v; lane += L) {
        const Real* fwd = x + (2 * lane - lane % rootD);
        const Real* refl = x + (2 * n - L) - (2 * lane - lane % rootD);
        V s[M], re[M / 2], im[M / 2];
        staticFor<M / 2>([&](auto j) __attribute__((always_inline)) {
            s[j] = load<V>(fwd + j * stride);
            s[M / 2 + j] = -S::reverse(load<V>(refl - (M / 2 + j) * stride));
        });
        rodft<M, 1>(s, re, im);
        Real* out = dst + lane;
        staticFor<M / 2>([&](auto k) __attribute__((always_inline)) {
            store(out + (2 * k) * v, re[k]);
            store(out + (2 * k + 1) * v, im[k]);
        });
    }
}

// Root output side: table of (m/L) groups x 2d vectors, lane i within a group.
template <class Real, int D>
void outputRoot(const Real* w, Real* y, int n, const Real* table) {
    using S = Simd<Real>;
    using V = typename S::V;
    constexpr int L = S::kLanes;
    const int m = n / (2 * D), M = 2 * m;
    for (int g = 0; g < m / L; ++g) {
        const int i0 = L * g;
        const Real* tab = table + g * (2 * D * L);
        V a[D], b[D], re[L], im[L];
        staticFor<D / L>([&](auto jj) __attribute__((always_inline)) {
            constexpr int j = L * jj;
            staticFor<L>([&](auto t) __attribute__((always_inline)) {
                re[t] = load<V>(w + (2 * (i0 + t)) * D + j);
                im[t] = load<V>(w + (2 * (i0 + t) + 1) * D + j);
            });
            S::transpose(re);
            S::transpose(im);
            staticFor<L>([&](auto t) __attribute__((always_inline)) {
                constexpr int r = j + t;
                const V c = load<V>(tab + 2 * r * L), s = load<V>(tab + (2 * r + 1) * L);
                a[r] = re[t] * c + im[t] * s;
                // DST-II as a DCT-II of the alternating sequence: odd r negated.
                if constexpr (r % 2 == 1)
                    b[r] = re[t] * s - im[t] * c;
                else
                    b[r] = im[t] * c - re[t] * s;
            });
        });
        V A[D], B[D];
        dct2<D>(a, A);
        dct2<D>(b, B);
        store(y + i0, A[0]);
        staticFor<D - 1>([&](auto q) __attribute__((always_inline)) {
            constexpr int p = q + 1;
            store(y + M * p + i0, A[p] + B[D - p]);
            store(y + M * p - L - i0, S::reverse(A[p] - B[D - p]));
        });
        store(y + n - L - i0, S::reverse(-B[0]));
    }
}

// Output side of a recursive split on v lanes: for each group g < G, the d'
// sub-results F'_{n2}[g] (rows (g, c) of v*d' lanes at src, lane n2 v + l)
// are twiddled by the table and combined by a complex DFT of size d'; the
// results go to rows (k, c) of v lanes at dst.
template <class Real, int D>
void outputSplit(const Real* src, Real* dst, int v, int groups, int subSize, const Real* table) {
    using S = Simd<Real>;
    using V = typename S::V;
    constexpr int L = S::kLanes;
    constexpr int kVectors = 2 * D - 2;
    const int row = v * D;
    for (int g = 0; g < groups; ++g) {
        const Real* tab = table + g * kVectors * L;
        for (int lane = 0; lane < v; lane += L) {
            V re[D], im[D];
            const Real* in = src + 2 * g * row + lane;
            staticFor<D>([&](auto k) __attribute__((always_inline)) {
                re[k] = load<V>(in + k * v);
                im[k] = load<V>(in + row + k * v);
            });
            if constexpr (D == 32) {
                // Radix 8 over a (n2 = 4a + b), then radix 4 over b in eight rounds.
                staticFor<7>([&](auto q) __attribute__((always_inline)) {
                    const V c = load<V>(tab + 2 * q * L), s = load<V>(tab + (2 * q + 1) * L);
                    staticFor<4>([&](auto b) __attribute__((always_inline)) {
                        rotate(re[4 * (q + 1) + b], im[4 * (q + 1) + b], c, s);
                    });
                });
                staticFor<4>([&](auto b) __attribute__((always_inline)) { cdft<8, 4>(re + b, im + b); });
                staticFor<8>([&](auto t) __attribute__((always_inline)) {
                    staticFor<3>([&](auto q) __attribute__((always_inline)) {
                        constexpr int e = 7 + 3 * t + q;
                        const V c = load<V>(tab + 2 * e * L), s = load<V>(tab + (2 * e + 1) * L);
                        rotate(re[4 * t + q + 1], im[4 * t + q + 1], c, s);
                    });
                    cdft<4, 1>(re + 4 * t, im + 4 * t);
                });
            } else {
                staticFor<D - 1>([&](auto q) __attribute__((always_inline)) {
                    const V c = load<V>(tab + 2 * q * L), s = load<V>(tab + (2 * q + 1) * L);
                    rotate(re[q + 1], im[q + 1], c, s);
                });
                cdft<D, 1>(re, im);
            }
            // Output k of the DFT sits at 4t + k2 for k = t + 8 k2 (two passes), at k otherwise.
            Real* out = dst + lane;
            staticFor<D / 2>([&](auto k2) __attribute__((always_inline)) {
                constexpr int k = k2, kc = D - 1 - k2;
                constexpr int at = D == 32 ? 4 * (k % 8) + k / 8 : k;
                constexpr int atc = D == 32 ? 4 * (kc % 8) + kc / 8 : kc;
                const int lo = g + subSize * k2, hi = subSize * (k2 + 1) - 1 - g;
                store(out + 2 * lo * v, re[at]);
                store(out + (2 * lo + 1) * v, im[at]);
                store(out + 2 * hi * v, re[atc]);
                store(out + (2 * hi + 1) * v, -im[atc]);
            });
        }
    }
}

}  // namespace kfpg::dct4
