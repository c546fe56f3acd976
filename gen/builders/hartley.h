// Builder of discrete Hartley transform DAGs, H[k] = sum x[j] cas(2 pi jk/n),
// from the real DFT's half spectrum (X[k] = R_k + i I_k, negative exponent):
// H[0] = R_0, H[k] = R_k - I_k, H[n-k] = R_k + I_k, H[n/2] = R_{n/2}. In a
// Signs::Separate DAG I_k is a negation of the sine sum b_k, which the
// subtraction absorbs: H[k] = a_k + b_k and H[n-k] = a_k - b_k cost one
// operation each and nothing else is added to the real DFT.
#pragma once

#include <vector>

#include "builders/real_dft.h"
#include "dag.h"

namespace kfpg::gen {

// Single precision: products with trigonometric constants in double, and the
// direct sums of odd lengths (x0 and its cosine-weighted pair sums, the
// sine-weighted pair differences) each formed whole in double, rounded once.
RealDftOptions hartleyOptions(bool singlePrecision);

// H[0..n-1] of the n input nodes x.
std::vector<NodeId> buildHartley(Dag& dag, const std::vector<NodeId>& x, const RealDftOptions& options);

}  // namespace kfpg::gen
