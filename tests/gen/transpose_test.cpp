// Transposition of linear DAGs: random networks transpose to the matrix
// transpose and back, and precision marks keep their meaning.
#include <gtest/gtest.h>

#include <map>
#include <random>
#include <vector>

#include "builders/real_dft.h"
#include "dag.h"
#include "evaluate.h"
#include "pair_lanes.h"
#include "transpose.h"

namespace {

using namespace kfpg::gen;
using Matrix = std::vector<std::vector<long double>>;

// Column i is the DAG's response to the unit vector e_i.
Matrix matrixOf(const Dag& dag, int inputs, int outputs) {
    Matrix m(outputs, std::vector<long double>(inputs));
    for (int i = 0; i < inputs; ++i) {
        std::vector<Complex> unit(inputs, 0);
        unit[i] = 1;
        const auto out = evaluate(dag, unit, outputs);
        for (int o = 0; o < outputs; ++o) m[o][i] = out[o].real();
    }
    return m;
}

Dag transposed(const Dag& forward, int inputs, int outputs, const std::vector<NodeId>& partners = {}) {
    Dag t(ValueKind::Real, 1, Signs::Separate);
    std::vector<NodeId> y;
    for (int e = 0; e < outputs; ++e) y.push_back(t.input(e));
    const auto x = transposeInto(t, forward, y, inputs, partners);
    for (int i = 0; i < inputs; ++i) t.output(i, x[i]);
    return t;
}

// A random network of sums, differences, negations and products.
Dag randomNetwork(unsigned seed, Signs signs, int inputs, int outputs) {
    std::mt19937 rng(seed);
    Dag d(ValueKind::Real, 1, signs);
    std::vector<NodeId> pool;
    for (int i = 0; i < inputs; ++i) pool.push_back(d.input(i));
    auto pick = [&] { return pool[std::uniform_int_distribution<std::size_t>(0, pool.size() - 1)(rng)]; };
    for (int step = 0; step < 40; ++step) {
        switch (rng() % 5) {
            case 0: pool.push_back(d.add(pick(), pick())); break;
            case 1: pool.push_back(d.sub(pick(), pick())); break;
            case 2: pool.push_back(d.neg(pick())); break;
            default: pool.push_back(d.scale(std::uniform_real_distribution<double>(-2, 2)(rng), pick())); break;
        }
    }
    for (int o = 0; o < outputs; ++o) d.output(o, pool[pool.size() - 1 - static_cast<std::size_t>(rng() % 12)]);
    return d;
}

void expectTransposes(const Matrix& a, const Matrix& b) {
    for (std::size_t r = 0; r < a.size(); ++r)
        for (std::size_t c = 0; c < a[r].size(); ++c)
            EXPECT_NEAR(static_cast<double>(b[c][r]), static_cast<double>(a[r][c]), 1e-12 * (1 + std::fabs(static_cast<double>(a[r][c]))));
}

TEST(Transpose, RandomNetworksGiveTheTransposedMatrixAndBackAgain) {
    for (unsigned seed = 1; seed <= 60; ++seed) {
        const int inputs = 2 + static_cast<int>(seed % 6), outputs = 1 + static_cast<int>(seed * 7 % 5);
        const Dag f = randomNetwork(seed, seed % 2 ? Signs::Separate : Signs::InConstants, inputs, outputs);
        const Matrix m = matrixOf(f, inputs, outputs);
        const Dag t = transposed(f, inputs, outputs);
        expectTransposes(m, matrixOf(t, outputs, inputs));
        const Matrix twice = matrixOf(transposed(t, outputs, inputs), inputs, outputs);
        expectTransposes(m, [&] {
            Matrix back(inputs, std::vector<long double>(outputs));
            for (int r = 0; r < outputs; ++r)
                for (int c = 0; c < inputs; ++c) back[c][r] = twice[r][c];
            return back;
        }());
    }
}

TEST(Transpose, KeepsTheMultiplicationCountOfTheRealDft) {
    for (int n : {5, 8, 12, 16, 64}) {
        Dag f(ValueKind::Real, 1, Signs::Separate);
        std::vector<NodeId> x;
        for (int i = 0; i < n; ++i) x.push_back(f.input(i));
        const HalfSpectrum X = buildRealDft(f, x, RealDftOptions{});
        for (int k = 0; k <= n / 2; ++k) f.output(2 * k, X.re[k]), f.output(2 * k + 1, X.im[k]);
        const Dag t = transposed(f, n, 2 * (n / 2) + 2);
        EXPECT_EQ(countFlops(t).muls, countFlops(f).muls) << n;
        expectTransposes(matrixOf(f, n, 2 * (n / 2) + 2), matrixOf(t, 2 * (n / 2) + 2, n));
    }
}

// Live nodes of a DAG, from its outputs.
std::vector<NodeId> liveNodes(const Dag& d) {
    std::vector<char> live(d.nodes().size(), 0);
    for (const Output& o : d.outputs()) live[o.value] = 1;
    std::vector<NodeId> out;
    for (NodeId id = static_cast<NodeId>(live.size()) - 1; id >= 0; --id) {
        if (!live[id]) continue;
        out.push_back(id);
        if (d.node(id).a >= 0) live[d.node(id).a] = 1;
        if (d.node(id).b >= 0) live[d.node(id).b] = 1;
    }
    return out;
}

Dag realDft(int n, RealDftOptions options) {
    Dag f(ValueKind::Real, 1, Signs::Separate);
    std::vector<NodeId> x;
    for (int i = 0; i < n; ++i) x.push_back(f.input(i));
    const HalfSpectrum X = buildRealDft(f, x, options);
    for (int k = 0; k <= n / 2; ++k) f.output(2 * k, X.re[k]), f.output(2 * k + 1, X.im[k]);
    return f;
}

TEST(Transpose, WideProductsStayProductsRoundedOnTheirOwn) {
    const Dag f = realDft(7, RealDftOptions{true, false});
    const Dag t = transposed(f, 7, 8);
    int wide = 0;
    std::vector<int> narrowUses(t.nodes().size(), 0);
    for (NodeId id : liveNodes(t)) {
        const Node& n = t.node(id);
        if (n.op == Op::Narrow) ++narrowUses[n.a];
        if (!n.wide) continue;
        ++wide;
        EXPECT_TRUE(n.op == Op::Scale || n.op == Op::Neg) << "wide node " << id;
        if (n.op == Op::Scale) EXPECT_FALSE(t.node(n.a).wide);
    }
    for (NodeId id : liveNodes(t))
        if (t.node(id).wide && t.node(id).op == Op::Scale) EXPECT_EQ(narrowUses[id], 1) << "product " << id;
    EXPECT_EQ(wide, countFlops(f).muls);
    expectTransposes(matrixOf(f, 7, 8), matrixOf(t, 8, 7));
}

TEST(Transpose, WideSumRegionsTransposeToWideSums) {
    const Dag f = realDft(7, RealDftOptions{true, true});
    const Dag t = transposed(f, 7, 8);
    int wideSums = 0, narrows = 0;
    for (NodeId id : liveNodes(t)) {
        const Node& n = t.node(id);
        wideSums += n.wide && (n.op == Op::Add || n.op == Op::Sub);
        narrows += n.op == Op::Narrow;
    }
    // x0 and each pair sum and difference of the forward side receive one
    // rounded wide sum: 1 + 2 * 3 of them, each of three terms (two additions).
    EXPECT_EQ(narrows, 7);
    EXPECT_GE(wideSums, 12);
    expectTransposes(matrixOf(f, 7, 8), matrixOf(t, 8, 7));
}

// The sums of a transposed block are built term by term, in the order of
// the forward block's terms: a block of direct sums (rows advanced term by
// term) transposes to sums that are all open at once, not one whole sum
// after another.
TEST(Transpose, BlockedSumsStayBlocked) {
    const Dag f = realDft(37, RealDftOptions{});
    const Dag t = transposed(f, 37, 38);
    // Creation order of the sums of products: the first additions of the
    // transposed sums should interleave (many sums open at once).
    int switches = 0;
    NodeId last = -1;
    for (NodeId id = 0; id < static_cast<NodeId>(t.nodes().size()); ++id) {
        const Node& n = t.node(id);
        if (n.op != Op::Add && n.op != Op::Sub) continue;
        const NodeId chainFrom = t.node(n.a).op == Op::Add || t.node(n.a).op == Op::Sub ? n.a : -1;
        if (chainFrom >= 0 && chainFrom != last) ++switches;
        last = id;
    }
    EXPECT_GT(switches, 100);
    expectTransposes(matrixOf(f, 37, 38), matrixOf(t, 38, 37));
}

// Following the forward DAG's lane pairs: the transposed network is the
// same map, and the nodes made for each forward pair form two instances of
// one group, which lane pairing then pairs node by node.
TEST(Transpose, ForwardLanePairsBecomeInstancePairs) {
    for (int n : {12, 16, 30, 64}) {
        const Dag f = realDft(n, RealDftOptions{});
        const std::vector<NodeId> partners = lanePartners(f, Depth::Instances);
        const int outputs = 2 * (n / 2) + 2;
        const Dag t = transposed(f, n, outputs, partners);
        expectTransposes(matrixOf(f, n, outputs), matrixOf(t, outputs, n));
        std::map<int, int> perGroup;
        for (const Dag::Instance& i : t.instances()) ++perGroup[i.group];
        int pairs = 0;
        for (NodeId id = 0; id < static_cast<NodeId>(partners.size()); ++id) pairs += partners[id] > id;
        EXPECT_EQ(static_cast<int>(perGroup.size()), pairs) << n;
        for (const auto& [group, count] : perGroup) EXPECT_EQ(count, 2) << n;
        const Dag paired = pairLanes(t, Depth::Instances);
        expectTransposes(matrixOf(f, n, outputs), matrixOf(paired, outputs, n));
    }
}

}  // namespace
