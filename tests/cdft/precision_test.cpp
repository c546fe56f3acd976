// Single-precision lengths 3 and 5 form their weighted terms in double from
// widened operands and round each once; everything else is single precision.
// Inputs where that differs from all-float arithmetic pin the rule down.
#include <array>
#include <complex>
#include <cstring>
#include <random>

#include "cdft_cases.h"

namespace {

using namespace kfpg::test::cdft;

using Cf = std::complex<float>;

// t + sign i u and t - sign i u, component by component as the kernel does.
std::array<Cf, 2> plusMinusIU(Cf t, Cf u, int sign) {
    const Cf r = sign < 0 ? Cf(u.imag(), -u.real()) : Cf(-u.imag(), u.real());
    return {Cf(t.real() + r.real(), t.imag() + r.imag()), Cf(t.real() - r.real(), t.imag() - r.imag())};
}

// Weighted terms in W (double: the kernel's rule; float: plain single precision).
template <class W>
std::vector<Cf> length3(const std::vector<Cf>& x, int sign) {
    const Cf a = x[1] + x[2], d = x[1] - x[2];
    const W half = 0.5, s = 0.8660254037844386;
    Cf t, u;
    for (int p = 0; p < 2; ++p) {
        const W x0 = p ? x[0].imag() : x[0].real(), ap = p ? a.imag() : a.real(), dp = p ? d.imag() : d.real();
        const float tp = static_cast<float>(x0 - half * ap), up = static_cast<float>(s * dp);
        p ? (t.imag(tp), u.imag(up)) : (t.real(tp), u.real(up));
    }
    const auto r = plusMinusIU(t, u, sign);
    return {x[0] + a, r[0], r[1]};
}

template <class W>
std::vector<Cf> length5(const std::vector<Cf>& x, int sign) {
    const Cf a1 = x[1] + x[4], a2 = x[2] + x[3], b1 = x[1] - x[4], b2 = x[2] - x[3];
    const W c1 = 0.30901699437494745, c2 = 0.8090169943749475, s1 = 0.9510565162951535, s2 = 0.5877852522924731;
    Cf t1, t2, u1, u2;
    for (int p = 0; p < 2; ++p) {
        auto part = [p](Cf v) -> W { return p ? v.imag() : v.real(); };
        const W x0 = part(x[0]);
        const float v[4] = {static_cast<float>(x0 + c1 * part(a1) - c2 * part(a2)),
                            static_cast<float>(x0 - c2 * part(a1) + c1 * part(a2)),
                            static_cast<float>(s1 * part(b1) + s2 * part(b2)),
                            static_cast<float>(s2 * part(b1) - s1 * part(b2))};
        Cf* dst[4] = {&t1, &t2, &u1, &u2};
        for (int i = 0; i < 4; ++i) p ? dst[i]->imag(v[i]) : dst[i]->real(v[i]);
    }
    const auto r1 = plusMinusIU(t1, u1, sign), r2 = plusMinusIU(t2, u2, sign);
    return {(x[0] + a1) + a2, r1[0], r2[0], r2[1], r1[1]};
}

std::vector<Cf> run(int n, bool inverse, const std::vector<Cf>& x, int flag) {
    std::vector<kfp32fc> in(n), out(n);
    std::memcpy(in.data(), x.data(), n * sizeof(kfp32fc));
    EXPECT_EQ(Kernels<kfp32fc>::sized(n, inverse)(in.data(), out.data(), flag), StatusOk);
    std::vector<Cf> y(n);
    std::memcpy(y.data(), out.data(), n * sizeof(kfp32fc));
    return y;
}

class MixedPrecision : public ::testing::TestWithParam<std::tuple<int, bool>> {};

TEST_P(MixedPrecision, WeightedTermsAreRoundedOnceFromDouble) {
    const auto [n, inverse] = GetParam();
    const int sign = inverse ? 1 : -1;
    auto model = [&](const std::vector<Cf>& x, bool wide) {
        if (n == 3) return wide ? length3<double>(x, sign) : length3<float>(x, sign);
        return wide ? length5<double>(x, sign) : length5<float>(x, sign);
    };
    std::mt19937 rng(n * 2 + inverse);
    std::uniform_real_distribution<float> u(-1, 1);
    int distinguishing = 0;
    for (int trial = 0; trial < 2000 && distinguishing < 20; ++trial) {
        std::vector<Cf> x(n);
        for (Cf& v : x) v = Cf(u(rng), u(rng));
        const auto wide = model(x, true), narrow = model(x, false);
        const auto got = run(n, inverse, x, ScaleNone);
        EXPECT_EQ(std::memcmp(got.data(), wide.data(), n * sizeof(Cf)), 0) << "trial " << trial;
        if (std::memcmp(wide.data(), narrow.data(), n * sizeof(Cf)) != 0) ++distinguishing;
    }
    // The rule is only pinned down by inputs where the two evaluations differ.
    EXPECT_GE(distinguishing, 20);
}

TEST_P(MixedPrecision, ScalingIsOneSinglePrecisionMultiplication) {
    const auto [n, inverse] = GetParam();
    std::vector<Cf> x(n);
    for (int i = 0; i < n; ++i) x[i] = Cf(0.1f * (i + 1), -0.3f * i);
    const auto plain = run(n, inverse, x, ScaleNone);
    const float byN = static_cast<float>(1.0L / n), bySqrtN = static_cast<float>(1.0L / std::sqrt(static_cast<long double>(n)));
    const auto scaled = run(n, inverse, x, inverse ? ScaleInvByN : ScaleFwdByN);
    const auto root = run(n, inverse, x, ScaleBySqrtN);
    for (int k = 0; k < n; ++k) {
        EXPECT_EQ(scaled[k].real(), plain[k].real() * byN);
        EXPECT_EQ(scaled[k].imag(), plain[k].imag() * byN);
        EXPECT_EQ(root[k].real(), plain[k].real() * bySqrtN);
        EXPECT_EQ(root[k].imag(), plain[k].imag() * bySqrtN);
    }
}

INSTANTIATE_TEST_SUITE_P(Lengths3And5, MixedPrecision,
                         ::testing::Combine(::testing::Values(3, 5), ::testing::Bool()));

}  // namespace
