// Values of the inverse real DFT kernels: every kernel against the
// long-double inverse under every flag, the scale as one last
// multiplication, round trips with the forward kernels, the layouts against
// each other, and the small lengths whose operations are fixed, bit for bit.
#include <cmath>

#include "rdft_inv_cases.h"

namespace {

using namespace kfpg::test;
using namespace kfpg::test::rdft;
namespace ref = kfpg::ref;

class RdftInvValues : public ::testing::TestWithParam<Case> {};
class RdftInvLayouts : public ::testing::TestWithParam<Case> {};

TEST_P(RdftInvValues, MatchTheReferenceUnderEveryFlag) {
    const Case c = GetParam();
    withPrecision(c, [&](auto tag) {
        using T = decltype(tag);
        const auto kernel = InverseKernels<T>::sized(c.n, c.layout);
        for (unsigned seed = 1; seed <= 4; ++seed) {
            const auto s = randomSpectrum<T>(c, seed * 37u + c.n);
            for (int flag : kFlags) {
                std::vector<T> x(c.n);
                ASSERT_EQ(kernel(s.data(), x.data(), flag), StatusOk);
                EXPECT_LT(ref::relativeL2(x.data(), expectedSignal(c, s.data(), flag)), InverseKernels<T>::bound) << "flag " << flag;
            }
        }
    });
}

TEST_P(RdftInvValues, ScaledOutputIsTheUnscaledOneTimesTheFactorInTheKernelsPrecision) {
    const Case c = GetParam();
    withPrecision(c, [&](auto tag) {
        using T = decltype(tag);
        const auto kernel = InverseKernels<T>::sized(c.n, c.layout);
        const auto s = randomSpectrum<T>(c, 71u + c.n);
        std::vector<T> plain(c.n);
        ASSERT_EQ(kernel(s.data(), plain.data(), ScaleNone), StatusOk);
        const T factors[] = {T(1), T(1.0L / c.n), T(1.0L / std::sqrt(static_cast<long double>(c.n)))};
        const int flags[] = {ScaleFwdByN, ScaleInvByN, ScaleBySqrtN};
        for (int i = 0; i < 3; ++i) {
            std::vector<T> x(c.n), want(c.n);
            ASSERT_EQ(kernel(s.data(), x.data(), flags[i]), StatusOk);
            for (int e = 0; e < c.n; ++e) want[e] = plain[e] * factors[i];
            EXPECT_EQ(bytesOf(x.data(), c.n), bytesOf(want.data(), c.n)) << "flag " << flags[i];
        }
    });
}

// Forward then inverse with the flag pairs that undo each other.
TEST_P(RdftInvValues, RoundTripsThroughTheForwardKernelOfTheSameLayout) {
    const Case c = GetParam();
    withPrecision(c, [&](auto tag) {
        using T = decltype(tag);
        const auto r = ref::randomReals(static_cast<std::size_t>(c.n), 500u + c.n);
        const std::vector<T> x(r.begin(), r.end());
        const std::vector<ref::Real> want(x.begin(), x.end());
        const int pairs[][2] = {{ScaleBySqrtN, ScaleBySqrtN}, {ScaleFwdByN, ScaleNone}, {ScaleNone, ScaleInvByN}, {ScaleFwdByN, ScaleFwdByN}};
        for (const auto& p : pairs) {
            std::vector<T> spectrum(c.packedCount()), back(c.n);
            ASSERT_EQ(InverseKernels<T>::forward(c.n, c.layout)(x.data(), spectrum.data(), p[0]), StatusOk);
            ASSERT_EQ(InverseKernels<T>::sized(c.n, c.layout)(spectrum.data(), back.data(), p[1]), StatusOk);
            EXPECT_LT(ref::relativeL2(back.data(), want), 4 * InverseKernels<T>::bound) << "flags " << p[0] << ", " << p[1];
        }
    });
}

// The same spectrum in the three layouts gives the same bits; for odd n
// one Pack array is also a Perm array.
TEST_P(RdftInvLayouts, LayoutsDifferOnlyInWhereTheyLoad) {
    const Case c = GetParam();
    withPrecision(c, [&](auto tag) {
        using T = decltype(tag);
        const auto ccs = randomSpectrum<T>(c, 19u + c.n);
        std::vector<T> pack{ccs[0]};
        for (int e = 2; e < c.n + 1; ++e) pack.push_back(ccs[e]);
        std::vector<T> perm = pack;
        if (c.n % 2 == 0) {
            perm.insert(perm.begin() + 1, pack.back());
            perm.pop_back();
        }
        std::vector<T> fromCcs(c.n), fromPack(c.n), fromPerm(c.n), packAsPerm(c.n);
        ASSERT_EQ(InverseKernels<T>::sized(c.n, Layout::CCS)(ccs.data(), fromCcs.data(), ScaleBySqrtN), StatusOk);
        ASSERT_EQ(InverseKernels<T>::sized(c.n, Layout::Pack)(pack.data(), fromPack.data(), ScaleBySqrtN), StatusOk);
        ASSERT_EQ(InverseKernels<T>::sized(c.n, Layout::Perm)(perm.data(), fromPerm.data(), ScaleBySqrtN), StatusOk);
        EXPECT_EQ(bytesOf(fromPack.data(), c.n), bytesOf(fromCcs.data(), c.n));
        EXPECT_EQ(bytesOf(fromPerm.data(), c.n), bytesOf(fromCcs.data(), c.n));
        if (c.n % 2 == 1) {
            ASSERT_EQ(InverseKernels<T>::sized(c.n, Layout::Perm)(pack.data(), packAsPerm.data(), ScaleBySqrtN), StatusOk);
            EXPECT_EQ(bytesOf(packAsPerm.data(), c.n), bytesOf(fromPack.data(), c.n));
        }
    });
}

INSTANTIATE_TEST_SUITE_P(AllKernels, RdftInvValues, ::testing::ValuesIn(allCases()), caseName);
INSTANTIATE_TEST_SUITE_P(CcsKernels, RdftInvLayouts, ::testing::ValuesIn(ccsCases()), caseName);

template <class T>
std::vector<T> run(int n, Layout layout, const std::vector<T>& s, int flag = ScaleNone) {
    std::vector<T> x(n);
    EXPECT_EQ(InverseKernels<T>::sized(n, layout)(s.data(), x.data(), flag), StatusOk);
    return x;
}

// A random half spectrum of length n in CCS order, element 1 (and n+1) zero.
template <class T>
std::vector<T> ccsSpectrum(int n, unsigned seed) {
    const auto r = ref::randomReals(static_cast<std::size_t>(n + 2), seed);
    std::vector<T> s(r.begin(), r.end());
    s[1] = 0;
    if (n % 2 == 0) s[n + 1] = 0;
    return s;
}

// h * v in double from the widened operand, rounded once (single precision);
// a plain product in double precision.
template <class T>
T product(double h, T v) {
    return static_cast<T>(h * static_cast<double>(v));
}

template <class T>
class RdftInvExact : public ::testing::Test {};
using Precisions = ::testing::Types<float, double>;
TYPED_TEST_SUITE(RdftInvExact, Precisions);

TYPED_TEST(RdftInvExact, WorkedExamplesOfLengthsTwoAndFour) {
    using T = TypeParam;
    const T nan = std::numeric_limits<T>::quiet_NaN();
    EXPECT_EQ(run<T>(4, Layout::CCS, {10, 7, -2, 2, -2, 9}, ScaleInvByN), (std::vector<T>{1, 2, 3, 4}));
    EXPECT_EQ(run<T>(4, Layout::Pack, {10, -2, 2, -2}, ScaleInvByN), (std::vector<T>{1, 2, 3, 4}));
    EXPECT_EQ(run<T>(4, Layout::Perm, {10, -2, -2, 2}, ScaleInvByN), (std::vector<T>{1, 2, 3, 4}));
    for (T junk : {T(0), T(-5), nan, std::numeric_limits<T>::infinity()})
        EXPECT_EQ(run<T>(2, Layout::CCS, {3, junk, -1, junk}), (std::vector<T>{2, 4}));
}

TYPED_TEST(RdftInvExact, LengthsTwoAndFourAreTheirButterfliesBitForBit) {
    using T = TypeParam;
    const auto s2 = ccsSpectrum<T>(2, 202u);
    EXPECT_EQ(run<T>(2, Layout::CCS, s2), (std::vector<T>{T(s2[0] + s2[2]), T(s2[0] - s2[2])}));
    const auto s = ccsSpectrum<T>(4, 404u);
    const T a = s[0] + s[4], b = s[0] - s[4], r = 2 * s[2], i = 2 * s[3];
    EXPECT_EQ(run<T>(4, Layout::CCS, s), (std::vector<T>{T(a + r), T(b - i), T(a - r), T(b + i)}));
}

TYPED_TEST(RdftInvExact, LengthThreeFoldsTheDoublingIntoRootThreeBitForBit) {
    using T = TypeParam;
    for (unsigned seed = 1; seed <= 50; ++seed) {
        const auto s = ccsSpectrum<T>(3, seed);
        const T r = 2 * s[2];
        const T t = static_cast<T>(static_cast<double>(s[0]) - 0.5 * static_cast<double>(r));
        const T u = product(1.7320508075688772, s[3]);
        EXPECT_EQ(run<T>(3, Layout::CCS, s), (std::vector<T>{T(s[0] + r), T(t - u), T(t + u)})) << "seed " << seed;
    }
}

TYPED_TEST(RdftInvExact, LengthSixIsTwoThreePointTransformsBitForBit) {
    using T = TypeParam;
    for (unsigned seed = 1; seed <= 50; ++seed) {
        const auto s = ccsSpectrum<T>(6, seed);
        const T A = s[0] + s[6], B = s[0] - s[6];
        const T r1 = 2 * s[2], i1 = 2 * s[3], r2 = 2 * s[4], i2 = 2 * s[5];
        const double h3 = 0.8660254037844386;
        const T P = r2 + r1, Q = r2 - r1, G = product(h3, T(i2 - i1)), W = product(h3, T(i2 + i1));
        const T a = A - product(0.5, P), b = B - product(0.5, Q);
        EXPECT_EQ(run<T>(6, Layout::CCS, s), (std::vector<T>{T(A + P), T(b - W), T(a + G), T(B + Q), T(a - G), T(b + W)}))
            << "seed " << seed;
    }
}

TYPED_TEST(RdftInvExact, LengthEightIsRadixTwoDecimationInTimeBitForBit) {
    using T = TypeParam;
    for (unsigned seed = 1; seed <= 50; ++seed) {
        const auto s = ccsSpectrum<T>(8, seed);
        const T A = s[0] + s[8], B = s[0] - s[8];
        T r[4], i[4];
        for (int k = 1; k <= 3; ++k) r[k] = 2 * s[2 * k], i[k] = 2 * s[2 * k + 1];
        const double h = 0.7071067811865476;
        const T P = A + r[2], Q = A - r[2], U = B - i[2], V = B + i[2];
        const T e = r[1] + r[3], f = product(h, T(r[1] - r[3])), g = i[1] - i[3], w = product(h, T(i[1] + i[3]));
        const T fw = f - w, fPlusW = f + w;
        EXPECT_EQ(run<T>(8, Layout::CCS, s),
                  (std::vector<T>{T(P + e), T(U + fw), T(Q - g), T(V - fPlusW), T(P - e), T(U - fw), T(Q + g), T(V + fPlusW)}))
            << "seed " << seed;
    }
}

// Single precision: the product with sqrt(3) is formed in double from the
// widened operand and rounded once. Spectra where that differs from a
// single-precision product tell the two apart.
TEST(RdftInvExact32, LengthThreeFormsItsProductInDouble) {
    int differing = 0;
    for (unsigned seed = 1; seed <= 400 && differing < 20; ++seed) {
        const auto s = ccsSpectrum<float>(3, seed);
        const float wide = product(1.7320508075688772, s[3]), narrow = 1.7320508f * s[3];
        if (wide == narrow) continue;
        ++differing;
        const float t = s[0] - s[2];
        EXPECT_EQ(run<float>(3, Layout::CCS, s)[1], t - wide) << "seed " << seed;
    }
    EXPECT_GE(differing, 5) << "too few probes where the roundings differ";
}

}  // namespace
