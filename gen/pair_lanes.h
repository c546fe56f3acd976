// Vectorisation of a one-lane real DAG into a two-lane one: isomorphic
// operations (same operation, precision and depth) are paired into the two
// lanes of a vector, preferring partners whose operands already sit side by
// side; loads take any two elements, shuffles line up the rest.
#pragma once

#include <vector>

#include "dag.h"

namespace kfpg::gen {

// Which operations may share a vector: those at the same distance from the
// inputs (lines up the first stages of a transform), or from the outputs
// (lines up the last ones), or any two whose ranges of possible depths
// overlap and that do not depend on each other (each pair then fixes the
// depth of both, and its neighbours' ranges narrow accordingly).
// `Instances` first pairs neighbouring instances of the builder's loops
// (Dag::Instance) node by node, then the rest as `Flexible`.
enum class Depth { FromInputs, FromOutputs, Flexible, Instances };

// Which lane each value of a pair takes. `Any`: the first created in lane 0.
// `LaneZeroCheaper`: pairs are turned (a local search) so that values taken
// out of a vector come from lane 0 where they can: in single-precision code
// a lane 0 joins a lane of another value in one shuffle, a lane 1 in two.
enum class Orientation { Any, LaneZeroCheaper };

// The same computation with every value in one lane of a two-lane value;
// outputs keep their elements. The scalar DAG must be real and one-lane.
Dag pairLanes(const Dag& scalar, Depth depth, Orientation orientation = Orientation::Any);

// The pairs pairLanes would form: the partner of each node, or -1.
std::vector<NodeId> lanePartners(const Dag& scalar, Depth depth);

}  // namespace kfpg::gen
