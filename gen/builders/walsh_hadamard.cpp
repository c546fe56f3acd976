#include "builders/walsh_hadamard.h"

#include <functional>
#include <stdexcept>

namespace kfpg::gen {

namespace {

int log2Exact(std::size_t n) {
    int bits = 0;
    while ((std::size_t{1} << bits) < n) ++bits;
    return bits;
}

// Radix-2 stage over value-index bit `bit` within v[lo, lo + count).
void stage(Dag& dag, std::vector<NodeId>& v, int lo, int count, int bit) {
    const int h = 1 << bit;
    for (int i = lo; i < lo + count; ++i) {
        if (i & h) continue;
        const NodeId a = v[i], b = v[i + h];
        v[i] = dag.add(a, b);
        v[i + h] = dag.sub(a, b);
    }
}

// Transposes the group of `lanes` values at lo as a lanes x lanes matrix
// (value = row, lane = column).
void transposeGroup(Dag& dag, std::vector<NodeId>& v, int lo) {
    const int lanes = dag.lanes();
    if (lanes == 2) {
        const NodeId r0 = v[lo], r1 = v[lo + 1];
        v[lo] = dag.shuffleHalves(r0, r1, {0, 0});
        v[lo + 1] = dag.shuffleHalves(r0, r1, {1, 1});
    } else if (lanes == 4) {
        // Pairs of rows first (t0 = r00 r01 r10 r11, ...), then columns.
        const NodeId t0 = dag.shuffleHalves(v[lo], v[lo + 1], {0, 1, 0, 1});
        const NodeId t1 = dag.shuffleHalves(v[lo], v[lo + 1], {2, 3, 2, 3});
        const NodeId t2 = dag.shuffleHalves(v[lo + 2], v[lo + 3], {0, 1, 0, 1});
        const NodeId t3 = dag.shuffleHalves(v[lo + 2], v[lo + 3], {2, 3, 2, 3});
        v[lo] = dag.shuffleHalves(t0, t2, {0, 2, 0, 2});
        v[lo + 1] = dag.shuffleHalves(t0, t2, {1, 3, 1, 3});
        v[lo + 2] = dag.shuffleHalves(t1, t3, {0, 2, 0, 2});
        v[lo + 3] = dag.shuffleHalves(t1, t3, {1, 3, 1, 3});
    } else {
        throw std::logic_error("WHT transposes need 2 or 4 lanes");
    }
}

// Radix-2 stage over the lane bit `bit` inside value x: every lane gets its
// partner lane (a shuffle) plus itself with the sign flipped in the upper
// lanes of each pair, i.e. lower + upper and lower - upper.
NodeId laneStage(Dag& dag, NodeId x, int bit) {
    const int lanes = dag.lanes(), h = 1 << bit;
    std::vector<int> partner(lanes);
    std::vector<Real> signs(lanes);
    for (int l = 0; l < lanes; ++l) partner[l] = l ^ h, signs[l] = l & h ? -1 : 1;
    return dag.add(dag.shuffleHalves(x, x, partner), dag.scaleLanes(signs, x));
}

// Butterflies over all value-index bits of v, in the order that keeps a
// block's values together: a block of 2^leafBits values is made by `leaf`,
// a larger block is its two halves followed by the stage across them. At the
// outermost level each pair of leaf blocks is handed to `finish` as soon as
// the last stage has joined them, so values leave early.
class DepthFirstWht {
public:
    DepthFirstWht(Dag& dag, std::vector<NodeId>& v, int leafBits, std::function<void(int)> leaf,
                  std::function<void(int)> finish)
        : dag_(dag), v_(v), leafBits_(leafBits), leaf_(std::move(leaf)), finish_(std::move(finish)) {}

    void run() {
        const int bits = log2Exact(v_.size());
        if (bits == leafBits_) {
            leaf_(0);
            finish_(0);
            return;
        }
        const int half = 1 << (bits - 1), leafSize = 1 << leafBits_;
        block(0, bits - 1);
        block(half, bits - 1);
        for (int lo = 0; lo < half; lo += leafSize) {
            stage(dag_, v_, lo, leafSize, bits - 1);
            finish_(lo);
            finish_(lo + half);
        }
    }

private:
    void block(int lo, int bits) {
        if (bits == leafBits_) return leaf_(lo);
        block(lo, bits - 1);
        block(lo + (1 << (bits - 1)), bits - 1);
        stage(dag_, v_, lo, 1 << (bits - 1), bits - 1);
    }

    Dag& dag_;
    std::vector<NodeId>& v_;
    int leafBits_;
    std::function<void(int)> leaf_, finish_;
};

// Element indices of value i: lanes consecutive elements, or one per lane
// `stride` apart.
std::vector<int> elementsOf(int i, int lanes, int stride) {
    std::vector<int> e(lanes);
    for (int l = 0; l < lanes; ++l) e[l] = stride ? i * stride + l : i * lanes + l;
    return e;
}

}  // namespace

void buildContiguousWht(Dag& dag, int order, LaneBits laneScheme) {
    const int lanes = dag.lanes();
    const int laneBits = log2Exact(lanes);
    const int count = (1 << order) / lanes;
    if (count < 1) throw std::logic_error("WHT order too small for its vectors");
    std::vector<NodeId> v(count);
    const auto output = [&](int i) { dag.outputLanes(elementsOf(i, lanes, 0), v[i]); };
    if (lanes == 1 || laneScheme == LaneBits::InVector) {
        const auto leaf = [&](int i) {
            v[i] = dag.inputLanes(elementsOf(i, lanes, 0));
            for (int bit = 0; bit < laneBits; ++bit) v[i] = laneStage(dag, v[i], bit);
        };
        DepthFirstWht(dag, v, 0, leaf, output).run();
        return;
    }
    if (count < lanes) throw std::logic_error("WHT order too small for lane transposes");
    // Transposed, a value's position within its group stands for the lowest
    // index bits and the lanes for the next ones: the butterflies over all
    // value bits cover every index bit but the lane bits, which are value
    // bits again once the group is transposed back.
    const auto leaf = [&](int lo) {
        for (int i = lo; i < lo + lanes; ++i) v[i] = dag.inputLanes(elementsOf(i, lanes, 0));
        transposeGroup(dag, v, lo);
        for (int bit = 0; bit < laneBits; ++bit) stage(dag, v, lo, lanes, bit);
    };
    const auto finish = [&](int lo) {
        transposeGroup(dag, v, lo);
        for (int bit = 0; bit < laneBits; ++bit) stage(dag, v, lo, lanes, bit);
        for (int i = lo; i < lo + lanes; ++i) output(i);
    };
    DepthFirstWht(dag, v, laneBits, leaf, finish).run();
}

void buildStridedWht(Dag& dag, int order, int stride) {
    const int lanes = dag.lanes();
    std::vector<NodeId> v(1 << order);
    DepthFirstWht(
        dag, v, 0, [&](int i) { v[i] = dag.inputLanes(elementsOf(i, lanes, stride)); },
        [&](int i) { dag.outputLanes(elementsOf(i, lanes, stride), v[i]); })
        .run();
}

std::vector<Complex> naiveWht(const std::vector<Complex>& x) {
    std::vector<Complex> y(x.size());
    for (std::size_t k = 0; k < x.size(); ++k)
        for (std::size_t n = 0; n < x.size(); ++n) y[k] += __builtin_popcountl(k & n) % 2 ? -x[n] : x[n];
    return y;
}

}  // namespace kfpg::gen
