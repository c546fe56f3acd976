// The values every WHT kernel computes: against the long-double reference,
// and exactly on inputs whose transform is known in closed form.
#include "wht_support.h"

namespace {

using namespace kfpg::test::wht;
namespace ref = kfpg::ref;

class WhtValues : public ::testing::TestWithParam<Case> {};

template <class T>
void matchesReference(const Case& c) {
    const auto x = narrow<T>(input(c.order));
    for (int flag : {ScaleNone, ScaleBySqrtN, ScaleFwdByN, ScaleInvByN}) {
        auto want = reference(c.order);
        const Real s = ref::scaleFactor(flag, c.n(), ref::Direction::SelfInverse);
        for (auto& v : want) v *= s;
        const auto got = transform<T>(c.order, x, flag);
        EXPECT_LE(ref::relativeL2(got.data(), want), bound<T>(c.order)) << "flag " << flag;
    }
}
TEST_P(WhtValues, MatchesTheReferenceForEveryFlag) { KFPG_WHT_FOR_PRECISION(GetParam(), matchesReference); }

template <class T>
void impulse(const Case& c) {
    std::vector<T> x(c.n(), 0);
    x[0] = 1;
    for (int flag : {ScaleNone, ScaleBySqrtN, ScaleFwdByN}) {
        const auto y = transform<T>(c.order, x, flag);
        for (long k = 0; k < c.n(); ++k) ASSERT_EQ(y[k], factor<T>(flag, c.order)) << "flag " << flag << " k " << k;
    }
}
TEST_P(WhtValues, ImpulseGivesTheFactorEverywhere) { KFPG_WHT_FOR_PRECISION(GetParam(), impulse); }

template <class T>
void constant(const Case& c) {
    const std::vector<T> x(c.n(), T(0.75));
    for (int flag : {ScaleNone, ScaleBySqrtN, ScaleFwdByN}) {
        const auto y = transform<T>(c.order, x, flag);
        EXPECT_EQ(y[0], static_cast<T>(c.n() * 0.75) * factor<T>(flag, c.order)) << "flag " << flag;
        for (long k = 1; k < c.n(); ++k) ASSERT_EQ(y[k], 0) << "flag " << flag << " k " << k;
    }
}
TEST_P(WhtValues, ConstantGoesToTheFirstOutput) { KFPG_WHT_FOR_PRECISION(GetParam(), constant); }

// x[i] = (-1)^popcount(i & m): natural order puts all of it at output m.
template <class T>
void walshFunction(const Case& c) {
    const long n = c.n();
    for (long m : {0L, 1L, n / 2, n - 1, (n * 5 / 7) | 1, n / 3}) {
        std::vector<T> x(n);
        for (long i = 0; i < n; ++i) x[i] = __builtin_popcountl(i & m) % 2 ? -1 : 1;
        const auto y = transform<T>(c.order, x, ScaleBySqrtN);
        const T peak = static_cast<T>(n) * factor<T>(ScaleBySqrtN, c.order);
        for (long k = 0; k < n; ++k) ASSERT_EQ(y[k], k == m ? peak : 0) << "mask " << m << " k " << k;
    }
}
TEST_P(WhtValues, WalshFunctionGoesToItsMask) { KFPG_WHT_FOR_PRECISION(GetParam(), walshFunction); }

template <class T>
void twiceIsIdentity(const Case& c) {
    const auto x = narrow<T>(input(c.order));
    const auto want = input(c.order);
    for (auto [first, second] : {std::pair{ScaleNone, ScaleFwdByN}, std::pair{ScaleNone, ScaleInvByN},
                                 std::pair{ScaleBySqrtN, ScaleBySqrtN}, std::pair{ScaleInvByN, ScaleNone}}) {
        const auto back = transform<T>(c.order, transform<T>(c.order, x, first), second);
        EXPECT_LE(ref::relativeL2(back.data(), want), 2 * bound<T>(c.order)) << first << " then " << second;
    }
}
TEST_P(WhtValues, TwiceReturnsTheInputForFlagPairs) { KFPG_WHT_FOR_PRECISION(GetParam(), twiceIsIdentity); }

template <class T>
void flagsOneAndTwoAlike(const Case& c) {
    const auto x = narrow<T>(input(c.order));
    EXPECT_TRUE(sameBits(transform<T>(c.order, x, ScaleFwdByN), transform<T>(c.order, x, ScaleInvByN)));
}
TEST_P(WhtValues, FlagsOneAndTwoAreBitIdentical) { KFPG_WHT_FOR_PRECISION(GetParam(), flagsOneAndTwoAlike); }

// Every output is a signed sum of all inputs: one NaN, placed at a few
// positions across the rows and blocks, must reach every output.
template <class T>
void nanReachesEveryOutput(const Case& c) {
    const long n = c.n();
    for (long at : {0L, n - 1, (n / 2 + 1) % n, (n * 5 / 7) | 1}) {
        auto x = narrow<T>(input(c.order));
        x[at] = std::numeric_limits<T>::quiet_NaN();
        const auto y = transform<T>(c.order, x, ScaleNone);
        for (long k = 0; k < n; ++k) ASSERT_TRUE(std::isnan(y[k])) << "NaN at " << at << " missing from " << k;
    }
}
TEST_P(WhtValues, NanReachesEveryOutput) { KFPG_WHT_FOR_PRECISION(GetParam(), nanReachesEveryOutput); }

INSTANTIATE_TEST_SUITE_P(AllOrders, WhtValues, ::testing::ValuesIn(allCases()), caseName);

TEST(WhtValues, SqrtFactorsRoundedToTheElementType) {
    float y32[2];
    const float one32[2] = {1, 0};
    ASSERT_EQ(kfpgWHT_1_32f(one32, y32, ScaleBySqrtN, nullptr), StatusOk);
    EXPECT_EQ(y32[0], 0.70710677f);
    EXPECT_EQ(y32[1], 0.70710677f);

    std::vector<double> x(8192, 0), y(8192);
    x[0] = 1;
    ASSERT_EQ(kfpgWHT_13_64f(x.data(), y.data(), ScaleBySqrtN, nullptr), StatusOk);
    EXPECT_EQ(y[0], 0.011048543456039804);
    EXPECT_EQ(y[8191], 0.011048543456039804);
}

}  // namespace
