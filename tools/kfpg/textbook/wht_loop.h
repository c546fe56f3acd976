// The textbook Walsh-Hadamard transform: an in-place radix-2 loop, unscaled,
// natural order. Built apart from the tool as plain x86-64 code at -O3, it is
// the yardstick the wht benchmark compares the library's kernels with.
#pragma once

namespace kfpg::textbook {

void walshHadamardInPlace(float* x, int n);
void walshHadamardInPlace(double* x, int n);

}  // namespace kfpg::textbook
