// Numerical evaluation of a DAG in long double, used to check every builder's
// result against a naive transform before any code is emitted.
#pragma once

#include <vector>

#include "dag.h"

namespace kfpg::gen {

// Runs the DAG on input elements x (every lane reads its own elements from
// x) and returns output element -> value. Elements that no output lane
// writes stay NaN; an element written twice with different values throws.
std::vector<Complex> evaluate(const Dag& dag, const std::vector<Complex>& x, int outputCount);

// Naive DFT, X[k] = sum x[n] exp(sign 2 pi i n k / N), angles reduced exactly.
std::vector<Complex> naiveDft(const std::vector<Complex>& x, int sign);

// exp(sign 2 pi i k / n) with k reduced modulo n first.
Complex unitRoot(long k, long n, int sign);

}  // namespace kfpg::gen
