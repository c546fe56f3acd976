// The Hartley builder's cost, in both precisions' forms: exactly the real
// DFT's operations plus one addition per output beyond R_0 and the Nyquist
// value, with every negation absorbed. (Its values are checked by kfpg_gen
// itself and by the kernel tests.)
#include <gtest/gtest.h>

#include "builders/hartley.h"
#include "dag.h"

namespace {

using namespace kfpg::gen;

Dag hartleyDag(int n, bool singlePrecision) {
    Dag dag(ValueKind::Real, 1, Signs::Separate);
    std::vector<NodeId> x;
    for (int i = 0; i < n; ++i) x.push_back(dag.input(i));
    const std::vector<NodeId> h = buildHartley(dag, x, hartleyOptions(singlePrecision));
    for (int k = 0; k < n; ++k) dag.output(k, h[k]);
    return dag;
}

FlopCount realDftFlops(int n, bool singlePrecision) {
    Dag dag(ValueKind::Real, 1, Signs::Separate);
    std::vector<NodeId> x;
    for (int i = 0; i < n; ++i) x.push_back(dag.input(i));
    const HalfSpectrum X = buildRealDft(dag, x, hartleyOptions(singlePrecision));
    for (int k = 0; k <= n / 2; ++k) {
        dag.output(2 * k, X.re[k]);
        dag.output(2 * k + 1, X.im[k]);
    }
    return countFlops(dag);
}

// Negation nodes that some output depends on.
int liveNegations(const Dag& dag) {
    std::vector<char> live(dag.nodes().size(), 0);
    for (const Output& o : dag.outputs()) live[o.value] = 1;
    int count = 0;
    for (NodeId id = static_cast<NodeId>(live.size()) - 1; id >= 0; --id) {
        if (!live[id]) continue;
        const Node& node = dag.node(id);
        count += node.op == Op::Neg;
        if (node.a >= 0) live[node.a] = 1;
        if (node.b >= 0) live[node.b] = 1;
    }
    return count;
}

class HartleyBuilder : public ::testing::TestWithParam<int> {};

TEST_P(HartleyBuilder, CostsTheRealDftPlusOneAdditionPerPairedOutput) {
    const int n = GetParam();
    const int pairs = (n - 1) / 2;
    for (bool single : {false, true}) {
        const Dag dag = hartleyDag(n, single);
        const FlopCount dht = countFlops(dag), rdft = realDftFlops(n, single);
        EXPECT_EQ(dht.muls, rdft.muls);
        EXPECT_EQ(dht.adds, rdft.adds + 2 * pairs);
        EXPECT_EQ(liveNegations(dag), 0);
    }
}

INSTANTIATE_TEST_SUITE_P(AllLengths, HartleyBuilder, ::testing::Range(2, 65));

}  // namespace
