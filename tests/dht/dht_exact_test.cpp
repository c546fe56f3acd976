// The lengths whose operations are fixed (2, 3, 4, 5, 6, 8), bit for bit in
// both precisions. In single precision the products with trigonometric
// constants, and the direct sums of 3 and 5 they belong to, are formed in
// double from widened operands and rounded once; the formulas below take the
// type of that arithmetic as W, so that W = float gives the single-precision
// variant the kernels must not match.
#include <functional>
#include <map>

#include "dht_cases.h"

namespace {

using namespace kfpg::test;
using namespace kfpg::test::dht;
namespace ref = kfpg::ref;

template <class T, class W>
T wide(W v) {
    return static_cast<T>(v);
}

template <class T, class W>
std::vector<T> formula3(const std::vector<T>& x) {
    const T p = x[1] + x[2], q = x[1] - x[2];
    const T a = wide<T>(W(x[0]) - W(0.5) * W(p)), b = wide<T>(W(0.8660254037844386) * W(q));
    return {x[0] + p, a + b, a - b};
}

template <class T, class W>
std::vector<T> formula5(const std::vector<T>& x) {
    const W c1 = W(0.30901699437494745), c2 = W(0.8090169943749475), s1 = W(0.9510565162951535), s2 = W(0.5877852522924731);
    const T p1 = x[1] + x[4], q1 = x[1] - x[4], p2 = x[2] + x[3], q2 = x[3] - x[2];
    const T a1 = wide<T>(W(x[0]) + c1 * W(p1) - c2 * W(p2)), a2 = wide<T>(W(x[0]) - c2 * W(p1) + c1 * W(p2));
    const T b1 = wide<T>(s1 * W(q1) - s2 * W(q2)), b2 = wide<T>(s2 * W(q1) + s1 * W(q2));
    return {x[0] + p1 + p2, a1 + b1, a2 + b2, a2 - b2, a1 - b1};
}

template <class T, class W>
std::vector<T> formula6(const std::vector<T>& x) {
    const W h = W(0.8660254037844386);
    const T s0 = x[2] + x[4], s1 = x[5] + x[1];
    const T g0 = wide<T>(W(x[0]) - W(0.5) * W(s0)), m0 = wide<T>(h * W(x[2] - x[4]));
    const T g1 = wide<T>(W(x[3]) - W(0.5) * W(s1)), m1 = wide<T>(h * W(x[5] - x[1]));
    const T e = x[0] + s0, o = x[3] + s1;
    return {e + o, (g0 - g1) + (m0 - m1), (g0 + g1) - (m0 + m1), e - o, (g0 + g1) + (m0 + m1), (g0 - g1) - (m0 - m1)};
}

template <class T, class W>
std::vector<T> formula8(const std::vector<T>& x) {
    T a[4], b[4];
    for (int j = 0; j < 4; ++j) a[j] = x[j] + x[j + 4], b[j] = x[j] - x[j + 4];
    const T e0 = a[0] + a[2], e1 = a[0] - a[2], f0 = a[1] + a[3], f1 = a[1] - a[3];
    const W w = W(0.7071067811865476);
    const T u = wide<T>(w * W(b[1])), v = wide<T>(w * W(b[3]));
    const T p = u - v, q = u + v;
    const T r0 = b[0] + p, r1 = b[2] + q, r2 = b[0] - p, r3 = b[2] - q;
    return {e0 + f0, r0 + r1, e1 + f1, r2 - r3, e0 - f0, r2 + r3, e1 - f1, r0 - r1};
}

template <class T, class W>
std::vector<T> formula(const std::vector<T>& x) {
    if (x.size() == 2) return {x[0] + x[1], x[0] - x[1]};
    if (x.size() == 4) {
        const T e0 = x[0] + x[2], e1 = x[0] - x[2], o0 = x[1] + x[3], o1 = x[1] - x[3];
        return {e0 + o0, e1 + o1, e0 - o0, e1 - o1};
    }
    if (x.size() == 3) return formula3<T, W>(x);
    if (x.size() == 5) return formula5<T, W>(x);
    if (x.size() == 6) return formula6<T, W>(x);
    return formula8<T, W>(x);
}

template <class T>
std::vector<T> scaled(std::vector<T> h, int flag) {
    const T s = T(ref::scaleFactor(flag, static_cast<long>(h.size()), ref::Direction::SelfInverse));
    for (T& v : h) v *= s;
    return h;
}

class DhtExact : public ::testing::TestWithParam<int> {};

TEST_P(DhtExact, DoublePrecisionIsTheFormulaBitForBit) {
    const int n = GetParam();
    for (unsigned seed = 1; seed <= 20; ++seed) {
        const auto x = randomInput<double>(n, seed * 7u + n);
        for (int flag : kFlags) EXPECT_EQ(run(x, flag), scaled(formula<double, double>(x), flag)) << "seed " << seed;
    }
}

// Every input must give the formula with double-precision products; the
// inputs where those round differently from single-precision products must
// be frequent enough for the comparison to tell the two apart.
TEST_P(DhtExact, SinglePrecisionFormsItsProductsInDouble) {
    const int n = GetParam();
    int differing = 0;
    for (unsigned seed = 1; seed <= 400; ++seed) {
        const auto x = randomInput<float>(n, seed * 13u + n);
        const auto want = formula<float, double>(x);
        differing += want != formula<float, float>(x);
        for (int flag : kFlags) ASSERT_EQ(run(x, flag), scaled(want, flag)) << "seed " << seed << " flag " << flag;
    }
    if (n == 3 || n == 5 || n == 6 || n == 8) EXPECT_GE(differing, 10) << "too few inputs where the roundings differ";
}

INSTANTIATE_TEST_SUITE_P(WrittenLengths, DhtExact, ::testing::Values(2, 3, 4, 5, 6, 8));

TEST(DhtExact, WorkedExamples) {
    EXPECT_EQ(run<float>({1, 2}), (std::vector<float>{3, -1}));
    EXPECT_EQ(run<double>({1, 2, 3, 4}), (std::vector<double>{10, -4, -2, 0}));
    EXPECT_EQ(run<float>({1, 2, 3, 4}, ScaleFwdByN), (std::vector<float>{2.5f, -1, -0.5f, 0}));
}

}  // namespace
