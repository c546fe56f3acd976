// The generator's Walsh-Hadamard builders and the emitter features they use:
// half-and-half lane shuffles, per-lane sign flips as xor, and split
// load/store alignment in vertical mode.
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "builders/walsh_hadamard.h"
#include "dag.h"
#include "emit.h"
#include "emitted_text.h"
#include "evaluate.h"

namespace {

using namespace kfpg::gen;

std::vector<Complex> randomInput(int count, unsigned seed) {
    std::mt19937 rng(seed);
    std::uniform_real_distribution<double> u(-1, 1);
    std::vector<Complex> x(count);
    for (Complex& v : x) v = u(rng);
    return x;
}

Real maxError(const std::vector<Complex>& got, const std::vector<Complex>& want) {
    Real worst = 0;
    for (std::size_t i = 0; i < want.size(); ++i) worst = std::max(worst, std::abs(got[i] - want[i]));
    return worst;
}

long countOps(const Dag& dag, Op op) {
    long n = 0;
    for (const Node& node : dag.nodes()) n += node.op == op;
    return n;
}

struct ContiguousCase {
    int lanes;
    LaneBits scheme;
};

class ContiguousWht : public ::testing::TestWithParam<ContiguousCase> {};

// Every order a lane count allows, against the naive transform, built from
// order * 2^order / lanes adds and subs plus data moves and sign flips.
TEST_P(ContiguousWht, MatchesTheNaiveTransformWithAddsAndSubsOnly) {
    const auto [lanes, scheme] = GetParam();
    const int lowest = scheme == LaneBits::Transpose && lanes > 1 ? (lanes == 4 ? 4 : 2) : (lanes == 4 ? 2 : 1);
    for (int order = lowest; order <= 7; ++order) {
        Dag dag(ValueKind::Real, lanes);
        buildContiguousWht(dag, order, scheme);
        const auto x = randomInput(1 << order, 10u + order);
        EXPECT_LT(maxError(evaluate(dag, x, 1 << order), naiveWht(x)), 1e-15L) << "order " << order;
        EXPECT_EQ(countOps(dag, Op::Add) + countOps(dag, Op::Sub), (order << order) / lanes) << "order " << order;
        for (const Node& n : dag.nodes()) {
            EXPECT_TRUE(n.op == Op::Input || n.op == Op::Add || n.op == Op::Sub || n.op == Op::Shuffle ||
                        n.op == Op::Scale)
                << "order " << order;
            if (n.op != Op::Scale) continue;
            EXPECT_EQ(scheme, LaneBits::InVector);
            for (const Complex& c : dag.constant(n.arg)) EXPECT_EQ(std::abs(c), 1) << "only sign flips";
        }
    }
}

INSTANTIATE_TEST_SUITE_P(LanesAndSchemes, ContiguousWht,
                         ::testing::Values(ContiguousCase{1, LaneBits::InVector}, ContiguousCase{2, LaneBits::InVector},
                                           ContiguousCase{4, LaneBits::InVector},
                                           ContiguousCase{2, LaneBits::Transpose},
                                           ContiguousCase{4, LaneBits::Transpose}));

TEST(StridedWht, EveryLaneTransformsItsOwnColumn) {
    for (int lanes : {2, 4})
        for (int order : {1, 3, 5}) {
            const int stride = 8;
            Dag dag(ValueKind::Real, lanes);
            buildStridedWht(dag, order, stride);
            const int points = 1 << order;
            const auto x = randomInput(points * stride, 30u + order);
            const auto got = evaluate(dag, x, points * stride);
            for (int l = 0; l < stride; ++l) {
                std::vector<Complex> column(points);
                for (int i = 0; i < points; ++i) column[i] = x[i * stride + l];
                const auto want = naiveWht(column);
                for (int i = 0; i < points; ++i) {
                    if (l < lanes)
                        EXPECT_LT(std::abs(got[i * stride + l] - want[i]), 1e-15L);
                    else
                        EXPECT_TRUE(std::isnan(got[i * stride + l].real())) << "element outside the lanes written";
                }
            }
            EXPECT_EQ(countOps(dag, Op::Shuffle) + countOps(dag, Op::Scale), 0);
        }
}

TEST(ShuffleHalves, LowLanesFromTheFirstValueHighLanesFromTheSecond) {
    Dag dag(ValueKind::Real, 4);
    const NodeId a = dag.inputLanes({0, 1, 2, 3}), b = dag.inputLanes({4, 5, 6, 7});
    dag.outputLanes({0, 1, 2, 3}, dag.shuffleHalves(a, b, {3, 0, 2, 1}));
    std::vector<Complex> x = {10, 11, 12, 13, 14, 15, 16, 17};
    const auto y = evaluate(dag, x, 4);
    EXPECT_EQ(y[0], Complex(13));
    EXPECT_EQ(y[1], Complex(10));
    EXPECT_EQ(y[2], Complex(16));
    EXPECT_EQ(y[3], Complex(15));
    EXPECT_EQ(dag.shuffleHalves(a, a, {0, 1, 2, 3}), a) << "identity is the value itself";
    EXPECT_NE(dag.shuffleHalves(a, b, {0, 1, 2, 3}), a);
    EXPECT_THROW(dag.shuffleHalves(a, b, {0, 1, 4, 0}), std::logic_error);
}

// One order-5 row of four-float vectors, emitted for an unaligned source and
// an aligned destination.
EmitResult emitRow(bool loadsAligned, bool storesAligned) {
    Dag dag(ValueKind::Real, 4);
    buildContiguousWht(dag, 5, LaneBits::InVector);
    EmitOptions o;
    o.mode = EmitMode::Vertical;
    o.precision = Precision::F32;
    o.alignedLoads = loadsAligned;
    o.alignedStores = storesAligned;
    o.load = [](int e) { return "pSrc + " + std::to_string(e); };
    o.store = [](int e) { return "pDst + " + std::to_string(e); };
    return emitBody(dag, o);
}

TEST(VerticalEmitter, SplitsLoadAndStoreAlignment) {
    const EmitResult mixed = emitRow(false, true);
    EXPECT_EQ(occurrences(mixed.body, "_mm_loadu_ps("), 8u);
    EXPECT_EQ(occurrences(mixed.body, "_mm_load_ps("), 0u);
    EXPECT_EQ(occurrences(mixed.body, "_mm_store_ps("), 8u);
    EXPECT_EQ(occurrences(mixed.body, "_mm_storeu_ps("), 0u);
    const EmitResult other = emitRow(true, false);
    EXPECT_EQ(occurrences(other.body, "_mm_load_ps("), 8u);
    EXPECT_EQ(occurrences(other.body, "_mm_storeu_ps("), 8u);
}

}  // namespace
