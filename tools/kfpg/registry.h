// The families that kfpg checks and benchmarks. A family registers itself
// from its own file in families/ with a static initialiser:
//   static const bool registered = kfpg::tool::addFamily({...});
#pragma once

#include <cmath>
#include <functional>
#include <string>
#include <vector>

namespace kfpg::tool {

struct CheckSummary {
    int kernels = 0;          // kernels run
    double worstError = 0;    // worst relative L2 error against the reference
    double bound = 0;         // the error a kernel may reach
    std::vector<std::string> failures;  // kernels over the bound, or with a wrong status
};

// Accuracy columns are the root mean square of the relative L2 error over
// this many random inputs: one input alone varies by a third at small sizes.
constexpr unsigned kAccuracyInputs = 16;

struct BenchRow {
    std::string label;        // e.g. "N=12 fwd"
    double oursNs = NAN;      // median ns per call
    double peerNs = NAN;      // the peer's median ns per call, NaN when there is none
    double oursError = NAN;   // optional accuracy columns (relative L2, see above)
    double peerError = NAN;
    std::string note;         // optional text printed after the columns
};

struct Family {
    std::string name;         // "cdft", "wht", ...
    std::string precision;    // "32fc", "64f", ...
    std::string peer;         // what the peer column is, e.g. "FFTW (patient)"
    std::function<CheckSummary()> check;
    std::function<std::vector<BenchRow>()> bench;
};

bool addFamily(Family family);
const std::vector<Family>& families();

}  // namespace kfpg::tool
