// Builder of real-data DFT DAGs: n real values in, the half spectrum out,
// as the real-transform table (real_dft_table.h) says per length. Complex
// intermediate values are pairs of real nodes, so a real input's zero
// imaginary parts and its spectrum's conjugate symmetry cost nothing; the
// DAG should use Signs::Separate, which lets a value and its negative share
// one computation.
#pragma once

#include <vector>

#include "builders/real_dft_table.h"
#include "dag.h"

namespace kfpg::gen {

struct RealDftOptions {
    // Single precision: every product with a trigonometric constant is
    // formed in double from the widened operand and rounded once.
    bool wideProducts = false;
    // With wideProducts: the direct sums of odd lengths (x0 plus its
    // weighted pair sums, and the weighted pair differences), and each
    // twiddle of two products and their sum, are formed whole in double and
    // rounded once.
    bool wideSums = false;
    // The DAG is built to be transposed: every length takes its
    // row for transposition (RowUse::forTransposition, real_dft_table.h).
    bool forTransposition = false;
    // The blocked direct sums create each block's sine sums before its
    // cosine sums (their transposes then come in the other order, which
    // decides which lane each takes when they pair).
    bool sinesFirst = false;
    // The length itself splits into its factors the other way round
    // (swappedFactors); the blocks inside keep their rows.
    bool swapFactors = false;
};

// The row the builder takes for the whole length under these options.
RealRow realRowBuilt(int n, const RealDftOptions& options);

// X[k] = sum x[j] exp(-2 pi i j k / n) for k = 0..n/2: re[k] = Re X[k],
// im[k] = Im X[k] (im[0], and im[n/2] for even n, are the zero node).
struct HalfSpectrum {
    std::vector<NodeId> re, im;
};

HalfSpectrum buildRealDft(Dag& dag, const std::vector<NodeId>& x, const RealDftOptions& options);

}  // namespace kfpg::gen
