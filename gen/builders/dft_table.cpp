#include "dft_table.h"

#include <stdexcept>

namespace kfpg::gen {

namespace {

constexpr DftAlgorithm B = DftAlgorithm::Butterfly;
constexpr DftAlgorithm D = DftAlgorithm::Direct;
constexpr DftAlgorithm R = DftAlgorithm::Rader;
constexpr DftAlgorithm CT = DftAlgorithm::CooleyTukey;
constexpr DftAlgorithm PF = DftAlgorithm::PrimeFactor;

// n, kernel algorithm, n1 x n2 in two-lane code, n1 in one-lane code (n2 =
// n / n1), algorithm as a block of a larger length. One-lane (64fc) code is
// faster with the larger factor first at many lengths (measured; for 6 and 10
// it pays inside Rader 7 and 11 and in 40); two-lane (32fc) code keeps the
// order that pairs its columns.
const DftRow kRows[] = {
    {2, B, 0, 0, 0, B},      {3, D, 0, 0, 0, D},      {4, B, 0, 0, 0, B},      {5, D, 0, 0, 0, D},
    {6, PF, 2, 3, 3, PF},    {7, R, 0, 0, 0, D},      {8, CT, 2, 4, 2, CT},    {9, CT, 3, 3, 3, CT},
    {10, PF, 2, 5, 5, PF},   {11, R, 0, 0, 0, D},     {12, PF, 4, 3, 4, PF},   {13, R, 0, 0, 0, R},
    {14, PF, 2, 7, 2, PF},   {15, PF, 3, 5, 3, PF},   {16, CT, 4, 4, 4, CT},   {17, R, 0, 0, 0, R},
    {18, PF, 2, 9, 2, PF},   {19, R, 0, 0, 0, R},     {20, PF, 4, 5, 5, PF},   {21, PF, 3, 7, 7, PF},
    {22, PF, 2, 11, 11, PF}, {23, R, 0, 0, 0, R},     {24, CT, 4, 6, 4, CT},   {25, CT, 5, 5, 5, CT},
    {26, PF, 2, 13, 2, PF},  {27, CT, 3, 9, 3, CT},   {28, PF, 4, 7, 7, PF},   {29, R, 0, 0, 0, R},
    {30, PF, 2, 15, 5, PF},  {31, R, 0, 0, 0, R},     {32, CT, 4, 8, 4, CT},   {33, PF, 3, 11, 11, PF},
    {34, PF, 2, 17, 2, PF},  {35, PF, 5, 7, 5, PF},   {36, PF, 4, 9, 9, PF},   {37, R, 0, 0, 0, R},
    {38, PF, 2, 19, 2, PF},  {39, PF, 3, 13, 3, PF},  {40, CT, 4, 10, 4, CT},  {41, R, 0, 0, 0, R},
    {42, PF, 2, 21, 7, PF},  {43, R, 0, 0, 0, R},     {44, PF, 4, 11, 11, PF}, {45, CT, 9, 5, 5, CT},
    {46, PF, 2, 23, 2, PF},  {47, D, 0, 0, 0, D},     {48, CT, 4, 12, 4, CT},  {49, CT, 7, 7, 7, CT},
    {50, PF, 2, 25, 2, PF},  {51, PF, 3, 17, 3, PF},  {52, PF, 4, 13, 4, PF},  {53, R, 0, 0, 0, R},
    {54, PF, 2, 27, 27, PF}, {55, PF, 5, 11, 11, PF}, {56, CT, 4, 14, 4, CT},  {57, PF, 3, 19, 3, PF},
    {58, PF, 2, 29, 2, PF},  {59, D, 0, 0, 0, D},     {60, PF, 4, 15, 5, PF},  {61, R, 0, 0, 0, R},
    {62, PF, 2, 31, 2, PF},  {63, PF, 7, 9, 7, PF},   {64, CT, 4, 16, 4, CT},
};

}  // namespace

const DftRow& dftRow(int n) {
    if (n < 2 || n > 64) throw std::out_of_range("no DFT table row for this length");
    return kRows[n - 2];
}

std::pair<int, int> dftFactors(const DftRow& row, int lanes) {
    if (lanes > 1 || !row.n1) return {row.n1, row.n2};
    return {row.n1OneLane, row.n / row.n1OneLane};
}

const char* algorithmName(DftAlgorithm a) {
    switch (a) {
        case DftAlgorithm::Butterfly: return "butterfly";
        case DftAlgorithm::Direct: return "direct";
        case DftAlgorithm::Rader: return "rader";
        case DftAlgorithm::CooleyTukey: return "cooley-tukey";
        case DftAlgorithm::PrimeFactor: return "prime-factor";
    }
    return "?";
}

long powMod(long base, long exp, long mod) {
    long r = 1;
    for (base %= mod; exp > 0; exp >>= 1, base = base * base % mod)
        if (exp & 1) r = r * base % mod;
    return r;
}

long inverseMod(long a, long mod) {
    for (long x = 1; x < mod; ++x)
        if (a * x % mod == 1) return x;
    throw std::logic_error("no inverse");
}

int primitiveRoot(int p) {
    for (int g = 2; g < p; ++g) {
        long v = 1;
        int order = 0;
        do {
            v = v * g % p;
            ++order;
        } while (v != 1);
        if (order == p - 1) return g;
    }
    return 1;  // p = 2
}

}  // namespace kfpg::gen
