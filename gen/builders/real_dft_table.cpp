#include "real_dft_table.h"

#include <stdexcept>

namespace kfpg::gen {

namespace {

constexpr RealMethod B = RealMethod::Butterfly;
constexpr RealMethod D = RealMethod::Direct;
constexpr RealMethod C = RealMethod::Convolution;
constexpr RealMethod CT = RealMethod::CooleyTukey;
constexpr RealMethod PF = RealMethod::PrimeFactor;

// The primes are direct sums: there the fast convolution's extra shuffles
// cost more time than its fewer multiplications save (measured; 31 direct
// 13-53% faster than its convolution, but for the double-precision inverse,
// alike; 61 up to 18% faster in single precision and 4-11% slower in
// double), and the direct sums are more accurate (the convolutions of 31
// and 61 had 9-16% more error than FFTW's in double precision). Only as the
// single-precision columns of 62 is 31 a convolution (RowUse::block): the
// two columns share vectors and then gain from the fewer multiplications.
// In double precision 62's direct columns are 20-25% slower but have 10-15%
// less error than FFTW's, where the convolutions had 2-8% more.
// 9 is direct, not 3 x 3: in single precision each twiddle of the 3 x 3
// steps widens, multiplies and rounds again (24-33% slower), and in double
// precision the steps had 1-3% more error than FFTW's at 9 and 27, the
// direct sums 3-25% less at every length made with 9 (and up to 12% more
// time at 9, 27, 36 and 54).
// The columns (first stage, real data) mostly take the larger factor and the
// rows (second stage, complex data but for row 0 and the Nyquist row) the
// smaller one, so that only small complex transforms are needed. Where the
// smaller factor is 5 or 7 and the larger one 6, 7 or 8 (30, 35, 40, 42, 56),
// the small factor makes the columns: fewer rows of the larger complex
// transform measured 5-20% faster in all three real-data families (45 and 63
// would gain too, but their complex 9-point rows take more multiplications
// than two real ones). The
// powers of two split off four columns (64: the four interleaved parts
// x[4m + r]), which leaves only 45-degree and real twiddles in the Nyquist row.
const RealRow kRows[] = {
    {2, B, 0, 0},     {3, D, 0, 0},     {4, B, 0, 0},     {5, D, 0, 0},     {6, PF, 3, 2},    {7, D, 0, 0},
    {8, CT, 2, 4},    {9, D, 0, 0},     {10, PF, 5, 2},   {11, D, 0, 0},    {12, PF, 4, 3},   {13, D, 0, 0},
    {14, PF, 7, 2},   {15, PF, 5, 3},   {16, CT, 4, 4},   {17, D, 0, 0},    {18, PF, 9, 2},   {19, D, 0, 0},
    {20, PF, 5, 4},   {21, PF, 7, 3},   {22, PF, 11, 2},  {23, D, 0, 0},    {24, PF, 8, 3},   {25, CT, 5, 5},
    {26, PF, 13, 2},  {27, CT, 9, 3},   {28, PF, 7, 4},   {29, D, 0, 0},    {30, PF, 5, 6},  {31, D, 0, 0},
    {32, CT, 8, 4},   {33, PF, 11, 3},  {34, PF, 17, 2},  {35, PF, 5, 7},   {36, PF, 9, 4},   {37, D, 0, 0},
    {38, PF, 19, 2},  {39, PF, 13, 3},  {40, PF, 5, 8},   {41, D, 0, 0},    {42, PF, 7, 6},  {43, D, 0, 0},
    {44, PF, 11, 4},  {45, PF, 9, 5},   {46, PF, 23, 2},  {47, D, 0, 0},    {48, PF, 16, 3},  {49, CT, 7, 7},
    {50, PF, 25, 2},  {51, PF, 17, 3},  {52, PF, 13, 4},  {53, D, 0, 0},    {54, PF, 27, 2},  {55, PF, 11, 5},
    {56, PF, 7, 8},   {57, PF, 19, 3},  {58, PF, 29, 2},  {59, D, 0, 0},    {60, PF, 15, 4},  {61, D, 0, 0},
    {62, PF, 31, 2},  {63, PF, 9, 7},   {64, CT, 16, 4},
};

}  // namespace

const RealRow& realRow(int n) {
    if (n < 2 || n > 64) throw std::out_of_range("no real-transform table row for this length");
    const RealRow& row = kRows[n - 2];
    if (row.n != n) throw std::logic_error("real-transform table out of order");
    return row;
}

const RealRow& rowFor(int n, const RowUse& use) {
    static const RealRow kEightTransposed{8, CT, 4, 2}, kThirtyOneBlock{31, C, 0, 0};
    if (use.forTransposition && n == 8) return kEightTransposed;
    if (use.block && use.singlePrecision && n == 31) return kThirtyOneBlock;
    return realRow(n);
}

bool builtForAccuracy(int n, const RowUse& use) {
    return !use.singlePrecision && (n == 7 || n == 11 || (n == 14 && use.forTransposition));
}

bool factorsMaySwap(const RealRow& row) { return row.method == RealMethod::PrimeFactor && row.n > 12; }

RealRow swappedFactors(const RealRow& row) { return {row.n, row.method, row.n2, row.n1}; }

namespace {

// A two-stage row whose blocks, at every depth, are butterflies,
// convolutions or direct sums of at most nine points.
bool twoStageWithShortBlocks(const RealRow& row) {
    if (row.method != RealMethod::CooleyTukey && row.method != RealMethod::PrimeFactor) return false;
    auto shortBlock = [](int size) {
        const RealRow& b = rowFor(size, {.singlePrecision = true, .block = true});
        return b.method == RealMethod::Direct ? size <= 9 : b.method == RealMethod::Butterfly || b.method == RealMethod::Convolution || twoStageWithShortBlocks(b);
    };
    return shortBlock(row.n1) && shortBlock(row.n2);
}

}  // namespace

bool onlyShortDirectBlocks(int n) { return twoStageWithShortBlocks(rowFor(n, {.singlePrecision = true})); }

const char* realMethodName(RealMethod m) {
    switch (m) {
        case RealMethod::Butterfly: return "butterfly";
        case RealMethod::Direct: return "direct";
        case RealMethod::Convolution: return "convolution";
        case RealMethod::CooleyTukey: return "cooley-tukey";
        case RealMethod::PrimeFactor: return "prime-factor";
    }
    return "?";
}

std::string realAlgorithmText(const RealRow& row) {
    std::string text = realMethodName(row.method);
    if (row.n1) text += " " + std::to_string(row.n1) + "x" + std::to_string(row.n2);
    return text;
}

}  // namespace kfpg::gen
