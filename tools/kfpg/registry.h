// The families that kfpg checks and benchmarks. A family registers itself
// from its own file in families/ with a static initialiser:
//   static const bool registered = kfpg::tool::addFamily({...});
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "reference.h"
#include "timing.h"

namespace kfpg::tool {

struct CheckSummary {
    int kernels = 0;          // kernels run
    double worstError = 0;    // worst relative L2 error against the reference
    double bound = 0;         // the error a kernel may reach
    std::vector<std::string> failures;  // kernels over the bound, or with a wrong status
};

// Accuracy columns are the root mean square of the relative L2 error over
// this many random inputs: one input alone varies by a third at small sizes,
// and with 16 inputs the ratio of two kernels' columns still moved by 10-20%
// from one set of inputs to another; with 1024 it settles within about 2%.
constexpr unsigned kAccuracyInputs = 1024;

// Root mean square of errorOfInput(i) over the inputs i = 0 .. kAccuracyInputs - 1.
template <class F>
double rmsOverInputs(F errorOfInput) {
    double squares = 0;
    for (unsigned i = 0; i < kAccuracyInputs; ++i) squares += std::pow(errorOfInput(i), 2);
    return std::sqrt(squares / kAccuracyInputs);
}

// The note of a real DFT row: the Pack and Perm kernels' times as ratios to CCS.
inline std::string packPermNote(double ccsNs, double packNs, double permNs) {
    char note[64];
    std::snprintf(note, sizeof note, "Pack %.2f Perm %.2f (x CCS)", packNs / ccsNs, permNs / ccsNs);
    return note;
}

// n random reals (from the reference's generator) in precision T.
template <class T>
std::vector<T> randomSignal(int n, unsigned seed) {
    const auto r = kfpg::ref::randomReals(static_cast<std::size_t>(n), seed);
    return std::vector<T>(r.begin(), r.end());
}

// A value for a note: three significant digits ("1.23e-16").
inline std::string shortNumber(double v) {
    char text[32];
    std::snprintf(text, sizeof text, "%.3g", v);
    return text;
}

struct BenchRow {
    std::string label;        // e.g. "N=12 fwd"
    double oursNs = NAN;      // median ns per call
    double peerNs = NAN;      // the peer's median ns per call, NaN when there is none
    double oursError = NAN;   // optional accuracy columns (relative L2, see above)
    double peerError = NAN;
    std::string note;         // optional text printed after the columns
    std::string peerVector;   // the widest vector code in FFTW's plan ("sse2", "avx", ...), if the peer is FFTW
};

// One array of a kernel, for the placement sweep.
struct SweepArray {
    std::size_t bytes;
    // Misaligned placements move the source and the destination this many
    // bytes off a 16-byte boundary (0: no misaligned placements). Further
    // arrays always stay 16-byte aligned.
    std::size_t misalignBy;
};

// The arrays of one placement, as many copies as the sweep times together.
using PlacedCopies = std::vector<std::vector<unsigned char*>>;

// A kernel that `kfpg sweep` times at many placements of its arrays
// relative to one another.
struct SweepKernel {
    std::string label;               // e.g. "order 13"
    std::vector<SweepArray> arrays;  // source, destination, then any others (work buffer, plan block)
    // Sets the kernel up on every copy of the arrays (the destination equals
    // the source in place) and returns a body made with onEveryCopy.
    // Timings are divided by the number of copies.
    std::function<bench::Body(const PlacedCopies& copies)> body;
};

// A body whose one call runs `call(setup)` for every copy's setup in turn:
// copies at the same placement keep an in-place call from waiting for the
// stores of the call before it.
template <class Setup, class Call>
bench::Body onEveryCopy(std::vector<Setup> setups, Call call) {
    return [setups, call](long calls) {
        for (long i = 0; i < calls; ++i)
            for (const Setup& s : setups) call(s);
        bench::keep(setups);
    };
}

struct Family {
    std::string name;         // "cdft", "wht", ...
    std::string precision;    // "32fc", "64f", ...
    std::string peer;         // what the peer column is, e.g. "FFTW (patient)"
    std::function<CheckSummary()> check;
    std::function<std::vector<BenchRow>()> bench;
    std::function<std::vector<SweepKernel>()> sweep;  // optional
};

bool addFamily(Family family);
const std::vector<Family>& families();

}  // namespace kfpg::tool
