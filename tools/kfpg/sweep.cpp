#include "sweep.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "placement.h"
#include "registry.h"
#include "results.h"

namespace kfpg::tool {

namespace {

// The fastest and slowest placement of one kernel, and the best time of
// each alignment class.
struct Spread {
    std::size_t fastest = 0, slowest = 0;
    double bestAligned = INFINITY, bestMisaligned = INFINITY;
    double ratio(const std::vector<double>& ns) const { return ns[slowest] / ns[fastest]; }
};

Spread spreadOf(const std::vector<Placement>& placements, const std::vector<double>& ns) {
    Spread s;
    for (std::size_t i = 0; i < ns.size(); ++i) {
        if (ns[i] < ns[s.fastest]) s.fastest = i;
        if (ns[i] > ns[s.slowest]) s.slowest = i;
        double& best = placements[i].misaligned ? s.bestMisaligned : s.bestAligned;
        best = std::min(best, ns[i]);
    }
    return s;
}

// Kernels whose arrays fit in this many bytes are timed on four copies of
// each placement; larger ones take longer than a store takes to retire.
constexpr std::size_t kSmallKernelBytes = 8192;

// Each copy moves all its arrays this many bytes further into the page: the
// placement within a copy stays, and one copy's arrays sit 640 bytes from
// the next copy's, away from the offsets of the spread.
constexpr std::size_t kCopyShift = 640;

Placement shifted(Placement p, int copy) {
    for (std::size_t& offset : p.offsets) offset = (offset + copy * kCopyShift) % 4096;
    return p;
}

// Measurement passes at most, and the spread above which another follows.
constexpr int kPasses = 3;
constexpr double kRemeasureAbove = 1.1;

int copiesFor(const SweepKernel& k) {
    std::size_t bytes = 0;
    for (const SweepArray& a : k.arrays) bytes += a.bytes;
    return bytes <= kSmallKernelBytes ? 4 : 1;
}

}  // namespace

int runSweep(const std::vector<std::string>& names, const std::string& folder) {
    CsvFile csv(folder + "/sweep.csv",
                {"family", "precision", "case", "placement", "in_place", "misaligned", "ns"});
    for (const Family& f : families()) {
        if (!f.sweep || !(names.empty() || std::find(names.begin(), names.end(), f.name) != names.end())) continue;
        std::printf("\n%s %s  (ns per call at each placement, fastest of interleaved rounds; ratio = slowest / fastest)\n",
                    f.name.c_str(), f.precision.c_str());
        std::printf("%-12s %9s  %-32s %9s  %-32s %6s %9s\n", "case", "fastest", "at", "slowest", "at", "ratio",
                    "mis/alig");
        double worst = 0, worstMis = 0;
        std::string worstLabel, worstMisLabel;
        for (const SweepKernel& k : f.sweep()) {
            const auto placements = placementsFor(k.arrays);
            // A spread measured once may be a passing disturbance, or come from
            // the physical pages under the arrays (the L2 and the way
            // predictors see those); a placement's own cost shows again on
            // fresh pages. So a kernel with a spread is measured again on newly
            // allocated arrays, and each placement keeps its fastest time.
            const int copies = copiesFor(k);
            std::vector<double> ns(placements.size(), INFINITY);
            std::vector<PlacedArrays> held;
            for (int pass = 0; pass < kPasses && (pass == 0 || spreadOf(placements, ns).ratio(ns) > kRemeasureAbove);
                 ++pass) {
                std::vector<PlacedArrays> memory;  // allocated while the last pass's memory is still held
                std::vector<bench::Body> bodies;
                for (const Placement& p : placements) {
                    PlacedCopies at;
                    for (int c = 0; c < copies; ++c) {
                        memory.emplace_back(k.arrays, shifted(p, c));
                        at.push_back(memory.back().at());
                    }
                    bodies.push_back(k.body(at));
                }
                const auto again = bench::interleavedFastest(bodies);
                for (std::size_t i = 0; i < ns.size(); ++i) ns[i] = std::min(ns[i], again[i] / copies);
                held = std::move(memory);
            }
            const Spread s = spreadOf(placements, ns);
            const double misaligned = s.bestMisaligned / s.bestAligned;
            std::printf("%-12s %9.2f  %-32s %9.2f  %-32s %6.2f", k.label.c_str(), ns[s.fastest],
                        placements[s.fastest].label.c_str(), ns[s.slowest], placements[s.slowest].label.c_str(),
                        s.ratio(ns));
            if (std::isfinite(misaligned)) std::printf(" %9.2f", misaligned);
            std::printf("\n");
            if (s.ratio(ns) > worst) worst = s.ratio(ns), worstLabel = k.label;
            if (std::isfinite(misaligned) && misaligned > worstMis) worstMis = misaligned, worstMisLabel = k.label;
            for (std::size_t i = 0; i < placements.size(); ++i)
                csv.row({f.name, f.precision, k.label, placements[i].label, placements[i].inPlace ? "1" : "0",
                         placements[i].misaligned ? "1" : "0", csvNumber(ns[i])});
        }
        std::printf("largest slowest/fastest %.2f at %s", worst, worstLabel.c_str());
        if (worstMis > 0) std::printf("; largest misaligned/aligned %.2f at %s", worstMis, worstMisLabel.c_str());
        std::printf("\n");
    }
    std::printf("\nsweep results: %s/sweep.csv\n", folder.c_str());
    return csv.ok() ? 0 : 1;
}

}  // namespace kfpg::tool
