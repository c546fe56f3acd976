// Builders of Walsh-Hadamard DAGs: radix-2 butterflies (a + b, a - b) only,
// natural (Hadamard) order. Both create their nodes depth-first over blocks
// of values, so that a block stays in registers: emit them as built
// (the default Schedule::Creation).
#pragma once

#include <vector>

#include "dag.h"

namespace kfpg::gen {

// How the index bits inside a value (lane bits) get their butterflies.
enum class LaneBits {
    // Each group of `lanes` values is transposed (shuffles), the lane bits
    // are butterflied across values like all others, and the group is
    // transposed back: shuffles and whole-value adds and subs only.
    Transpose,
    // Each value meets its own lane-swapped copy: shuffle, per-lane sign
    // flip (an xor) and one add per lane bit; half the shuffles.
    InVector,
};

// WHT of 2^order contiguous elements, element e in lane e % lanes of value
// e / lanes (one lane: one element per value, no lane bits). Records the
// outputs in the same layout.
void buildContiguousWht(Dag& dag, int order, LaneBits laneScheme);

// 2^order-point WHTs side by side, one per lane: point i of lane l is
// element i * stride + l. Records the outputs in the same layout.
void buildStridedWht(Dag& dag, int order, int stride);

// Naive WHT, y[k] = sum x[n] (-1)^popcount(k & n).
std::vector<Complex> naiveWht(const std::vector<Complex>& x);

}  // namespace kfpg::gen
