#include "dft_table.h"

#include <stdexcept>

namespace kfpg::gen {

namespace {

constexpr DftAlgorithm B = DftAlgorithm::Butterfly;
constexpr DftAlgorithm D = DftAlgorithm::Direct;
constexpr DftAlgorithm R = DftAlgorithm::Rader;
constexpr DftAlgorithm CT = DftAlgorithm::CooleyTukey;
constexpr DftAlgorithm PF = DftAlgorithm::PrimeFactor;

// n, kernel algorithm, n1 x n2, algorithm as a block of a larger length.
const DftRow kRows[] = {
    {2, B, 0, 0, B},     {3, D, 0, 0, D},     {4, B, 0, 0, B},     {5, D, 0, 0, D},     {6, PF, 2, 3, PF},
    {7, R, 0, 0, D},     {8, CT, 2, 4, CT},   {9, CT, 3, 3, CT},   {10, PF, 2, 5, PF},  {11, R, 0, 0, D},
    {12, PF, 4, 3, PF},  {13, R, 0, 0, R},    {14, PF, 2, 7, PF},  {15, PF, 3, 5, PF},  {16, CT, 4, 4, CT},
    {17, R, 0, 0, R},    {18, PF, 2, 9, PF},  {19, R, 0, 0, R},    {20, PF, 4, 5, PF},  {21, PF, 3, 7, PF},
    {22, PF, 2, 11, PF}, {23, R, 0, 0, R},    {24, CT, 4, 6, CT},  {25, CT, 5, 5, CT},  {26, PF, 2, 13, PF},
    {27, CT, 3, 9, CT},  {28, PF, 4, 7, PF},  {29, R, 0, 0, R},    {30, PF, 2, 15, PF}, {31, R, 0, 0, R},
    {32, CT, 4, 8, CT},  {33, PF, 3, 11, PF}, {34, PF, 2, 17, PF}, {35, PF, 5, 7, PF},  {36, PF, 4, 9, PF},
    {37, R, 0, 0, R},    {38, PF, 2, 19, PF}, {39, PF, 3, 13, PF}, {40, CT, 4, 10, CT},  {41, R, 0, 0, R},
    {42, PF, 2, 21, PF}, {43, R, 0, 0, R},    {44, PF, 4, 11, PF}, {45, CT, 9, 5, CT},  {46, PF, 2, 23, PF},
    {47, D, 0, 0, D},    {48, CT, 4, 12, CT}, {49, CT, 7, 7, CT},  {50, PF, 2, 25, PF}, {51, PF, 3, 17, PF},
    {52, PF, 4, 13, PF}, {53, R, 0, 0, R},    {54, PF, 2, 27, PF}, {55, PF, 5, 11, PF}, {56, CT, 4, 14, CT},
    {57, PF, 3, 19, PF}, {58, PF, 2, 29, PF}, {59, D, 0, 0, D},    {60, PF, 4, 15, PF}, {61, R, 0, 0, R},
    {62, PF, 2, 31, PF}, {63, PF, 7, 9, PF},  {64, CT, 4, 16, CT},
};

}  // namespace

const DftRow& dftRow(int n) {
    if (n < 2 || n > 64) throw std::out_of_range("no DFT table row for this length");
    return kRows[n - 2];
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
