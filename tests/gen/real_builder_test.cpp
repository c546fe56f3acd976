// The real-data side of the generator: the separate-signs simplifier, the
// real DFT builder of every length against a naive DFT (with its
// multiplication counts), and the lane pairing that vectorises real DAGs.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <set>

#include "builders/real_dft.h"
#include "builders/real_dft_table.h"
#include "dag.h"
#include "evaluate.h"
#include "pair_lanes.h"

namespace {

using namespace kfpg::gen;

TEST(SeparateSigns, KeepsConstantsPositiveAndNegationsAbsorbable) {
    Dag d(ValueKind::Real, 1, Signs::Separate);
    const NodeId x = d.input(0), y = d.input(1);
    const NodeId m = d.scale(-0.5L, y);
    ASSERT_EQ(d.node(m).op, Op::Neg);
    EXPECT_EQ(d.node(d.node(m).a).op, Op::Scale);
    EXPECT_EQ(d.constant(d.node(d.node(m).a).arg)[0].real(), 0.5L);
    // The product is shared between c y and -c y, and the sign goes into the sum.
    EXPECT_EQ(d.node(m).a, d.scale(0.5L, y));
    EXPECT_EQ(d.add(x, m), d.sub(x, d.scale(0.5L, y)));
    EXPECT_EQ(d.sub(x, m), d.add(x, d.scale(0.5L, y)));
    EXPECT_EQ(d.add(d.neg(x), d.neg(y)), d.neg(d.add(x, y)));
    EXPECT_EQ(d.sub(d.neg(x), y), d.neg(d.add(x, y)));
    EXPECT_EQ(d.scale(3, d.neg(x)), d.neg(d.scale(3, x)));
    // y - x after x - y is the negation of the difference already made.
    const NodeId xy = d.sub(x, y);
    EXPECT_EQ(d.sub(y, x), d.neg(xy));
}

TEST(SeparateSigns, NarrowingAWideNegationKeepsTheNegationOutside) {
    Dag d(ValueKind::Real, 1, Signs::Separate);
    const NodeId x = d.input(0);
    NodeId p;
    {
        Dag::WideScope wide(d);
        p = d.scale(-0.75L, x);
    }
    const NodeId r = d.narrow(p);
    ASSERT_EQ(d.node(r).op, Op::Neg);
    EXPECT_FALSE(d.node(r).wide);
    EXPECT_EQ(d.node(d.node(r).a).op, Op::Narrow);
}

// The real DFT DAG of length n with outputs 2k (Re X[k]) and 2k + 1 (Im X[k]).
void buildInto(Dag& dag, int n, const RealDftOptions& options) {
    std::vector<NodeId> x;
    for (int i = 0; i < n; ++i) x.push_back(dag.input(i));
    const HalfSpectrum X = buildRealDft(dag, x, options);
    for (int k = 0; k <= n / 2; ++k) {
        dag.output(2 * k, X.re[k]);
        if (dag.node(X.im[k]).op != Op::Zero) dag.output(2 * k + 1, X.im[k]);
    }
}

double errorAgainstNaive(const Dag& dag, int n, unsigned seed) {
    std::mt19937 rng(seed);
    std::uniform_real_distribution<double> u(-1, 1);
    std::vector<Complex> x(n);
    for (Complex& v : x) v = u(rng);
    const auto want = naiveDft(x, -1), got = evaluate(dag, x, n + 2);
    long double err = 0, norm = 0;
    for (int k = 0; k <= n / 2; ++k) {
        const long double im = std::isnan(got[2 * k + 1].real()) ? 0 : got[2 * k + 1].real();
        err += std::norm(Complex(got[2 * k].real(), im) - want[k]);
        norm += std::norm(want[k]);
    }
    return static_cast<double>(std::sqrt(err / norm));
}

class RealBuilder : public ::testing::TestWithParam<int> {};

TEST_P(RealBuilder, ComputesTheDftInBothPrecisionModesAndFactorOrders) {
    const int n = GetParam();
    for (bool wide : {false, true})
        for (bool wideSums : {false, true})
            for (bool swap : {false, true}) {
                RealDftOptions options{wide, wideSums};
                options.swapFactors = swap;
                Dag dag(ValueKind::Real, 1, Signs::Separate);
                buildInto(dag, n, options);
                EXPECT_LT(errorAgainstNaive(dag, n, 7u + n), 1e-16) << "wide " << wide << " sums " << wideSums << " swap " << swap;
            }
}

// Multiplications of the two-stage and butterfly lengths follow from their
// factors' counts: no extra products hide in the twiddles or index maps.
// Both precisions, whose tables differ in the blocks.
TEST_P(RealBuilder, CountsOfTheTwoStageLengthsAddUp) {
    const int n = GetParam();
    for (bool single : {false, true}) {
        auto muls = [single](int len) {
            Dag dag(ValueKind::Real, 1, Signs::Separate);
            buildInto(dag, len, {.wideProducts = single});
            return countFlops(dag).muls;
        };
        const RealRow& row = realRow(n);
        if (row.method == RealMethod::Direct) {
            // One product per operand and distinct constant magnitude other
            // than 0 and 1: x_j + x_{n-j} by cosines, x_j - x_{n-j} by sines
            // (2 m^2 for a prime).
            const int m = (n - 1) / 2;
            std::set<std::pair<int, long long>> cosines, sines;
            for (int j = 1; j <= m; ++j)
                for (int k = 1; k <= m; ++k) {
                    const long double angle = 2 * 3.14159265358979323846L * (j * k % n) / n;
                    for (auto [set, c] : {std::pair{&cosines, std::fabs(std::cos(angle))}, {&sines, std::fabs(std::sin(angle))}})
                        if (c > 1e-12L && c < 1 - 1e-12L) set->insert({j, std::llround(c * 1e12L)});
                }
            EXPECT_EQ(muls(n), static_cast<long>(cosines.size() + sines.size())) << "single " << single;
        }
        if (row.method != RealMethod::PrimeFactor) continue;
        const long wholeColumns = row.n2 * muls(row.n1) + row.n1 * muls(row.n2);
        // A column that is a fast convolution as a block (31 in 62, single
        // precision) takes fewer multiplications than the same length built
        // on its own (direct).
        if (rowFor(row.n1, {.singlePrecision = single, .block = true}).method == RealMethod::Convolution)
            EXPECT_LT(muls(n), wholeColumns) << "single " << single;
        else
            EXPECT_EQ(muls(n), wholeColumns) << "single " << single;
    }
}

TEST_P(RealBuilder, LanePairingComputesTheSameOutputs) {
    const int n = GetParam();
    Dag dag(ValueKind::Real, 1, Signs::Separate);
    buildInto(dag, n, RealDftOptions{true, false});
    for (Depth depth : {Depth::FromInputs, Depth::FromOutputs, Depth::Flexible, Depth::Instances})
        for (Orientation orientation : {Orientation::Any, Orientation::LaneZeroCheaper}) {
            const Dag paired = pairLanes(dag, depth, orientation);
            ASSERT_EQ(paired.lanes(), 2);
            EXPECT_LT(errorAgainstNaive(paired, n, 11u + n), 1e-16);
            // Every output element is written by exactly one lane of one value.
            std::vector<int> written(n + 2, 0);
            for (const Output& o : paired.outputs())
                for (int e : o.elements)
                    if (e >= 0) ++written[e];
            for (const Output& o : dag.outputs()) EXPECT_EQ(written[o.elements[0]], 1) << o.elements[0];
        }
}

// The direct sums put row k's cosine and sine sums in one vector: every
// product of a pair sum s_j shares its vector with a product of the
// difference d_j, so one (s_j, d_j) operand serves both lanes. x0 joins each
// row's cosine sum with a zero beside it, so the row's sine sum rides along
// and (R_k, I_k) leave the kernel from one vector.
TEST(RealBuilderPairing, DirectRowsShareOperandsAndLeaveAsOneVectorPerRow) {
    for (int n : {7, 13, 23, 47, 59})
        for (bool single : {false, true}) {
            Dag dag(ValueKind::Real, 1, Signs::Separate);
            buildInto(dag, n, RealDftOptions{single, single});
            const std::vector<NodeId> partner = lanePartners(dag, Depth::Instances);
            // j for s_j, -j for d_j, 0 for any other node.
            auto pairIndex = [&](NodeId id) {
                const Node& v = dag.node(id);
                if ((v.op != Op::Add && v.op != Op::Sub) || dag.node(v.a).op != Op::Input || dag.node(v.b).op != Op::Input)
                    return 0;
                const int a = dag.inputElements(dag.node(v.a).arg)[0], b = dag.inputElements(dag.node(v.b).arg)[0];
                if (a + b != n) return 0;
                return v.op == Op::Add ? std::min(a, b) : -std::min(a, b);
            };
            int products = 0;
            for (NodeId id = 0; id < static_cast<NodeId>(dag.nodes().size()); ++id) {
                if (dag.node(id).op != Op::Scale || pairIndex(dag.node(id).a) <= 0) continue;
                ++products;
                ASSERT_GE(partner[id], 0) << "n " << n << " node " << id;
                EXPECT_EQ(dag.node(partner[id]).op, Op::Scale);
                EXPECT_EQ(pairIndex(dag.node(partner[id]).a), -pairIndex(dag.node(id).a)) << "n " << n;
            }
            EXPECT_EQ(products, (n - 1) / 2 * ((n - 1) / 2)) << "n " << n;
            const Dag paired = pairLanes(dag, Depth::Instances);
            int rows = 0;
            for (const Output& o : paired.outputs())
                rows += o.elements[0] >= 2 && o.elements[0] % 2 == 0 && o.elements[1] == o.elements[0] + 1;
            EXPECT_EQ(rows, (n - 1) / 2) << "n " << n << (single ? " single" : " double");
            EXPECT_LT(errorAgainstNaive(paired, n, 5u), 1e-12) << "n " << n;
        }
}

std::vector<int> allLengths() {
    std::vector<int> v;
    for (int n = 2; n <= 64; ++n) v.push_back(n);
    return v;
}

INSTANTIATE_TEST_SUITE_P(AllLengths, RealBuilder, ::testing::ValuesIn(allLengths()));

TEST(RealBuilderCounts, PowersOfTwoAndSmallLengthsHaveTheIntendedMultiplications) {
    const std::pair<int, long> intended[] = {{2, 0}, {3, 2}, {4, 0}, {5, 8}, {6, 4}, {8, 2}, {16, 12}, {32, 44}, {64, 132}, {25, 112}, {49, 324}};
    for (auto [n, count] : intended) {
        Dag dag(ValueKind::Real, 1, Signs::Separate);
        buildInto(dag, n, {});
        EXPECT_EQ(countFlops(dag).muls, count) << n;
    }
}

}  // namespace
