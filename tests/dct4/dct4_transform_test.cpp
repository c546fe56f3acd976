// DCT-IV results against the long-double definition for every accepted power
// of two up to 2^16 and the odd lengths up to 2^10 + 1, in both precisions;
// in place, out of place and misaligned arrays agree bit for bit.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "buffers.h"
#include "dct4_api.h"
#include "reference.h"

namespace {

using kfpg::ref::Real;
using kfpg::test::Dct4Plan;
using kfpg::test::OffsetArray;

constexpr int kFullReferenceUpTo = 4096;
constexpr int kSampledOutputs = 768;

struct Case {
    std::vector<Real> input;  // values exact in single precision
    std::vector<long> which;  // output indices compared
    std::vector<Real> want;   // reference outputs at `which`
};

// One input and reference per length, shared by both precisions.
const Case& caseFor(int n) {
    static std::map<int, Case> cache;
    static std::mutex lock;
    std::lock_guard<std::mutex> guard(lock);
    auto it = cache.find(n);
    if (it != cache.end()) return it->second;
    Case c;
    c.input = kfpg::ref::randomReals(static_cast<std::size_t>(n), 1000u + static_cast<unsigned>(n));
    for (auto& v : c.input) v = static_cast<float>(v);
    if (n <= kFullReferenceUpTo) {
        for (long k = 0; k < n; ++k) c.which.push_back(k);
    } else {
        // Both ends, and a spread of indices with irregular steps in between.
        for (long i = 0; i < kSampledOutputs; ++i) c.which.push_back((i * 7919L * 13 + i * i) % n);
        c.which.push_back(0);
        c.which.push_back(n - 1);
    }
    c.want = kfpg::ref::dct4At(c.input, c.which);
    return cache.emplace(n, std::move(c)).first->second;
}

// Relative L2 error allowed: flat up to 4096, then growing like log2 N.
double bound(int n, bool single) {
    const double base = single ? 2e-7 : 1e-15;
    return n <= 4096 ? base : base * std::log2(static_cast<double>(n)) / 12.0;
}

template <class Real>
double relativeError(const Real* got, const Case& c) {
    long double err = 0, norm = 0;
    for (std::size_t i = 0; i < c.which.size(); ++i) {
        const long double d = static_cast<long double>(got[c.which[i]]) - c.want[i];
        err += d * d;
        norm += c.want[i] * c.want[i];
    }
    return static_cast<double>(std::sqrt(err / norm));
}

template <class Real>
void checkLength(int n) {
    const Case& c = caseFor(n);
    Dct4Plan<Real> plan(n);
    ASSERT_EQ(plan.status(), StatusOk);
    std::vector<Real> x(c.input.begin(), c.input.end()), y(n);
    ASSERT_EQ(plan.run(x.data(), y.data()), StatusOk);
    const double err = relativeError(y.data(), c);
    EXPECT_LE(err, bound(n, sizeof(Real) == 4)) << "N=" << n;

    // The input is left alone out of place; in place gives the same bits.
    for (int i = 0; i < n; ++i) ASSERT_EQ(x[i], static_cast<Real>(c.input[i]));
    std::vector<Real> inPlace = x;
    ASSERT_EQ(plan.run(inPlace.data(), inPlace.data()), StatusOk);
    EXPECT_EQ(0, std::memcmp(inPlace.data(), y.data(), n * sizeof(Real))) << "in place differs, N=" << n;

    // Arrays off the vector boundary, and a second run: the same bits again.
    OffsetArray<Real> src(n, sizeof(Real)), dst(n, 3 * sizeof(Real));
    src.assign(c.input);
    ASSERT_EQ(plan.run(src.data(), dst.data()), StatusOk);
    EXPECT_EQ(0, std::memcmp(dst.data(), y.data(), n * sizeof(Real))) << "misaligned differs, N=" << n;

    // No cosine of the transform is zero, so one NaN input reaches every output.
    std::vector<Real> poisoned = x;
    poisoned[n / 3] = std::numeric_limits<Real>::quiet_NaN();
    ASSERT_EQ(plan.run(poisoned.data(), y.data()), StatusOk);
    for (int k = 0; k < n; ++k) ASSERT_TRUE(std::isnan(y[k])) << "NaN missing from y[" << k << "], N=" << n;
}

// Every accepted power of two up to 2^16 and odd length up to 2^10 + 1.
template <class Real>
std::vector<int> lengths() {
    std::vector<int> out;
    for (int n : kfpg::test::acceptedLengths<Real>(65536))
        if (n % 2 == 0 || n <= 1025) out.push_back(n);
    return out;
}

std::string lengthName(const ::testing::TestParamInfo<int>& info) { return "N" + std::to_string(info.param); }

class Dct4Transform32f : public ::testing::TestWithParam<int> {};
TEST_P(Dct4Transform32f, MatchesDefinition) { checkLength<float>(GetParam()); }
INSTANTIATE_TEST_SUITE_P(AllAccepted, Dct4Transform32f, ::testing::ValuesIn(lengths<float>()), lengthName);

class Dct4Transform64f : public ::testing::TestWithParam<int> {};
TEST_P(Dct4Transform64f, MatchesDefinition) { checkLength<double>(GetParam()); }
INSTANTIATE_TEST_SUITE_P(AllAccepted, Dct4Transform64f, ::testing::ValuesIn(lengths<double>()), lengthName);

// 2^17 nests a second recursive split (R_4096 = 32 x (R_128 = 8 x R_16)).
TEST(Dct4Values, TwoLevelRecursiveSplit) {
    checkLength<float>(131072);
    checkLength<double>(131072);
}

// The transform of the unit vector e0 is cos(pi (2k+1) / (4N)), unscaled.
template <class Real>
void checkUnitVector(int n) {
    Dct4Plan<Real> plan(n);
    ASSERT_EQ(plan.status(), StatusOk);
    std::vector<Real> x(n, 0), y(n);
    x[0] = 1;
    ASSERT_EQ(plan.run(x.data(), y.data()), StatusOk);
    const long double pi = std::acos(-1.0L);
    const double tol = sizeof(Real) == 4 ? 4e-7 : 1e-15;
    for (int k = 0; k < n; ++k)
        ASSERT_NEAR(static_cast<double>(y[k]), static_cast<double>(std::cos(pi * (2 * k + 1) / (4.0L * n))), tol)
            << "N=" << n << " k=" << k;
}

TEST(Dct4Values, UnitVectorGivesTheKernelColumn) {
    for (int n : {2, 4, 8, 16, 32, 33, 64, 65, 256, 4096}) {
        checkUnitVector<float>(n);
        checkUnitVector<double>(n);
    }
    checkUnitVector<double>(9);
    checkUnitVector<double>(17);
}

// The two-point transform with the 32-bit constants cos(pi/8), sin(pi/8).
TEST(Dct4Values, TwoPointFormula) {
    Dct4Plan<float> plan(2);
    const float x[2] = {0.75f, -2.5f};
    float y[2];
    ASSERT_EQ(plan.run(x, y), StatusOk);
    const float c = 0.92387950f, s = 0.38268343f;
    EXPECT_EQ(y[0], c * x[0] + s * x[1]);
    EXPECT_EQ(y[1], s * x[0] - c * x[1]);
}

}  // namespace
