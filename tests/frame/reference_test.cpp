// The reference transforms are checked against closed forms and against each
// other's inverses, so that a fault in them cannot hide a fault in a kernel.
#include <gtest/gtest.h>

#include <cmath>

#include "reference.h"

namespace {

using namespace kfpg::ref;

class ReferenceByLength : public ::testing::TestWithParam<int> {};

TEST_P(ReferenceByLength, DftOfShiftedImpulseIsATwiddleRow) {
    const int n = GetParam();
    std::vector<Complex> x(n, 0);
    x[1] = 1;
    const auto X = dft(x, -1);
    for (int k = 0; k < n; ++k) {
        const long double angle = -2 * 3.14159265358979323846264338327950288L * k / n;
        EXPECT_NEAR(static_cast<double>(X[k].real()), std::cos(static_cast<double>(angle)), 1e-15);
        EXPECT_NEAR(static_cast<double>(X[k].imag()), std::sin(static_cast<double>(angle)), 1e-15);
    }
}

TEST_P(ReferenceByLength, InversesRecoverTheInput) {
    const int n = GetParam();
    const auto x = randomReals(n, 7u + n);
    std::vector<Complex> cx = widenComplex(randomReals(2 * n, 11u + n));
    auto back = dft(dft(cx, -1), +1);
    for (auto& v : back) v /= static_cast<Real>(n);
    EXPECT_LT(relativeL2(back, cx), 1e-17);

    for (Layout layout : {Layout::CCS, Layout::Pack, Layout::Perm}) {
        const auto packed = realDftPacked(x, layout);
        ASSERT_EQ(static_cast<long>(packed.size()), packedLength(n, layout));
        auto rx = realDftUnpack(packed, n, layout);
        for (auto& v : rx) v /= n;
        std::vector<double> got(rx.begin(), rx.end());
        EXPECT_LT(relativeL2(got.data(), x), 1e-15);
    }
    auto hh = hartley(hartley(x));
    for (auto& v : hh) v /= n;
    std::vector<double> got(hh.begin(), hh.end());
    EXPECT_LT(relativeL2(got.data(), x), 1e-15);
}

TEST_P(ReferenceByLength, Dct4OfFirstUnitVectorIsTheCosineRow) {
    const int n = GetParam();
    std::vector<Real> e0(n, 0);
    e0[0] = 1;
    const auto y = dct4(e0);
    for (int k = 0; k < n; ++k) EXPECT_NEAR(static_cast<double>(y[k]), std::cos(M_PI * (2 * k + 1) / (4.0 * n)), 1e-15);
    // DCT-IV applied twice is N/2 times the identity.
    const auto x = randomReals(n, 3u + n);
    auto yy = dct4(dct4(x));
    for (auto& v : yy) v *= 2.0L / n;
    std::vector<double> got(yy.begin(), yy.end());
    EXPECT_LT(relativeL2(got.data(), x), 1e-15);
}

INSTANTIATE_TEST_SUITE_P(Lengths, ReferenceByLength, ::testing::Values(2, 3, 4, 5, 7, 8, 12, 16, 31, 64));

TEST(Reference, WalshHadamardIsSelfInverseAndNatural) {
    for (int order = 1; order <= 8; ++order) {
        const std::size_t n = std::size_t{1} << order;
        const auto x = randomReals(n, 5u + order);
        auto yy = walshHadamard(walshHadamard(x));
        for (auto& v : yy) v /= static_cast<Real>(n);
        std::vector<double> got(yy.begin(), yy.end());
        EXPECT_LT(relativeL2(got.data(), x), 1e-15);
    }
    const auto y = walshHadamard({1, 2, 3, 4});
    EXPECT_EQ(y, (std::vector<Real>{10, -2, -4, 0}));
}

TEST(Reference, ScaleFactorsFollowTheDirection) {
    EXPECT_EQ(scaleFactor(1, 4, Direction::Forward), 0.25L);
    EXPECT_EQ(scaleFactor(1, 4, Direction::Inverse), 1.0L);
    EXPECT_EQ(scaleFactor(2, 4, Direction::Forward), 1.0L);
    EXPECT_EQ(scaleFactor(2, 4, Direction::SelfInverse), 0.25L);
    EXPECT_EQ(scaleFactor(4, 4, Direction::Inverse), 0.5L);
    EXPECT_EQ(scaleFactor(8, 4, Direction::Forward), 1.0L);
    EXPECT_EQ(scaleFactor(3, 4, Direction::Forward), 0.0L);
}

}  // namespace
