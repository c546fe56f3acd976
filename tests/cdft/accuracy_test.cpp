// Every complex DFT kernel against the long-double reference: random inputs
// under every flag, impulses, and forward-inverse round trips.
#include <cmath>
#include <complex>
#include <limits>

#include "buffers.h"
#include "cdft_cases.h"

namespace {

using namespace kfpg::test;
using namespace kfpg::test::cdft;

class CdftAccuracy : public ::testing::TestWithParam<Case> {};

TEST_P(CdftAccuracy, RandomInputsUnderEveryFlagMatchTheReference) {
    const Case c = GetParam();
    withPrecision(c, [&](auto tag) {
        using C = decltype(tag);
        const auto kernel = Kernels<C>::sized(c.n, c.inverse);
        for (int flag : kFlags)
            for (unsigned seed = 0; seed < 3; ++seed) {
                const auto x = randomInput<C>(c.n, 100u * seed + c.n);
                OffsetArray<C> dst(c.n, 0);
                ASSERT_EQ(kernel(x.data(), dst.data(), flag), StatusOk);
                const double err = kfpg::ref::relativeL2(reals(dst.data()), expected(x.data(), c.n, c.inverse, flag));
                EXPECT_LT(err, Kernels<C>::bound) << "flag " << flag << " seed " << seed;
            }
    });
}

TEST_P(CdftAccuracy, ImpulsesGiveTheScaleAndATwiddleRow) {
    const Case c = GetParam();
    withPrecision(c, [&](auto tag) {
        using C = decltype(tag);
        const auto kernel = Kernels<C>::sized(c.n, c.inverse);
        for (int flag : kFlags) {
            const double s = static_cast<double>(kfpg::ref::scaleFactor(flag, c.n, direction(c.inverse)));
            for (int at : {0, 1}) {
                std::vector<C> x(c.n, C{0, 0});
                x[at] = C{1, 0};
                std::vector<C> y(c.n);
                ASSERT_EQ(kernel(x.data(), y.data(), flag), StatusOk);
                for (int k = 0; k < c.n; ++k) {
                    const double angle = (c.inverse ? 2 : -2) * M_PI * at * k / c.n;
                    EXPECT_NEAR(y[k].re, s * std::cos(angle), 4 * Kernels<C>::bound) << "impulse at " << at << ", k " << k;
                    EXPECT_NEAR(y[k].im, s * std::sin(angle), 4 * Kernels<C>::bound) << "impulse at " << at << ", k " << k;
                }
            }
        }
    });
}

// Every output depends on every input with a weight of modulus 1, so a NaN
// or an infinity anywhere must reach every output component: a kernel that
// drops an input, or folds x - x to zero, fails here.
TEST_P(CdftAccuracy, NonFiniteInputsReachEveryOutput) {
    const Case c = GetParam();
    withPrecision(c, [&](auto tag) {
        using C = decltype(tag);
        using R = typename Kernels<C>::Real;
        const auto kernel = Kernels<C>::sized(c.n, c.inverse);
        for (R bad : {std::numeric_limits<R>::quiet_NaN(), std::numeric_limits<R>::infinity()})
            for (int at = 0; at < c.n; ++at) {
                auto x = randomInput<C>(c.n, 7u + at);
                x[at] = C{bad, bad};
                std::vector<C> y(c.n);
                ASSERT_EQ(kernel(x.data(), y.data(), ScaleNone), StatusOk);
                for (int k = 0; k < c.n; ++k) {
                    const bool reached = std::isnan(bad) ? std::isnan(y[k].re) && std::isnan(y[k].im)
                                                         : !std::isfinite(y[k].re) && !std::isfinite(y[k].im);
                    ASSERT_TRUE(reached) << bad << " at x[" << at << "] missing from X[" << k << "]";
                }
            }
    });
}

class CdftRoundTrip : public ::testing::TestWithParam<Case> {};

TEST_P(CdftRoundTrip, ForwardThenInverseRestoresTheInput) {
    const Case c = GetParam();
    withPrecision(c, [&](auto tag) {
        using C = decltype(tag);
        const auto fwd = Kernels<C>::sized(c.n, false), inv = Kernels<C>::sized(c.n, true);
        const auto x = randomInput<C>(c.n, 7u + c.n);
        std::vector<kfpg::ref::Real> want;
        for (const C& v : x) want.push_back(v.re), want.push_back(v.im);
        for (int flag : kFlags) {
            std::vector<C> y(c.n), z(c.n);
            ASSERT_EQ(fwd(x.data(), y.data(), flag), StatusOk);
            ASSERT_EQ(inv(y.data(), z.data(), flag), StatusOk);
            std::vector<kfpg::ref::Real> scaled = want;
            if (flag == ScaleNone)
                for (auto& v : scaled) v *= c.n;  // unscaled both ways: N times the input
            EXPECT_LT(kfpg::ref::relativeL2(reals(z.data()), scaled), 4 * Kernels<C>::bound) << "flag " << flag;
        }
    });
}

INSTANTIATE_TEST_SUITE_P(AllKernels, CdftAccuracy, ::testing::ValuesIn(allCases()), caseName);

std::vector<Case> forwardCases() {
    std::vector<Case> out;
    for (const Case& c : allCases())
        if (!c.inverse) out.push_back(c);
    return out;
}

INSTANTIATE_TEST_SUITE_P(AllLengths, CdftRoundTrip, ::testing::ValuesIn(forwardCases()), caseName);

}  // namespace
