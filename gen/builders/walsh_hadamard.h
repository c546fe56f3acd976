// Builders of Walsh-Hadamard DAGs: radix-2 butterflies (a + b, a - b) only,
// natural (Hadamard) order. Both create their nodes depth-first over blocks
// of values, so that a block stays in registers: emit them as built
// (Schedule::AsBuilt).
#pragma once

#include <vector>

#include "dag.h"

namespace kfpg::gen {

// WHT of 2^order contiguous elements, element e in lane e % lanes of value
// e / lanes (one lane: one element per value). Index bits that lie inside a
// value are reached by transposing groups of `lanes` values with shuffles,
// so every butterfly is a whole-value add or sub. Records the outputs in
// the same layout.
void buildContiguousWht(Dag& dag, int order);

// 2^order-point WHTs side by side, one per lane: point i of lane l is
// element i * stride + l. Records the outputs in the same layout.
void buildStridedWht(Dag& dag, int order, int stride);

// Naive WHT, y[k] = sum x[n] (-1)^popcount(k & n).
std::vector<Complex> naiveWht(const std::vector<Complex>& x);

}  // namespace kfpg::gen
