// Straight-line building blocks of the DCT-IV stages, written once for any
// element type V: a scalar (float, double) or a vector whose lanes carry
// independent transforms. Sizes are template arguments, every loop is
// unrolled at compile time and every constant is folded from a table that
// the compiler evaluates (cosines reduced exactly in integers first).
//
//   rodft<M>: odd-frequency real DFT  F[k] = sum s[n] e^{-i pi n (2k+1) / M},
//             k < M/2 (radix-2 decimation in time, twiddles e^{-i pi (2g+1)/M}).
//   dct4<K>:  DCT-IV of size K = R_K plus one rotation per output pair.
//   dct2<n>:  unnormalised DCT-II (even half DCT-II, odd half DCT-IV).
//   cdft<n>:  complex DFT e^{-2 pi i j k / n}, radix 2.
#pragma once

#include <array>
#include <type_traits>
#include <utility>

#define KFPG_INLINE inline __attribute__((always_inline))

namespace kfpg::dct4 {

// ---- compile-time trigonometry -------------------------------------------

constexpr long double kPiL = 3.141592653589793238462643383279502884L;

constexpr long double taylorCos(long double x) {
    long double term = 1, sum = 1;
    for (int n = 1; n < 30; ++n) {
        term *= -x * x / static_cast<long double>((2 * n - 1) * (2 * n));
        sum += term;
    }
    return sum;
}

// cos(pi * num / den), reduced exactly to [0, pi/2] in integers.
constexpr long double cosPiRatio(long num, long den) {
    long t = num % (2 * den);
    if (t < 0) t += 2 * den;
    if (t > den) t = 2 * den - t;  // cos is even about pi
    if (2 * t > den) return -taylorCos(kPiL * static_cast<long double>(den - t) / static_cast<long double>(den));
    return taylorCos(kPiL * static_cast<long double>(t) / static_cast<long double>(den));
}
// sin(pi * num / den) = cos(pi * (den - 2 num) / (2 den)).
constexpr long double sinPiRatio(long num, long den) { return cosPiRatio(den - 2 * num, 2 * den); }

// ---- element helpers -----------------------------------------------------

template <class V, class = void>
struct ElementOf {
    using type = V;
};
template <class V>
struct ElementOf<V, std::enable_if_t<!std::is_arithmetic_v<V>>> {
    using type = std::remove_cv_t<std::remove_reference_t<decltype(std::declval<V>()[0])>>;
};
template <class V>
using Elem = typename ElementOf<V>::type;

template <int Count, class F, int... I>
KFPG_INLINE void staticForImpl(F&& f, std::integer_sequence<int, I...>) {
    (f(std::integral_constant<int, I>{}), ...);
}
// Calls f(integral_constant<int, i>) for i = 0 .. Count-1.
template <int Count, class F>
KFPG_INLINE void staticFor(F&& f) {
    staticForImpl<Count>(f, std::make_integer_sequence<int, Count>{});
}

// Tables of (cos, sin) pairs evaluated by the compiler.
template <class Real, int Count>
using Pairs = std::array<Real, 2 * Count>;

// cos, sin of pi (2g+1) / M for g < M/4: the radix-2 twiddles of R_M.
template <class Real, int M>
constexpr Pairs<Real, M / 4> rodftTwiddles() {
    Pairs<Real, M / 4> t{};
    for (int g = 0; g < M / 4; ++g) {
        t[2 * g] = static_cast<Real>(cosPiRatio(2 * g + 1, M));
        t[2 * g + 1] = static_cast<Real>(sinPiRatio(2 * g + 1, M));
    }
    return t;
}
// cos, sin of pi (2k+1) / (4K) for k < K/2: the output rotations of DCT-IV_K.
template <class Real, int K>
constexpr Pairs<Real, K / 2> dct4Rotations() {
    Pairs<Real, K / 2> t{};
    for (int k = 0; k < K / 2; ++k) {
        t[2 * k] = static_cast<Real>(cosPiRatio(2 * k + 1, 4 * K));
        t[2 * k + 1] = static_cast<Real>(sinPiRatio(2 * k + 1, 4 * K));
    }
    return t;
}
// cos, sin of 2 pi k / n for k < n/2: the twiddles of the complex DFT.
template <class Real, int n>
constexpr Pairs<Real, n / 2> dftTwiddles() {
    Pairs<Real, n / 2> t{};
    for (int k = 0; k < n / 2; ++k) {
        t[2 * k] = static_cast<Real>(cosPiRatio(2 * k, n));
        t[2 * k + 1] = static_cast<Real>(sinPiRatio(2 * k, n));
    }
    return t;
}
template <class Real, int M>
struct RodftTw {
    static constexpr auto values = rodftTwiddles<Real, M>();
};
template <class Real, int K>
struct Dct4Rot {
    static constexpr auto values = dct4Rotations<Real, K>();
};
template <class Real, int n>
struct DftTw {
    static constexpr auto values = dftTwiddles<Real, n>();
};

// (re + i im) * e^{-i theta} with c = cos theta, s = sin theta.
template <class V, class Real>
KFPG_INLINE void rotate(V& re, V& im, Real c, Real s) {
    const V r = re * c + im * s;
    im = im * c - re * s;
    re = r;
}

// ---- odd-frequency real DFT ----------------------------------------------

// F = R_M(s), s read at s[n * S]; re[k], im[k] for k < M/2.
template <int M, int S, class V>
KFPG_INLINE void rodft(const V* s, V* re, V* im) {
    if constexpr (M == 2) {
        re[0] = s[0];
        im[0] = -s[S];
    } else {
        constexpr int Q = M / 4;
        V re0[Q], im0[Q], re1[Q], im1[Q];
        rodft<M / 2, 2 * S>(s, re0, im0);
        rodft<M / 2, 2 * S>(s + S, re1, im1);
        using Real = Elem<V>;
        staticFor<Q>([&](auto g) __attribute__((always_inline)) {
            constexpr Real c = RodftTw<Real, M>::values[2 * g];
            constexpr Real sn = RodftTw<Real, M>::values[2 * g + 1];
            V pr = re1[g], pi = im1[g];
            rotate(pr, pi, c, sn);
            re[g] = re0[g] + pr;
            im[g] = im0[g] + pi;
            re[M / 2 - 1 - g] = re0[g] - pr;
            im[M / 2 - 1 - g] = pi - im0[g];
        });
    }
}

// ---- DCT-IV, DCT-II ------------------------------------------------------

// Y = DCT-IV_K(x), K >= 2, x read at x[n * S]: R_K of the even samples
// followed by the negated odd samples in reverse, then a rotation.
template <int K, int S, class V>
KFPG_INLINE void dct4(const V* x, V* y) {
    V s[K];
    staticFor<K / 2>([&](auto j) __attribute__((always_inline)) {
        s[j] = x[2 * j * S];
        s[K / 2 + j] = -x[(K - 1 - 2 * j) * S];
    });
    V re[K / 2], im[K / 2];
    rodft<K, 1>(s, re, im);
    using Real = Elem<V>;
    staticFor<K / 2>([&](auto k) __attribute__((always_inline)) {
        constexpr Real c = Dct4Rot<Real, K>::values[2 * k];
        constexpr Real sn = Dct4Rot<Real, K>::values[2 * k + 1];
        y[k] = re[k] * c + im[k] * sn;
        y[K - 1 - k] = re[k] * sn - im[k] * c;
    });
}

// A[p] = sum a[r] cos(pi (2r+1) p / (2n)), p < n.
template <int n, class V>
KFPG_INLINE void dct2(const V* a, V* out) {
    using Real = Elem<V>;
    if constexpr (n == 1) {
        out[0] = a[0];
    } else if constexpr (n == 2) {
        constexpr Real h = static_cast<Real>(cosPiRatio(1, 4));
        out[0] = a[0] + a[1];
        out[1] = (a[0] - a[1]) * h;
    } else {
        constexpr int h = n / 2;
        V u[h], v[h], even[h], odd[h];
        staticFor<h>([&](auto r) __attribute__((always_inline)) {
            u[r] = a[r] + a[n - 1 - r];
            v[r] = a[r] - a[n - 1 - r];
        });
        dct2<h>(u, even);
        dct4<h, 1>(v, odd);
        staticFor<h>([&](auto p) __attribute__((always_inline)) {
            out[2 * p] = even[p];
            out[2 * p + 1] = odd[p];
        });
    }
}

// ---- complex DFT ---------------------------------------------------------

// In-place complex DFT of size n (a power of two) on re[k * S], im[k * S].
template <int n, int S, class V>
KFPG_INLINE void cdft(V* re, V* im) {
    if constexpr (n == 2) {
        const V r = re[0] - re[S], i = im[0] - im[S];
        re[0] = re[0] + re[S];
        im[0] = im[0] + im[S];
        re[S] = r;
        im[S] = i;
    } else if constexpr (n > 2) {
        constexpr int h = n / 2;
        V er[h], ei[h], orr[h], oi[h];
        staticFor<h>([&](auto k) __attribute__((always_inline)) {
            er[k] = re[2 * k * S];
            ei[k] = im[2 * k * S];
            orr[k] = re[(2 * k + 1) * S];
            oi[k] = im[(2 * k + 1) * S];
        });
        cdft<h, 1>(er, ei);
        cdft<h, 1>(orr, oi);
        using Real = Elem<V>;
        staticFor<h>([&](auto k) __attribute__((always_inline)) {
            V tr = orr[k], ti = oi[k];
            if constexpr (k == 0) {
            } else if constexpr (4 * k == n) {  // times -i
                tr = oi[k];
                ti = -orr[k];
            } else {
                constexpr Real c = DftTw<Real, n>::values[2 * k];
                constexpr Real s = DftTw<Real, n>::values[2 * k + 1];
                rotate(tr, ti, c, s);
            }
            re[k * S] = er[k] + tr;
            im[k * S] = ei[k] + ti;
            re[(k + h) * S] = er[k] - tr;
            im[(k + h) * S] = ei[k] - ti;
        });
    }
}

}  // namespace kfpg::dct4
