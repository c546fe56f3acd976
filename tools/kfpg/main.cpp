// kfpg: `kfpg check [family...]` runs every kernel against the long-double
// reference; `kfpg bench [--out DIR] [family...]` times kernels next to their
// peer and writes the table also to DIR/bench.csv; `kfpg sweep [--out DIR]
// [family...]` times kernels at many placements of their arrays (sweep.h).
// Without --out, DIR is a new folder under results/.
#include <sched.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "kfpgen.h"
#include "registry.h"
#include "results.h"
#include "sweep.h"

namespace {

using kfpg::tool::Family;

bool selected(const Family& f, const std::vector<std::string>& names) {
    return names.empty() || std::find(names.begin(), names.end(), f.name) != names.end();
}

int runCheck(const std::vector<std::string>& names) {
    std::printf("%-6s %-6s %8s %12s %12s  %s\n", "family", "type", "kernels", "worst err", "bound", "result");
    int failed = 0;
    for (const Family& f : kfpg::tool::families()) {
        if (!selected(f, names) || !f.check) continue;
        const auto s = f.check();
        const bool ok = s.failures.empty() && s.kernels > 0;
        failed += !ok;
        std::printf("%-6s %-6s %8d %12.3g %12.3g  %s\n", f.name.c_str(), f.precision.c_str(), s.kernels, s.worstError,
                    s.bound, ok ? "pass" : "FAIL");
        for (std::size_t i = 0; i < s.failures.size() && i < 20; ++i) std::printf("    %s\n", s.failures[i].c_str());
    }
    std::printf("%s\n", failed ? "check FAILED" : "check passed");
    return failed ? 1 : 0;
}

void pinToOneCore() {
    cpu_set_t set;
    CPU_ZERO(&set);
    const int cpu = sched_getcpu();
    CPU_SET(cpu < 0 ? 0 : cpu, &set);
    sched_setaffinity(0, sizeof set, &set);
}

// The peer's vector level: BenchRow::peerVector, or else a note of the
// form "FFTW <level>".
std::string peerVectorOf(const kfpg::tool::BenchRow& row) {
    if (!row.peerVector.empty()) return row.peerVector;
    const std::string prefix = "FFTW ";
    const bool named = row.note.compare(0, prefix.size(), prefix) == 0 && row.note.find(' ', prefix.size()) == std::string::npos;
    return named ? row.note.substr(prefix.size()) : std::string();
}

int runBench(const std::vector<std::string>& names, const std::string& folder) {
    using kfpg::tool::csvNumber;
    kfpg::tool::CsvFile csv(folder + "/bench.csv", {"family", "precision", "case", "peer", "ours_ns", "peer_ns", "ratio",
                                                     "ours_error", "peer_error", "peer_vector", "note"});
    for (const Family& f : kfpg::tool::families()) {
        if (!selected(f, names) || !f.bench) continue;
        std::printf("\n%s %s  (ns per call, median of interleaved rounds; ratio = %s / ours)\n", f.name.c_str(),
                    f.precision.c_str(), f.peer.c_str());
        std::printf("%-18s %10s %10s %8s %12s %12s\n", "case", "ours", "peer", "ratio", "err ours", "err peer");
        double logSum = 0;
        int counted = 0;
        double worst = INFINITY;
        std::string worstLabel;
        for (const auto& row : f.bench()) {
            const double ratio = row.peerNs / row.oursNs;
            const std::string note = row.peerVector.empty() ? row.note : "FFTW " + row.peerVector + (row.note.empty() ? "" : "  " + row.note);
            std::printf("%-18s %10.2f %10.2f %8.2f %12.3g %12.3g  %s\n", row.label.c_str(), row.oursNs, row.peerNs,
                        ratio, row.oursError, row.peerError, note.c_str());
            csv.row({f.name, f.precision, row.label, f.peer, csvNumber(row.oursNs), csvNumber(row.peerNs),
                     csvNumber(ratio), csvNumber(row.oursError), csvNumber(row.peerError), peerVectorOf(row), row.note});
            if (std::isfinite(ratio) && ratio > 0) {
                logSum += std::log(ratio);
                ++counted;
                if (ratio < worst) worst = ratio, worstLabel = row.label;
            }
        }
        if (counted)
            std::printf("geometric mean ratio %.2f over %d cases; lowest %.2f at %s\n", std::exp(logSum / counted),
                        counted, worst, worstLabel.c_str());
        else
            std::printf("no peer timings (peer not available in this build)\n");
    }
    std::printf("\nbench results: %s/bench.csv\n", folder.c_str());
    return csv.ok() ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    const std::string command = argc > 1 ? argv[1] : "";
    std::vector<std::string> names;
    std::string out;
    for (int i = 2; i < argc; ++i) {
        if (std::strcmp(argv[i], "--out") == 0 && i + 1 < argc)
            out = argv[++i];
        else
            names.push_back(argv[i]);
    }
    std::printf("%s %s (%s)\n", kfpgenGetLibVersion()->name, kfpgenGetLibVersion()->version,
#ifdef KFPG_HAVE_FFTW
                "FFTW peer built in"
#else
                "FFTW not found at build time: no peer column"
#endif
    );
    if (command == "check") return runCheck(names);
    if (command == "bench" || command == "sweep") {
        const std::string folder = kfpg::tool::makeResultsFolder(out, command);
        if (folder.empty()) {
            std::fprintf(stderr, "kfpg: cannot create the results folder %s\n", out.c_str());
            return 1;
        }
        pinToOneCore();
        return command == "bench" ? runBench(names, folder) : kfpg::tool::runSweep(names, folder);
    }
    std::fprintf(stderr, "usage: kfpg check [family...] | bench|sweep [--out DIR] [family...]\n");
    return 2;
}
