// kfpg: `kfpg check [family...]` runs every kernel against the long-double
// reference; `kfpg bench [family...]` times kernels next to their peer.
#include <sched.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "kfpgen.h"
#include "registry.h"

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

int runBench(const std::vector<std::string>& names) {
    pinToOneCore();
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
            std::printf("%-18s %10.2f %10.2f %8.2f %12.3g %12.3g  %s\n", row.label.c_str(), row.oursNs, row.peerNs,
                        ratio, row.oursError, row.peerError, row.note.c_str());
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
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    const std::string command = argc > 1 ? argv[1] : "";
    const std::vector<std::string> names(argv + std::min(argc, 2), argv + argc);
    std::printf("%s %s (%s)\n", kfpgenGetLibVersion()->name, kfpgenGetLibVersion()->version,
#ifdef KFPG_HAVE_FFTW
                "FFTW peer built in"
#else
                "FFTW not found at build time: no peer column"
#endif
    );
    if (command == "check") return runCheck(names);
    if (command == "bench") return runBench(names);
    std::fprintf(stderr, "usage: kfpg check|bench [family...]\n");
    return 2;
}
