// Shared by the inverse real DFT tests: every sized kernel and generic entry
// by layout, precision and length, the parameter list of all 378 cases, and
// random half spectra in each layout with their long-double inverse.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "kfpgen.h"
#include "reference.h"

namespace kfpg::test::rdft_inv {

using ref::Layout;

template <class T>
using Sized = KfpStatus (*)(const T*, T*, int);
template <class T>
using Generic = KfpStatus (*)(const T*, T*, int, int);

#define KFPG_TEST_INV(N, L, T) kfpgDFTInv_##L##ToR_##N##_##T,
#define KFPG_TEST_INV_CCS32(N) KFPG_TEST_INV(N, CCS, 32f)
#define KFPG_TEST_INV_PACK32(N) KFPG_TEST_INV(N, Pack, 32f)
#define KFPG_TEST_INV_PERM32(N) KFPG_TEST_INV(N, Perm, 32f)
#define KFPG_TEST_INV_CCS64(N) KFPG_TEST_INV(N, CCS, 64f)
#define KFPG_TEST_INV_PACK64(N) KFPG_TEST_INV(N, Pack, 64f)
#define KFPG_TEST_INV_PERM64(N) KFPG_TEST_INV(N, Perm, 64f)

template <class T>
struct Kernels;

template <>
struct Kernels<float> {
    static Sized<float> sized(int n, Layout layout) {
        static const Sized<float> ccs[] = {KFPG_FOR_LENGTHS(KFPG_TEST_INV_CCS32)};
        static const Sized<float> pack[] = {KFPG_FOR_LENGTHS(KFPG_TEST_INV_PACK32)};
        static const Sized<float> perm[] = {KFPG_FOR_LENGTHS(KFPG_TEST_INV_PERM32)};
        return (layout == Layout::CCS ? ccs : layout == Layout::Pack ? pack : perm)[n - 2];
    }
    static Generic<float> generic(Layout layout) {
        return layout == Layout::CCS ? kfpgDFTInv_CCSToR_32f : layout == Layout::Pack ? kfpgDFTInv_PackToR_32f : kfpgDFTInv_PermToR_32f;
    }
    static Sized<float> forward(int n, Layout layout) {
        static const Sized<float> table[] = {
#define KFPG_TEST_FWD32(N) kfpgDFTFwd_RToCCS_##N##_32f, kfpgDFTFwd_RToPack_##N##_32f, kfpgDFTFwd_RToPerm_##N##_32f,
            KFPG_FOR_LENGTHS(KFPG_TEST_FWD32)};
        return table[3 * (n - 2) + static_cast<int>(layout)];
    }
    static constexpr double bound = 4e-7;
};

template <>
struct Kernels<double> {
    static Sized<double> sized(int n, Layout layout) {
        static const Sized<double> ccs[] = {KFPG_FOR_LENGTHS(KFPG_TEST_INV_CCS64)};
        static const Sized<double> pack[] = {KFPG_FOR_LENGTHS(KFPG_TEST_INV_PACK64)};
        static const Sized<double> perm[] = {KFPG_FOR_LENGTHS(KFPG_TEST_INV_PERM64)};
        return (layout == Layout::CCS ? ccs : layout == Layout::Pack ? pack : perm)[n - 2];
    }
    static Generic<double> generic(Layout layout) {
        return layout == Layout::CCS ? kfpgDFTInv_CCSToR_64f : layout == Layout::Pack ? kfpgDFTInv_PackToR_64f : kfpgDFTInv_PermToR_64f;
    }
    static Sized<double> forward(int n, Layout layout) {
        static const Sized<double> table[] = {
#define KFPG_TEST_FWD64(N) kfpgDFTFwd_RToCCS_##N##_64f, kfpgDFTFwd_RToPack_##N##_64f, kfpgDFTFwd_RToPerm_##N##_64f,
            KFPG_FOR_LENGTHS(KFPG_TEST_FWD64)};
        return table[3 * (n - 2) + static_cast<int>(layout)];
    }
    static constexpr double bound = 1e-15;
};

struct Case {
    int n;
    bool f64;
    Layout layout;
    // Elements of the source array (a CCS array holds two or one more than the kernel reads).
    int srcCount() const { return static_cast<int>(ref::packedLength(n, layout)); }
    // The CCS elements never loaded: Im X[0] and, for even n, Im X[n/2].
    bool ignored(int e) const { return layout == Layout::CCS && (e == 1 || (n % 2 == 0 && e == n + 1)); }
    // One past the last element the kernel loads.
    int readEnd() const { return layout == Layout::CCS && n % 2 == 0 ? n + 1 : srcCount(); }
};

inline std::vector<Case> allCases() {
    std::vector<Case> cases;
    for (bool f64 : {false, true})
        for (Layout layout : {Layout::CCS, Layout::Pack, Layout::Perm})
            for (int n = 2; n <= 64; ++n) cases.push_back({n, f64, layout});
    return cases;
}

// The CCS cases only: the checks of the CCS zeros and of the layouts against each other.
inline std::vector<Case> ccsCases() {
    std::vector<Case> cases;
    for (const Case& c : allCases())
        if (c.layout == Layout::CCS) cases.push_back(c);
    return cases;
}

inline std::string caseName(const ::testing::TestParamInfo<Case>& info) {
    static const char* const names[] = {"CCS", "Pack", "Perm"};
    const Case& c = info.param;
    return std::string(names[static_cast<int>(c.layout)]) + "_" + std::to_string(c.n) + (c.f64 ? "_64f" : "_32f");
}

template <class Body>
void withPrecision(const Case& c, Body body) {
    if (c.f64)
        body(double{});
    else
        body(float{});
}

// A random half spectrum in the case's layout; the ignored CCS elements hold `junk`.
template <class T>
std::vector<T> randomSpectrum(const Case& c, unsigned seed, T junk = std::numeric_limits<T>::quiet_NaN()) {
    const auto r = ref::randomReals(static_cast<std::size_t>(c.srcCount()), seed);
    std::vector<T> s(r.begin(), r.end());
    for (int e = 0; e < c.srcCount(); ++e)
        if (c.ignored(e)) s[e] = junk;
    return s;
}

// The long-double inverse of the kernel's exact input, scaled for the flag.
template <class T>
std::vector<ref::Real> expected(const Case& c, const T* spectrum, int flag) {
    std::vector<ref::Real> packed(spectrum, spectrum + c.srcCount());
    for (int e = 0; e < c.srcCount(); ++e)
        if (c.ignored(e)) packed[e] = 0;
    auto x = ref::realDftUnpack(packed, c.n, c.layout);
    const ref::Real s = ref::scaleFactor(flag, c.n, ref::Direction::Inverse);
    for (auto& v : x) v *= s;
    return x;
}

template <class T>
std::vector<unsigned char> bytesOf(const T* p, int count) {
    const auto* b = reinterpret_cast<const unsigned char*>(p);
    return std::vector<unsigned char>(b, b + count * sizeof(T));
}

constexpr int kFlags[] = {ScaleFwdByN, ScaleInvByN, ScaleBySqrtN, ScaleNone};
constexpr int kBadFlags[] = {0, 3, 5, 6, 16, -1, -2147483647 - 1};

}  // namespace kfpg::test::rdft_inv
