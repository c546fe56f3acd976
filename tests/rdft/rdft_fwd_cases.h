// Shared by the forward real DFT tests: every sized kernel and generic entry
// by layout, precision and length, and the parameter list of all 378 cases.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "kfpgen.h"
#include "reference.h"

namespace kfpg::test::rdft {

using ref::Layout;

template <class T>
using Sized = KfpStatus (*)(const T*, T*, int);
template <class T>
using Generic = KfpStatus (*)(const T*, T*, int, int);

#define KFPG_TEST_RDFT(N, L, T) kfpgDFTFwd_RTo##L##_##N##_##T,
#define KFPG_TEST_CCS32(N) KFPG_TEST_RDFT(N, CCS, 32f)
#define KFPG_TEST_PACK32(N) KFPG_TEST_RDFT(N, Pack, 32f)
#define KFPG_TEST_PERM32(N) KFPG_TEST_RDFT(N, Perm, 32f)
#define KFPG_TEST_CCS64(N) KFPG_TEST_RDFT(N, CCS, 64f)
#define KFPG_TEST_PACK64(N) KFPG_TEST_RDFT(N, Pack, 64f)
#define KFPG_TEST_PERM64(N) KFPG_TEST_RDFT(N, Perm, 64f)

template <class T>
struct Kernels;

template <>
struct Kernels<float> {
    static Sized<float> sized(int n, Layout layout) {
        static const Sized<float> ccs[] = {KFPG_FOR_LENGTHS(KFPG_TEST_CCS32)};
        static const Sized<float> pack[] = {KFPG_FOR_LENGTHS(KFPG_TEST_PACK32)};
        static const Sized<float> perm[] = {KFPG_FOR_LENGTHS(KFPG_TEST_PERM32)};
        return (layout == Layout::CCS ? ccs : layout == Layout::Pack ? pack : perm)[n - 2];
    }
    static Generic<float> generic(Layout layout) {
        return layout == Layout::CCS ? kfpgDFTFwd_RToCCS_32f : layout == Layout::Pack ? kfpgDFTFwd_RToPack_32f : kfpgDFTFwd_RToPerm_32f;
    }
    static constexpr double bound = 4e-7;
};

template <>
struct Kernels<double> {
    static Sized<double> sized(int n, Layout layout) {
        static const Sized<double> ccs[] = {KFPG_FOR_LENGTHS(KFPG_TEST_CCS64)};
        static const Sized<double> pack[] = {KFPG_FOR_LENGTHS(KFPG_TEST_PACK64)};
        static const Sized<double> perm[] = {KFPG_FOR_LENGTHS(KFPG_TEST_PERM64)};
        return (layout == Layout::CCS ? ccs : layout == Layout::Pack ? pack : perm)[n - 2];
    }
    static Generic<double> generic(Layout layout) {
        return layout == Layout::CCS ? kfpgDFTFwd_RToCCS_64f : layout == Layout::Pack ? kfpgDFTFwd_RToPack_64f : kfpgDFTFwd_RToPerm_64f;
    }
    static constexpr double bound = 1e-15;
};

struct Case {
    int n;
    bool f64;
    Layout layout;
    // Elements the kernel writes.
    int outCount() const { return static_cast<int>(ref::packedLength(n, layout)); }
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

// Calls body(float{}) or body(double{}) for the case's precision.
template <class Body>
void withPrecision(const Case& c, Body body) {
    if (c.f64)
        body(double{});
    else
        body(float{});
}

// Random input of n elements in the kernel's precision.
template <class T>
std::vector<T> randomInput(int n, unsigned seed) {
    const auto r = ref::randomReals(static_cast<std::size_t>(n), seed);
    return std::vector<T>(r.begin(), r.end());
}

// The reference spectrum of the kernel's exact input in the case's layout,
// scaled for the flag, as many elements as the kernel writes.
template <class T>
std::vector<ref::Real> expected(const Case& c, const T* x, int flag) {
    auto packed = ref::realDftPacked(std::vector<ref::Real>(x, x + c.n), c.layout);
    const ref::Real s = ref::scaleFactor(flag, c.n, ref::Direction::Forward);
    for (auto& v : packed) v *= s;
    return packed;
}

template <class T>
std::vector<unsigned char> bytesOf(const T* p, int count) {
    const auto* b = reinterpret_cast<const unsigned char*>(p);
    return std::vector<unsigned char>(b, b + count * sizeof(T));
}

constexpr int kFlags[] = {ScaleFwdByN, ScaleInvByN, ScaleBySqrtN, ScaleNone};
constexpr int kBadFlags[] = {0, 3, 5, 6, 16, -1, -2147483647 - 1};

}  // namespace kfpg::test::rdft
