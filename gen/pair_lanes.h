// Vectorisation of a one-lane real DAG into a two-lane one: isomorphic
// operations (same operation, precision and depth) are paired into the two
// lanes of a vector, preferring partners whose operands already sit side by
// side; loads take any two elements, shuffles line up the rest.
#pragma once

#include "dag.h"

namespace kfpg::gen {

// The same computation with every value in one lane of a two-lane value;
// outputs keep their elements. The scalar DAG must be real and one-lane.
Dag pairLanes(const Dag& scalar);

}  // namespace kfpg::gen
