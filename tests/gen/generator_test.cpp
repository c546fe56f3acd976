// The kernel generator: simplifier rules, every builder's DAG evaluated
// against a naive DFT, the algorithm table, and the emitter's ordering.
#include <gtest/gtest.h>

#include <random>
#include <regex>
#include <set>
#include <sstream>
#include <string>

#include "builders/complex_dft.h"
#include "builders/dft_table.h"
#include "dag.h"
#include "emit.h"
#include "emitted_text.h"
#include "evaluate.h"

namespace {

using namespace kfpg::gen;

TEST(Simplifier, SharesEqualExpressionsAndConstants) {
    Dag d(ValueKind::Complex, 1);
    const NodeId x = d.input(0), y = d.input(1);
    EXPECT_EQ(d.add(x, y), d.add(y, x));
    EXPECT_EQ(d.sub(x, y), d.sub(x, y));
    EXPECT_EQ(d.input(0), x);
    const NodeId a = d.scale(0.5L, x), b = d.scale(0.5L, y);
    EXPECT_EQ(d.node(a).arg, d.node(b).arg);
    // -0.5 y added is 0.5 y subtracted: the same constant again.
    const NodeId s = d.add(x, d.scale(-0.5L, y));
    EXPECT_EQ(d.node(s).op, Op::Sub);
    EXPECT_EQ(d.node(s).b, b);
}

TEST(Simplifier, FoldsNegationsIntoAdditionsAndConstants) {
    Dag d(ValueKind::Complex, 1);
    const NodeId x = d.input(0), y = d.input(1);
    const NodeId ny = d.neg(y);
    EXPECT_EQ(d.add(x, ny), d.sub(x, y));
    EXPECT_EQ(d.sub(x, ny), d.add(x, y));
    EXPECT_EQ(d.neg(ny), y);
    EXPECT_EQ(d.neg(d.sub(x, y)), d.sub(y, x));
    EXPECT_EQ(d.scale(3, ny), d.scale(-3, y));
    EXPECT_EQ(d.mulI(1, ny), d.mulI(-1, y));
    EXPECT_EQ(d.mulI(1, d.mulI(1, x)), d.neg(x));
    EXPECT_EQ(d.node(d.add(d.neg(x), y)).op, Op::Sub);
}

TEST(Simplifier, NeverMultipliesByOneZeroOrMinusOne) {
    Dag d(ValueKind::Complex, 1);
    const NodeId x = d.input(0), y = d.input(1);
    EXPECT_EQ(d.scale(1, x), x);
    EXPECT_EQ(d.node(d.scale(-1, x)).op, Op::Neg);
    EXPECT_EQ(d.node(d.scale(0, x)).op, Op::Zero);
    EXPECT_EQ(d.add(x, d.scale(0, y)), x);
    // x - x is not folded: it is NaN, not zero, for a non-finite x.
    EXPECT_EQ(d.node(d.sub(x, x)).op, Op::Sub);
    EXPECT_EQ(d.cmul(Complex(1, 0), x), x);
    EXPECT_EQ(d.node(d.cmul(Complex(2, 0), x)).op, Op::Scale);
    EXPECT_EQ(d.cmul(Complex(0, -1), x), d.mulI(-1, x));
    EXPECT_EQ(d.scale(2, d.scale(3, x)), d.scale(6, x));
    EXPECT_EQ(d.scale(0.5L, d.scale(2, x)), x);
    // A kept product is not folded into.
    const NodeId doubled = d.keptScale(2, y);
    EXPECT_EQ(d.node(d.scale(0.5L, doubled)).a, doubled);
}

TEST(Simplifier, FortyFiveDegreeTwiddlesCostTwoMultiplications) {
    Dag d(ValueKind::Complex, 1);
    const Complex w = unitRoot(1, 8, -1);
    const NodeId x = d.input(0);
    d.output(0, d.cmul(w, x));
    const FlopCount f = countFlops(d);
    EXPECT_EQ(f.muls, 2);
    EXPECT_EQ(f.adds, 2);
    const auto out = evaluate(d, {Complex(0.25L, -0.75L)}, 1);
    EXPECT_NEAR(static_cast<double>(std::abs(out[0] - w * Complex(0.25L, -0.75L))), 0, 1e-18);
}

TEST(Simplifier, RotationsByIAreAbsorbedIntoConstants) {
    Dag d(ValueKind::Complex, 1);
    const NodeId x = d.input(0);
    const NodeId r = d.mulI(-1, d.scale(0.75L, x));
    EXPECT_EQ(d.node(r).op, Op::CMul);
    EXPECT_EQ(d.node(r).a, x);
    EXPECT_EQ(d.constant(d.node(r).arg)[0], Complex(0, -0.75L));
    d.output(0, r);
    EXPECT_EQ(countFlops(d).muls, 2);
    EXPECT_EQ(countFlops(d).adds, 0);
    const auto out = evaluate(d, {Complex(0.5L, 0.25L)}, 1);
    EXPECT_EQ(out[0], Complex(0, -0.75L) * Complex(0.5L, 0.25L));
}

TEST(Simplifier, PrecisionMarksStayWhereTheyWereSet) {
    Dag d(ValueKind::Complex, 1);
    const NodeId x = d.input(0), y = d.input(1);
    const NodeId narrowTerm = d.scale(-0.5L, y);  // single precision
    NodeId t;
    {
        Dag::WideScope wide(d);
        t = d.add(x, d.scale(-0.5L, y));
        EXPECT_TRUE(d.node(t).wide);
        // A single-precision product is not recomputed in double by folding.
        const NodeId mixed = d.add(x, narrowTerm);
        EXPECT_EQ(d.node(mixed).op, Op::Add);
    }
    EXPECT_EQ(d.node(d.narrow(t)).op, Op::Narrow);
    EXPECT_EQ(d.narrow(x), x);
    EXPECT_FALSE(d.node(d.add(x, y)).wide);
}

TEST(Simplifier, ProductsByPowersOfTwoRoundedAloneNeedNoWidening) {
    Dag d(ValueKind::Real, 2);
    const NodeId x = d.input(0);
    NodeId half, byThree, ofWide;
    {
        Dag::WideScope wide(d);
        // cos(2 pi / 3) in long double is not exactly -1/2; the kernel holds it in double, where it is.
        half = d.scaleLanes({std::cos(2 * std::acos(-1.0L) / 3), 0.25L}, x);
        byThree = d.scaleLanes({0.5L, 0.75L}, x);
        ofWide = d.scale(0.5L, d.add(x, d.input(1)));
    }
    const Node& exact = d.node(d.narrow(half));
    ASSERT_EQ(exact.op, Op::Scale);
    EXPECT_FALSE(exact.wide);
    EXPECT_EQ(exact.a, x);
    EXPECT_EQ(d.constant(exact.arg)[0].real(), -0.5L);
    EXPECT_EQ(d.node(d.narrow(byThree)).op, Op::Narrow);
    EXPECT_EQ(d.node(d.narrow(ofWide)).op, Op::Narrow);
}

TEST(Simplifier, RealDagsRejectComplexOperations) {
    Dag d(ValueKind::Real, 4);
    EXPECT_THROW(d.mulI(1, d.input(0)), std::logic_error);
    EXPECT_THROW(d.cmul(Complex(0.5L, 0.5L), d.input(0)), std::logic_error);
}

TEST(RaderSpectrum, HoldsTheInverseLengthAndTheDocumentedValuesForSeven) {
    const auto b = raderSpectrum(7, 3, -1);
    ASSERT_EQ(b.size(), 6u);
    const Complex want[6] = {{-1.0L / 6, 0},         {0.406689L, -0.170436L}, {0.395078L, -0.195851L},
                             {0, -0.440959L},        {0.395078L, 0.195851L},  {-0.406689L, -0.170436L}};
    for (int i = 0; i < 6; ++i) {
        EXPECT_NEAR(static_cast<double>(b[i].real()), static_cast<double>(want[i].real()), 1e-6) << i;
        EXPECT_NEAR(static_cast<double>(b[i].imag()), static_cast<double>(want[i].imag()), 1e-6) << i;
    }
}

// Element 0 is a plain sum and element (p-1)/2 is real or imaginary by
// symmetry; exact zeros there turn two complex products into scalings.
TEST(RaderSpectrum, SymmetricElementsAreExactlyRealOrImaginary) {
    for (int p : {7, 11, 13, 17, 19, 23, 29, 31, 37, 41, 43, 53, 61})
        for (int sign : {-1, 1}) {
            const auto b = raderSpectrum(p, primitiveRoot(p), sign);
            const int h = (p - 1) / 2;
            EXPECT_EQ(b[0].imag(), 0) << p;
            EXPECT_EQ(h % 2 ? b[h].real() : b[h].imag(), 0) << p;
            EXPECT_NEAR(static_cast<double>(b[0].real()), -1.0 / (p - 1), 1e-18) << p;
            EXPECT_GT(std::abs(h % 2 ? b[h].imag() : b[h].real()), 1e-3L) << p;
        }
}

TEST(DftTable, AlgorithmsByLengthAreTheDocumentedOnes) {
    auto expectKind = [](std::initializer_list<int> lengths, DftAlgorithm a) {
        for (int n : lengths) EXPECT_EQ(dftRow(n).kernel, a) << n;
    };
    expectKind({2, 4}, DftAlgorithm::Butterfly);
    expectKind({3, 5, 47, 59}, DftAlgorithm::Direct);
    expectKind({7, 11, 13, 17, 19, 23, 29, 31, 37, 41, 43, 53, 61}, DftAlgorithm::Rader);
    expectKind({8, 9, 16, 24, 25, 27, 32, 40, 45, 48, 49, 56, 64}, DftAlgorithm::CooleyTukey);
    expectKind({6, 10, 12, 14, 15, 18, 20, 21, 22, 26, 28, 30, 33, 34, 35, 36, 38, 39, 42, 44, 46, 50, 51, 52, 54, 55, 57,
                58, 60, 62, 63},
               DftAlgorithm::PrimeFactor);
    for (int n = 2; n <= 64; ++n) {
        const DftRow& r = dftRow(n);
        EXPECT_EQ(r.n, n);
        if (!r.n1) continue;
        EXPECT_EQ(r.n1 * r.n2, n) << n;
        EXPECT_EQ(n % r.n1OneLane, 0) << n;
        EXPECT_NE(r.n1OneLane, 1) << n;
        EXPECT_NE(r.n1OneLane, n) << n;
    }
    EXPECT_EQ(dftRow(7).asBlock, DftAlgorithm::Direct);
    EXPECT_EQ(dftRow(11).asBlock, DftAlgorithm::Direct);
    EXPECT_EQ(dftRow(13).asBlock, DftAlgorithm::Rader);
}

double errorAgainstNaive(const Dag& d, int n, int sign, unsigned seed) {
    std::mt19937 rng(seed);
    std::uniform_real_distribution<double> u(-1, 1);
    std::vector<Complex> x(n);
    for (Complex& v : x) v = Complex(u(rng), u(rng));
    const auto got = evaluate(d, x, n), want = naiveDft(x, sign);
    Real err = 0, norm = 0;
    for (int i = 0; i < n; ++i) err += std::norm(got[i] - want[i]), norm += std::norm(want[i]);
    return static_cast<double>(std::sqrt(err / norm));
}

class BuilderByLength : public ::testing::TestWithParam<int> {};

TEST_P(BuilderByLength, OneAndTwoLaneDagsComputeTheDft) {
    const int n = GetParam();
    for (int lanes : {1, 2})
        for (int sign : {-1, 1}) {
            Dag d(ValueKind::Complex, lanes);
            buildComplexDft(d, n, ComplexDftOptions{sign, false});
            EXPECT_LT(errorAgainstNaive(d, n, sign, 17u * n + lanes), 1e-16) << "lanes " << lanes << " sign " << sign;
        }
}

TEST_P(BuilderByLength, LaneParallelDftKeepsLanesIndependent) {
    const int n = GetParam();
    // Lane l of input value i reads element i + l n: two transforms side by side.
    Dag d(ValueKind::Complex, 2);
    std::vector<NodeId> x(n);
    for (int i = 0; i < n; ++i) x[i] = d.inputLanes({i, i + n});
    const auto y = parallelComplexDft(d, n, -1, x, false);
    for (int k = 0; k < n; ++k) d.outputLanes({k, k + n}, y[k]);
    std::mt19937 rng(n);
    std::uniform_real_distribution<double> u(-1, 1);
    std::vector<Complex> in(2 * n);
    for (Complex& v : in) v = Complex(u(rng), u(rng));
    const auto got = evaluate(d, in, 2 * n);
    for (int half = 0; half < 2; ++half) {
        const std::vector<Complex> part(in.begin() + half * n, in.begin() + (half + 1) * n);
        const auto want = naiveDft(part, -1);
        for (int k = 0; k < n; ++k)
            EXPECT_LT(static_cast<double>(std::abs(got[half * n + k] - want[k])), 1e-15) << "lane " << half << " k " << k;
    }
}

TEST_P(BuilderByLength, EmittedCodeLoadsEverythingBeforeItsFirstStore) {
    const int n = GetParam();
    for (int lanes : {1, 2})
        for (Schedule schedule : {Schedule::Creation, Schedule::DepthFirst, Schedule::Latency}) {
            Dag d(ValueKind::Complex, lanes);
            buildComplexDft(d, n, ComplexDftOptions{-1, false});
            EmitOptions o;
            o.precision = lanes == 2 ? Precision::F32 : Precision::F64;
            o.scaleVar = "sc";
            o.schedule = schedule;
            const std::string body = emitBody(d, o).body;
            const auto lastLoad = body.rfind("pSrc"), firstStore = body.find("pDst");
            ASSERT_NE(firstStore, std::string::npos);
            EXPECT_LT(lastLoad, firstStore) << "lanes " << lanes;
        }
}

// Every schedule is a topological order: each value is defined before a
// statement reads it, and every node is emitted once.
TEST_P(BuilderByLength, EveryScheduleDefinesValuesBeforeTheirUse) {
    const int n = GetParam();
    const std::regex name("\\bv[0-9]+\\b");
    for (Schedule schedule : {Schedule::Creation, Schedule::DepthFirst, Schedule::Latency}) {
        Dag d(ValueKind::Complex, 1);
        buildComplexDft(d, n, ComplexDftOptions{1, false});
        EmitOptions o;
        o.schedule = schedule;
        o.lookahead = 32;
        std::istringstream lines(emitBody(d, o).body);
        std::set<std::string> defined;
        for (std::string line; std::getline(lines, line);) {
            const auto eq = line.find(" = ");
            std::string target;
            if (line.rfind("    const __m128d v", 0) == 0) target = line.substr(18, eq - 18);
            const std::string rhs = eq == std::string::npos ? line : line.substr(eq);
            for (std::sregex_iterator it(rhs.begin(), rhs.end(), name), end; it != end; ++it)
                EXPECT_TRUE(defined.count(it->str())) << n << ": " << it->str() << " read before it is defined";
            if (!target.empty()) EXPECT_TRUE(defined.insert(target).second) << n << ": " << target << " defined twice";
        }
    }
}

INSTANTIATE_TEST_SUITE_P(AllLengths, BuilderByLength, ::testing::Range(2, 65));

// Single precision moves lanes of double-precision values where that saves
// conversions: a widened move of widened values is a shuffle of them, and a
// move of two roundings used nowhere else is one rounding of the move.
TEST(Emitter, SinglePrecisionLaneMovesSaveConversions) {
    EmitOptions o;
    o.mode = EmitMode::RealPairs;
    o.precision = Precision::F32;
    o.load = [](int i) { return "pSrc + " + std::to_string(i); };
    o.store = [](int i) { return "pDst + " + std::to_string(i); };
    o.scaleVar = "sc";
    Dag moved(ValueKind::Real, 2);
    const NodeId x = moved.inputLanes({0, 1});
    NodeId p, q;
    {
        Dag::WideScope wide(moved);
        p = moved.scale(0.75L, x);
        q = moved.scale(0.375L, moved.shuffle(x, 1, x, 0));
    }
    moved.outputLanes({0, 1}, moved.narrow(moved.add(p, q)));
    const std::string widened = emitBody(moved, o).body;
    EXPECT_EQ(occurrences(widened, "_mm_cvtps_pd("), 1u) << widened;
    EXPECT_EQ(occurrences(widened, "_mm_shuffle_pd("), 1u) << widened;

    Dag rounded(ValueKind::Real, 2);
    NodeId a, b;
    {
        Dag::WideScope wide(rounded);
        a = rounded.scale(0.75L, rounded.inputLanes({0, 1}));
        b = rounded.scale(0.375L, rounded.inputLanes({2, 3}));
    }
    rounded.outputLanes({0, 1}, rounded.shuffle(rounded.narrow(a), 0, rounded.narrow(b), 1));
    const std::string once = emitBody(rounded, o).body;
    EXPECT_EQ(occurrences(once, "_mm_cvtpd_ps("), 1u) << once;
}

}  // namespace
