// The per-length algorithm table of the real-data transforms (real DFT, its
// inverse by transposition, Hartley): which method each length uses and, for
// the two-stage methods, its column and row sizes. The builders read nothing else.
#pragma once

#include <string>

namespace kfpg::gen {

enum class RealMethod {
    Butterfly,    // 2 and 4: sums and differences only
    Direct,       // odd: symmetric pairs, every output a direct sum
    Convolution,  // odd prime: symmetric pairs reordered by a primitive root into a
                  // cyclic (cosine) and a negacyclic (sine) fast convolution
    CooleyTukey,  // n1 x n2 with twiddles between the stages
    PrimeFactor,  // n1 x n2 coprime, index maps and no twiddles
};

struct RealRow {
    int n;
    RealMethod method;
    int n1;  // two-stage methods: size of the first-stage transforms (the columns, on real data)
    int n2;  // and of the second-stage transforms (the rows), n = n1 * n2
};

// Rows for n = 2..64.
const RealRow& realRow(int n);

// How a builder takes a length.
struct RowUse {
    // Single-precision kernels.
    bool singlePrecision = false;
    // A DFT built to be transposed (the inverse real DFT): 8 splits 4 x 2
    // (decimation in time). Its transpose multiplies (R_1 - R_3) and
    // (I_1 + I_3) by cos(pi/4) before the last butterflies; the transpose
    // of the 2 x 4 split would multiply their sum and difference instead.
    // Both take two multiplications.
    bool forTransposition = false;
    // A block (a column or row transform) of a larger length: 31 is a
    // convolution there in single precision.
    bool block = false;
};

// realRow(n), or the row that `use` changes it to.
const RealRow& rowFor(int n, const RowUse& use);

// Whether a kernel is built for the least rounding error rather than for
// the fewest instructions: the double-precision 7 and 11, and the inverse
// of 14, whose fastest forms had 1-5% more error than FFTW's. Such a kernel
// forms its direct sums as two chains of half the terms each, then adds
// them (shorter chains round less; as many additions); a transposed one
// (the inverse) forms every sum of three or more contributions that way.
// And it keeps its table's factor order (the inverse 14 as 2 x 7 had 2%
// more error than FFTW's).
bool builtForAccuracy(int n, const RowUse& use);

// Whether a length's two factors may also be taken the other way round
// (columns of n2, rows of n1): the prime-factor lengths above 12, whose
// factor order is free (the shorter ones are written out operation by
// operation). The families build both orders and keep the one that emits
// fewer instructions, as long as it takes as many multiplications.
bool factorsMaySwap(const RealRow& row);
RealRow swappedFactors(const RealRow& row);

// Whether n is a two-stage length whose blocks, at every depth, are no
// direct sums of more than nine points (as single-precision kernels take
// them: 31 is a convolution as a block).
bool onlyShortDirectBlocks(int n);

const char* realMethodName(RealMethod m);

// The method with its column x row sizes, e.g. "prime-factor 5x3", for the op tables.
std::string realAlgorithmText(const RealRow& row);

}  // namespace kfpg::gen
