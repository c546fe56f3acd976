#include "builders/walsh_hadamard.h"

#include <stdexcept>

namespace kfpg::gen {

namespace {

// Radix-2 stages over the index bits [from, to) of the value array.
void butterflies(Dag& dag, std::vector<NodeId>& v, int from, int to) {
    for (int bit = from; bit < to; ++bit) {
        const std::size_t h = std::size_t{1} << bit;
        for (std::size_t i = 0; i < v.size(); ++i) {
            if (i & h) continue;
            const NodeId a = v[i], b = v[i + h];
            v[i] = dag.add(a, b);
            v[i + h] = dag.sub(a, b);
        }
    }
}

int log2Exact(std::size_t n) {
    int bits = 0;
    while ((std::size_t{1} << bits) < n) ++bits;
    return bits;
}

// Transposes each group of `lanes` consecutive values as a lanes x lanes
// matrix (value = row, lane = column).
void transposeGroups(Dag& dag, std::vector<NodeId>& v) {
    const int lanes = dag.lanes();
    for (std::size_t g = 0; g < v.size(); g += lanes) {
        if (lanes == 2) {
            const NodeId r0 = v[g], r1 = v[g + 1];
            v[g] = dag.shuffleHalves(r0, r1, {0, 0});
            v[g + 1] = dag.shuffleHalves(r0, r1, {1, 1});
        } else if (lanes == 4) {
            // Pairs of rows first (t0 = r00 r01 r10 r11, ...), then columns.
            const NodeId t0 = dag.shuffleHalves(v[g], v[g + 1], {0, 1, 0, 1});
            const NodeId t1 = dag.shuffleHalves(v[g], v[g + 1], {2, 3, 2, 3});
            const NodeId t2 = dag.shuffleHalves(v[g + 2], v[g + 3], {0, 1, 0, 1});
            const NodeId t3 = dag.shuffleHalves(v[g + 2], v[g + 3], {2, 3, 2, 3});
            v[g] = dag.shuffleHalves(t0, t2, {0, 2, 0, 2});
            v[g + 1] = dag.shuffleHalves(t0, t2, {1, 3, 1, 3});
            v[g + 2] = dag.shuffleHalves(t1, t3, {0, 2, 0, 2});
            v[g + 3] = dag.shuffleHalves(t1, t3, {1, 3, 1, 3});
        } else {
            throw std::logic_error("WHT transposes need 2 or 4 lanes");
        }
    }
}

}  // namespace

void buildContiguousWht(Dag& dag, int order) {
    const int lanes = dag.lanes();
    const int laneBits = log2Exact(lanes);
    const int count = (1 << order) / lanes;
    if (lanes > 1 && count < lanes) throw std::logic_error("WHT order too small for its vectors");
    std::vector<NodeId> v(count);
    for (int i = 0; i < count; ++i) {
        std::vector<int> elements(lanes);
        for (int l = 0; l < lanes; ++l) elements[l] = i * lanes + l;
        v[i] = dag.inputLanes(elements);
    }
    const int valueBits = order - laneBits;
    if (lanes == 1) {
        butterflies(dag, v, 0, valueBits);
    } else {
        // Transposed, a value's position within its group stands for the
        // lowest index bits and the lanes for the next ones: the butterflies
        // over all value bits cover every index bit but the lane bits,
        // which are value bits again once transposed back.
        transposeGroups(dag, v);
        butterflies(dag, v, 0, valueBits);
        transposeGroups(dag, v);
        butterflies(dag, v, 0, laneBits);
    }
    for (int i = 0; i < count; ++i) {
        std::vector<int> elements(lanes);
        for (int l = 0; l < lanes; ++l) elements[l] = i * lanes + l;
        dag.outputLanes(elements, v[i]);
    }
}

void buildStridedWht(Dag& dag, int order, int stride) {
    const int lanes = dag.lanes();
    const auto elementsOf = [&](int i) {
        std::vector<int> e(lanes);
        for (int l = 0; l < lanes; ++l) e[l] = i * stride + l;
        return e;
    };
    std::vector<NodeId> v(1 << order);
    for (int i = 0; i < (1 << order); ++i) v[i] = dag.inputLanes(elementsOf(i));
    butterflies(dag, v, 0, order);
    for (int i = 0; i < (1 << order); ++i) dag.outputLanes(elementsOf(i), v[i]);
}

std::vector<Complex> naiveWht(const std::vector<Complex>& x) {
    std::vector<Complex> y(x.size());
    for (std::size_t k = 0; k < x.size(); ++k)
        for (std::size_t n = 0; n < x.size(); ++n) y[k] += __builtin_popcountl(k & n) % 2 ? -x[n] : x[n];
    return y;
}

}  // namespace kfpg::gen
