// Vectorisation of a one-lane real DAG into a two-lane one: isomorphic
// operations (same operation, precision and depth) are paired into the two
// lanes of a vector, preferring partners whose operands already sit side by
// side; loads take any two elements, shuffles line up the rest.
#pragma once

#include "dag.h"

namespace kfpg::gen {

// Which operations count as the same depth: distance from the inputs
// (lines up the first stages of a transform), or from the outputs (lines up
// the last ones).
enum class Depth { FromInputs, FromOutputs };

// The same computation with every value in one lane of a two-lane value;
// outputs keep their elements. The scalar DAG must be real and one-lane.
Dag pairLanes(const Dag& scalar, Depth depth);

}  // namespace kfpg::gen
