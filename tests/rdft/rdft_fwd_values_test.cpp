// Values of the forward real DFT kernels: every kernel against the
// long-double reference under every flag, the scale as one last
// multiplication, the layouts against each other, and the small lengths
// whose operations are fixed, bit for bit.
#include <cmath>

#include "rdft_fwd_cases.h"

namespace {

using namespace kfpg::test;
using namespace kfpg::test::rdft;
namespace ref = kfpg::ref;

class RdftFwdValues : public ::testing::TestWithParam<Case> {};
class RdftFwdCcs : public ::testing::TestWithParam<Case> {};

TEST_P(RdftFwdValues, MatchTheReferenceUnderEveryFlag) {
    const Case c = GetParam();
    withPrecision(c, [&](auto tag) {
        using T = decltype(tag);
        const auto kernel = Kernels<T>::sized(c.n, c.layout);
        for (unsigned seed = 1; seed <= 4; ++seed) {
            const auto x = randomInput<T>(c.n, seed * 31u + c.n);
            for (int flag : kFlags) {
                std::vector<T> y(c.packedCount());
                ASSERT_EQ(kernel(x.data(), y.data(), flag), StatusOk);
                EXPECT_LT(ref::relativeL2(y.data(), expected(c, x.data(), flag)), Kernels<T>::bound) << "flag " << flag;
            }
        }
    });
}

TEST_P(RdftFwdValues, ScaledOutputIsTheUnscaledOneTimesTheFactorInTheKernelsPrecision) {
    const Case c = GetParam();
    withPrecision(c, [&](auto tag) {
        using T = decltype(tag);
        const auto kernel = Kernels<T>::sized(c.n, c.layout);
        const auto x = randomInput<T>(c.n, 77u + c.n);
        std::vector<T> plain(c.packedCount());
        ASSERT_EQ(kernel(x.data(), plain.data(), ScaleNone), StatusOk);
        // The factors rounded once from their exact values.
        const T factors[] = {T(1.0L / c.n), T(1), T(1.0L / std::sqrt(static_cast<long double>(c.n)))};
        const int flags[] = {ScaleFwdByN, ScaleInvByN, ScaleBySqrtN};
        for (int i = 0; i < 3; ++i) {
            std::vector<T> y(c.packedCount());
            ASSERT_EQ(kernel(x.data(), y.data(), flags[i]), StatusOk);
            for (int e = 0; e < c.packedCount(); ++e) {
                const bool zeroSlot = c.layout == Layout::CCS && (e == 1 || (c.n % 2 == 0 && e == c.n + 1));
                const T want = zeroSlot ? T(0) : plain[e] * factors[i];
                EXPECT_EQ(bytesOf(&y[e], 1), bytesOf(&want, 1)) << "flag " << flags[i] << " element " << e;
            }
        }
    });
}

TEST_P(RdftFwdCcs, CcsZerosArePositiveZeroUnderEveryFlag) {
    const Case c = GetParam();
    withPrecision(c, [&](auto tag) {
        using T = decltype(tag);
        const auto x = randomInput<T>(c.n, 5u);
        for (int flag : kFlags) {
            std::vector<T> y(c.packedCount(), T(-7));
            ASSERT_EQ(Kernels<T>::sized(c.n, c.layout)(x.data(), y.data(), flag), StatusOk);
            const T zero = 0;
            EXPECT_EQ(bytesOf(&y[1], 1), bytesOf(&zero, 1));
            if (c.n % 2 == 0) EXPECT_EQ(bytesOf(&y[c.n + 1], 1), bytesOf(&zero, 1));
        }
    });
}

TEST_P(RdftFwdCcs, PackAndPermHoldTheCcsValuesInTheirPlaces) {
    const Case c = GetParam();
    withPrecision(c, [&](auto tag) {
        using T = decltype(tag);
        const auto x = randomInput<T>(c.n, 9u + c.n);
        std::vector<T> ccs(c.n + 2), pack(c.n), perm(c.n);
        ASSERT_EQ(Kernels<T>::sized(c.n, Layout::CCS)(x.data(), ccs.data(), ScaleBySqrtN), StatusOk);
        ASSERT_EQ(Kernels<T>::sized(c.n, Layout::Pack)(x.data(), pack.data(), ScaleBySqrtN), StatusOk);
        ASSERT_EQ(Kernels<T>::sized(c.n, Layout::Perm)(x.data(), perm.data(), ScaleBySqrtN), StatusOk);
        // The same arithmetic in every layout: Pack is CCS without the two zeros.
        std::vector<T> packFromCcs{ccs[0]};
        for (int e = 2; e < c.n + 1; ++e) packFromCcs.push_back(ccs[e]);
        EXPECT_EQ(bytesOf(pack.data(), c.n), bytesOf(packFromCcs.data(), c.n));
        std::vector<T> permFromPack = pack;
        if (c.n % 2 == 0) {
            // The Nyquist value moves from the end to position 1.
            permFromPack.insert(permFromPack.begin() + 1, pack.back());
            permFromPack.pop_back();
        }
        EXPECT_EQ(bytesOf(perm.data(), c.n), bytesOf(permFromPack.data(), c.n));
    });
}

TEST_P(RdftFwdValues, ConstantInputScaledByNGivesItsValueAndZeros) {
    const Case c = GetParam();
    withPrecision(c, [&](auto tag) {
        using T = decltype(tag);
        const T v = T(0.625);
        const std::vector<T> x(c.n, v);
        std::vector<T> y(c.packedCount());
        ASSERT_EQ(Kernels<T>::sized(c.n, c.layout)(x.data(), y.data(), ScaleFwdByN), StatusOk);
        const double tolerance = c.f64 ? 1e-15 : 1e-6;
        EXPECT_NEAR(y[0], v, tolerance);
        for (int e = 1; e < c.packedCount(); ++e) EXPECT_NEAR(y[e], 0, tolerance) << e;
    });
}

INSTANTIATE_TEST_SUITE_P(AllKernels, RdftFwdValues, ::testing::ValuesIn(allCases()), caseName);
INSTANTIATE_TEST_SUITE_P(CcsKernels, RdftFwdCcs, ::testing::ValuesIn(ccsCases()), caseName);

template <class T>
std::vector<T> run(int n, Layout layout, const std::vector<T>& x, int flag = ScaleNone) {
    std::vector<T> y(ref::packedLength(n, layout));
    EXPECT_EQ(Kernels<T>::sized(n, layout)(x.data(), y.data(), flag), StatusOk);
    return y;
}

template <class T>
class RdftFwdExact : public ::testing::Test {};
using Precisions = ::testing::Types<float, double>;
TYPED_TEST_SUITE(RdftFwdExact, Precisions);

TYPED_TEST(RdftFwdExact, WorkedExamplesOfLengthsTwoAndFour) {
    using T = TypeParam;
    EXPECT_EQ(run<T>(2, Layout::CCS, {1, 2}), (std::vector<T>{3, 0, -1, 0}));
    EXPECT_EQ(run<T>(2, Layout::Pack, {1, 2}), (std::vector<T>{3, -1}));
    EXPECT_EQ(run<T>(2, Layout::Perm, {1, 2}), (std::vector<T>{3, -1}));
    EXPECT_EQ(run<T>(4, Layout::CCS, {1, 2, 3, 4}), (std::vector<T>{10, 0, -2, 2, -2, 0}));
    EXPECT_EQ(run<T>(4, Layout::Pack, {1, 2, 3, 4}), (std::vector<T>{10, -2, 2, -2}));
    EXPECT_EQ(run<T>(4, Layout::Perm, {1, 2, 3, 4}), (std::vector<T>{10, -2, -2, 2}));
}

TYPED_TEST(RdftFwdExact, LengthsTwoAndFourAreTheirButterfliesBitForBit) {
    using T = TypeParam;
    const auto x = randomInput<T>(4, 404u);
    const auto y2 = run<T>(2, Layout::CCS, {x[0], x[1]});
    EXPECT_EQ(y2[0], T(x[0] + x[1]));
    EXPECT_EQ(y2[2], T(x[0] - x[1]));
    const auto y4 = run<T>(4, Layout::CCS, x);
    const T a = x[0] + x[2], b = x[1] + x[3];
    EXPECT_EQ(y4[0], T(a + b));
    EXPECT_EQ(y4[4], T(a - b));
    EXPECT_EQ(y4[2], T(x[0] - x[2]));
    EXPECT_EQ(y4[3], T(-(x[1] - x[3])));
}

TYPED_TEST(RdftFwdExact, LengthEightSumsWithoutProductsBitForBit) {
    using T = TypeParam;
    const auto x = randomInput<T>(8, 808u);
    const auto y = run<T>(8, Layout::CCS, x);
    T a[4];
    for (int j = 0; j < 4; ++j) a[j] = x[j] + x[j + 4];
    EXPECT_EQ(y[0], T((a[0] + a[2]) + (a[1] + a[3])));
    EXPECT_EQ(y[8], T((a[0] + a[2]) - (a[1] + a[3])));
    EXPECT_EQ(y[4], T(a[0] - a[2]));
    EXPECT_EQ(y[5], T(-(a[1] - a[3])));
}

TEST(RdftFwdExact64, LengthThreeIsItsFormulaBitForBit) {
    const auto x = randomInput<double>(3, 303u);
    const auto y = run<double>(3, Layout::CCS, x);
    const double t = x[1] + x[2];
    EXPECT_EQ(y[0], x[0] + t);
    EXPECT_EQ(y[2], x[0] - 0.5 * t);
    EXPECT_EQ(y[3], -(0.8660254037844386 * (x[1] - x[2])));
}

// Single precision: the product with sin(2 pi / 3) is formed in double from
// the widened operand and rounded once. Inputs where that differs from a
// single-precision product tell the two apart.
TEST(RdftFwdExact32, LengthThreeFormsItsProductInDouble) {
    int differing = 0;
    for (unsigned seed = 1; seed <= 200 && differing < 20; ++seed) {
        const auto x = randomInput<float>(3, seed);
        const float d = x[1] - x[2];
        const float wide = static_cast<float>(0.8660254037844386 * static_cast<double>(d));
        const float narrow = 0.8660254f * d;
        if (wide == narrow) continue;
        ++differing;
        const auto y = run<float>(3, Layout::CCS, x);
        EXPECT_EQ(y[3], -wide) << "seed " << seed;
    }
    EXPECT_GE(differing, 5) << "too few probes where the roundings differ";
}

}  // namespace
