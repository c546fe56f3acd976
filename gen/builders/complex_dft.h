// Builders of complex DFT DAGs: butterfly 2/4, direct symmetric pairs, Rader,
// Cooley-Tukey with twiddles and prime-factor (Good-Thomas), composed as the
// table in dft_table.h says.
#pragma once

#include <vector>

#include "dag.h"

namespace kfpg::gen {

// One element of a transform in flight: either an input element not yet
// loaded (element >= 0) or lane `lane` of a DAG value.
struct Slot {
    NodeId value = -1;
    int lane = 0;
    int element = -1;
};

struct ComplexDftOptions {
    int sign = -1;                // -1 forward, +1 inverse
    bool wideDirectTerms = false;  // single-precision lengths 3 and 5: weighted terms in double
};

// Builds the DFT of length n over input elements 0..n-1 into `dag` and
// records its outputs. With a two-lane DAG the transform is spread over the
// lanes: independent sub-transforms of a decomposition run side by side.
void buildComplexDft(Dag& dag, int n, const ComplexDftOptions& options);

// Lane-parallel DFT of length n on values x (every lane an independent
// transform), as the table says for a block of a larger length (block) or a
// kernel. Returns the n output values in natural order.
std::vector<NodeId> parallelComplexDft(Dag& dag, int n, int sign, const std::vector<NodeId>& x, bool block);

// Rader's precomputed convolution spectrum for prime p and primitive root g:
// DFT of b[j] = w^(g^-j), w = exp(sign 2 pi i / p), divided by p - 1.
std::vector<Complex> raderSpectrum(int p, int g, int sign);

// Direct transforms of at least this many symmetric pairs build their row
// sums in blocks of rows (below it, balanced trees).
constexpr int kBlockedDirectFrom = 16;

// Whether the kernel of length n has blocked row sums: the compiler must
// keep their order (forwarding single-use temporaries into their users
// would regroup every row into one chain of its own).
bool blockedDirectSums(int n);

}  // namespace kfpg::gen
