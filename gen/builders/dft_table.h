// The per-length algorithm table of the complex DFT: which algorithm each
// length uses, in which factor order, as a kernel of its own and as a block
// inside a larger length. The builders read nothing else.
#pragma once

#include <utility>

namespace kfpg::gen {

enum class DftAlgorithm { Butterfly, Direct, Rader, CooleyTukey, PrimeFactor };

struct DftRow {
    int n;
    DftAlgorithm kernel;   // as a stand-alone kernel
    int n1, n2;            // composite lengths: first-stage size n1, second-stage size n2 (two-lane code)
    int n1OneLane;         // first-stage size in one-lane code (one complex value per vector)
    DftAlgorithm asBlock;  // inside a composite length (the 7- and 11-point blocks are direct)
};

// Rows for n = 2..64.
const DftRow& dftRow(int n);

// First- and second-stage sizes of a composite row in a DAG of `lanes` lanes.
std::pair<int, int> dftFactors(const DftRow& row, int lanes);

const char* algorithmName(DftAlgorithm a);

// Smallest primitive root modulo the prime p.
int primitiveRoot(int p);

// Modular arithmetic of the index maps: base^exp mod m, and the inverse of a mod m.
long powMod(long base, long exp, long mod);
long inverseMod(long a, long mod);

}  // namespace kfpg::gen
