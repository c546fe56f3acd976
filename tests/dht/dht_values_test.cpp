// Values of the Hartley kernels: every kernel against the long-double
// reference under every flag, impulses, the transform applied twice, the
// relation to the real DFT, and the scale as one last multiplication in the
// kernel's precision.
#include <cmath>

#include "dht_cases.h"

namespace {

using namespace kfpg::test;
using namespace kfpg::test::dht;
namespace ref = kfpg::ref;

class DhtValues : public ::testing::TestWithParam<Case> {};

TEST_P(DhtValues, MatchTheReferenceUnderEveryFlag) {
    const Case c = GetParam();
    withPrecision(c, [&](auto tag) {
        using T = decltype(tag);
        for (unsigned seed = 1; seed <= 4; ++seed) {
            const auto x = randomInput<T>(c.n, seed * 37u + c.n);
            for (int flag : kFlags)
                EXPECT_LT(ref::relativeL2(run(x, flag).data(), expected(x, flag)), Kernels<T>::bound) << "flag " << flag;
        }
    });
}

// The factor rounded once to the kernel's precision, multiplied into the
// unscaled result: flags 1 and 2 give the same bits, flag 8 multiplies by 1.
TEST_P(DhtValues, ScaledOutputIsTheUnscaledOneTimesTheFactor) {
    const Case c = GetParam();
    withPrecision(c, [&](auto tag) {
        using T = decltype(tag);
        const auto x = randomInput<T>(c.n, 71u + c.n);
        const auto plain = run(x, ScaleNone);
        const T byN = T(1.0L / c.n), bySqrtN = T(1.0L / std::sqrt(static_cast<long double>(c.n)));
        const auto byFwd = run(x, ScaleFwdByN), byInv = run(x, ScaleInvByN), bySqrt = run(x, ScaleBySqrtN);
        EXPECT_EQ(bytesOf(byFwd.data(), c.n), bytesOf(byInv.data(), c.n));
        for (int k = 0; k < c.n; ++k) {
            const T wantN = plain[k] * byN, wantSqrt = plain[k] * bySqrtN;
            EXPECT_EQ(bytesOf(&byFwd[k], 1), bytesOf(&wantN, 1)) << k;
            EXPECT_EQ(bytesOf(&bySqrt[k], 1), bytesOf(&wantSqrt, 1)) << k;
        }
    });
}

// An impulse at x0 gives s in every output exactly; at x1 it gives
// s cas(2 pi k / N), which fixes the sign of the sine term.
TEST_P(DhtValues, ImpulsesGiveTheScaleAndTheCasFunction) {
    const Case c = GetParam();
    withPrecision(c, [&](auto tag) {
        using T = decltype(tag);
        for (int flag : kFlags) {
            const T s = T(ref::scaleFactor(flag, c.n, ref::Direction::SelfInverse));
            std::vector<T> x(c.n, T(0));
            x[0] = 1;
            EXPECT_EQ(run(x, flag), std::vector<T>(c.n, s)) << "flag " << flag;
            x[0] = 0;
            x[1] = 1;
            std::vector<ref::Real> cas(c.n);
            for (int k = 0; k < c.n; ++k) cas[k] = s * (ref::cosTurn(k, c.n) + ref::sinTurn(k, c.n));
            EXPECT_LT(ref::relativeL2(run(x, flag).data(), cas), Kernels<T>::bound) << "flag " << flag;
        }
    });
}

TEST_P(DhtValues, AppliedTwiceReturnsTheInput) {
    const Case c = GetParam();
    withPrecision(c, [&](auto tag) {
        using T = decltype(tag);
        const auto x = randomInput<T>(c.n, 5u + c.n);
        const std::vector<ref::Real> want(x.begin(), x.end());
        const double bound = 4 * Kernels<T>::bound;
        EXPECT_LT(ref::relativeL2(run(run(x, ScaleNone), ScaleFwdByN).data(), want), bound);
        EXPECT_LT(ref::relativeL2(run(run(x, ScaleNone), ScaleInvByN).data(), want), bound);
        EXPECT_LT(ref::relativeL2(run(run(x, ScaleFwdByN), ScaleNone).data(), want), bound);
        EXPECT_LT(ref::relativeL2(run(run(x, ScaleBySqrtN), ScaleBySqrtN).data(), want), bound);
    });
}

// H[k] = Re X[k] - Im X[k] and H[N-k] = Re X[k] + Im X[k], X from the
// library's forward real DFT (CCS layout) of the same input.
TEST_P(DhtValues, IsTheRealPartMinusTheImaginaryPartOfTheRealDft) {
    const Case c = GetParam();
    withPrecision(c, [&](auto tag) {
        using T = decltype(tag);
        const auto x = randomInput<T>(c.n, 19u + c.n);
        std::vector<T> ccs(c.n + 2);
        std::vector<ref::Real> fromDft(c.n);
        if constexpr (sizeof(T) == 4)
            ASSERT_EQ(kfpgDFTFwd_RToCCS_32f(x.data(), ccs.data(), c.n, ScaleNone), StatusOk);
        else
            ASSERT_EQ(kfpgDFTFwd_RToCCS_64f(x.data(), ccs.data(), c.n, ScaleNone), StatusOk);
        for (int k = 0; k <= c.n / 2; ++k) {
            const ref::Real re = ccs[2 * k], im = ccs[2 * k + 1];
            fromDft[k] = re - im;
            fromDft[(c.n - k) % c.n] = re + im;
        }
        EXPECT_LT(ref::relativeL2(run(x, ScaleNone).data(), fromDft), 2 * Kernels<T>::bound);
    });
}

INSTANTIATE_TEST_SUITE_P(AllKernels, DhtValues, ::testing::ValuesIn(allCases()), caseName);

}  // namespace
