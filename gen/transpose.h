// Transposition of a linear network: from the DAG of a linear map F (one
// lane, real values) builds x = F^T y in another DAG. A forward transform's
// DAG transposed is an inverse transform of the same structure and the same
// multiplications, with its stages in reverse order: fan-out becomes a sum
// and a sum becomes fan-out.
#pragma once

#include <vector>

#include "dag.h"

namespace kfpg::gen {

// `forward`: a one-lane real DAG of Input, Zero, Add, Sub, Neg, Scale and
// Narrow nodes (precision marks allowed). y[e] is a value of `target` for
// every output element e of `forward`. Returns x[i], i = 0..inputCount-1,
// built with target's constructors (so its simplifier applies); an input
// that no output depends on gives target's zero.
//
// Every product of `forward` is one product of the result. Precision marks
// carry over: a wide product that is rounded on its own
// (a wide Scale followed by Narrow) transposes to a wide product rounded on
// its own; the contributions of wide sum regions (wide Add or Sub among the
// wide nodes) to one value are summed in double and rounded once.
//
// Instances of the result (Dag::Instance, for lane pairing): with no
// `partners`, the transposed runs of forward's builder loop instances. With
// `partners` (lanePartners of forward), the nodes made for each node of a
// forward pair form an instance of that pair's own group, so that the
// transposed network can be paired as the forward one was.
//
// `twoChainSums`: every plain (not wide) sum of three or more contributions
// is formed as two chains, the first half of the contributions and the
// rest, then added: as many additions, shorter chains, less rounding error.
std::vector<NodeId> transposeInto(Dag& target, const Dag& forward, const std::vector<NodeId>& y, int inputCount,
                                  const std::vector<NodeId>& partners = {}, bool twoChainSums = false);

}  // namespace kfpg::gen
