// Real-valued building blocks of the DCT-IV stages, built on a Dag whose
// values are independent lanes (vertical code) or scalars:
//   buildRodft:  odd-frequency real DFT  F[k] = sum s[n] e^{-i pi n (2k+1)/M},
//                k < M/2, radix-2 decimation in time;
//   buildDct4:   DCT-IV of size K (R_K of the even samples and the negated
//                odd samples in reverse, then one rotation per output pair);
//   buildDct2:   unnormalised DCT-II (even half DCT-II, odd half DCT-IV);
//   buildPairDft: complex DFT e^{-2 pi i jk/n} on separate real and
//                imaginary values, radix 2.
#pragma once

#include <vector>

#include "dag.h"

namespace kfpg::gen {

using Values = std::vector<NodeId>;

// cos and sin of pi * num / den, reduced exactly in integers first.
Real cosPiRatio(long num, long den);
Real sinPiRatio(long num, long den);

void buildRodft(Dag& dag, const Values& s, Values& re, Values& im);
Values buildDct4(Dag& dag, const Values& x);
Values buildDct2(Dag& dag, const Values& a);
void buildPairDft(Dag& dag, Values& re, Values& im);

}  // namespace kfpg::gen
