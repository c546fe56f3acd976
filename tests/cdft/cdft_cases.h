// Shared by the complex DFT tests: every sized kernel and generic entry by
// length, precision and direction, and the parameter list of all 252 cases.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kfpgen.h"
#include "reference.h"

namespace kfpg::test::cdft {

template <class C>
using Sized = KfpStatus (*)(const C*, C*, int);
template <class C>
using Generic = KfpStatus (*)(const C*, C*, int, int);

#define KFPG_TEST_FWD32(N) kfpgDFTFwd_CToC_##N##_32fc,
#define KFPG_TEST_INV32(N) kfpgDFTInv_CToC_##N##_32fc,
#define KFPG_TEST_FWD64(N) kfpgDFTFwd_CToC_##N##_64fc,
#define KFPG_TEST_INV64(N) kfpgDFTInv_CToC_##N##_64fc,

template <class C>
struct Kernels;

template <>
struct Kernels<kfp32fc> {
    using Real = float;
    static Sized<kfp32fc> sized(int n, bool inverse) {
        static const Sized<kfp32fc> fwd[] = {KFPG_FOR_LENGTHS(KFPG_TEST_FWD32)};
        static const Sized<kfp32fc> inv[] = {KFPG_FOR_LENGTHS(KFPG_TEST_INV32)};
        return (inverse ? inv : fwd)[n - 2];
    }
    static Generic<kfp32fc> generic(bool inverse) { return inverse ? kfpgDFTInv_CToC_32fc : kfpgDFTFwd_CToC_32fc; }
    static constexpr double bound = 1e-6;
};

template <>
struct Kernels<kfp64fc> {
    using Real = double;
    static Sized<kfp64fc> sized(int n, bool inverse) {
        static const Sized<kfp64fc> fwd[] = {KFPG_FOR_LENGTHS(KFPG_TEST_FWD64)};
        static const Sized<kfp64fc> inv[] = {KFPG_FOR_LENGTHS(KFPG_TEST_INV64)};
        return (inverse ? inv : fwd)[n - 2];
    }
    static Generic<kfp64fc> generic(bool inverse) { return inverse ? kfpgDFTInv_CToC_64fc : kfpgDFTFwd_CToC_64fc; }
    static constexpr double bound = 5e-15;
};

struct Case {
    int n;
    bool f64;
    bool inverse;
};

inline std::vector<Case> allCases() {
    std::vector<Case> cases;
    for (bool f64 : {false, true})
        for (bool inverse : {false, true})
            for (int n = 2; n <= 64; ++n) cases.push_back({n, f64, inverse});
    return cases;
}

inline std::string caseName(const ::testing::TestParamInfo<Case>& info) {
    const Case& c = info.param;
    return std::string(c.inverse ? "Inv_" : "Fwd_") + std::to_string(c.n) + (c.f64 ? "_64fc" : "_32fc");
}

// Calls body(kfp32fc{}) or body(kfp64fc{}) for the case's precision.
template <class Body>
void withPrecision(const Case& c, Body body) {
    if (c.f64)
        body(kfp64fc{});
    else
        body(kfp32fc{});
}

inline ref::Direction direction(bool inverse) { return inverse ? ref::Direction::Inverse : ref::Direction::Forward; }

// Random input of n elements, rounded to the kernel's precision.
template <class C>
std::vector<C> randomInput(int n, unsigned seed) {
    const auto r = ref::randomReals(2 * static_cast<std::size_t>(n), seed);
    std::vector<C> x(n);
    for (int i = 0; i < n; ++i) x[i] = {static_cast<decltype(C::re)>(r[2 * i]), static_cast<decltype(C::re)>(r[2 * i + 1])};
    return x;
}

// Reference output (long double) of the kernel's exact input, scaled for the flag.
template <class C>
std::vector<ref::Real> expected(const C* x, int n, bool inverse, int flag) {
    std::vector<ref::Complex> cx(n);
    for (int i = 0; i < n; ++i) cx[i] = {x[i].re, x[i].im};
    auto X = ref::dft(cx, inverse ? +1 : -1);
    const ref::Real s = ref::scaleFactor(flag, n, direction(inverse));
    for (auto& v : X) v *= s;
    return ref::interleave(X);
}

template <class C>
const typename Kernels<C>::Real* reals(const C* p) {
    return reinterpret_cast<const typename Kernels<C>::Real*>(p);
}

constexpr int kFlags[] = {ScaleFwdByN, ScaleInvByN, ScaleBySqrtN, ScaleNone};
constexpr int kBadFlags[] = {0, 3, 5, 6, 16, -1, -2147483647 - 1};

}  // namespace kfpg::test::cdft
