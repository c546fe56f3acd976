// The Hartley transform family: kernels of lengths 2..64 in 32f and 64f, one
// DAG per length and precision, checked against a naive long-double DHT
// before it is emitted.
#include <cmath>
#include <cstdio>
#include <random>
#include <stdexcept>
#include <string>

#include "builders/hartley.h"
#include "builders/real_dft_table.h"
#include "emit.h"
#include "evaluate.h"
#include "family.h"
#include "real_kernel.h"

namespace kfpg::gen {

namespace {

std::string kernelName(int n, Precision p) {
    return "kfpgHartley_" + std::to_string(n) + (p == Precision::F32 ? "_32f" : "_64f");
}

RealDftOptions builderOptions(Precision p, bool swapFactors) {
    RealDftOptions options = hartleyOptions(p == Precision::F32);
    options.swapFactors = swapFactors;
    return options;
}

Dag buildKernelDag(int n, Precision p, bool swapFactors) {
    Dag dag(ValueKind::Real, 1, Signs::Separate);
    std::vector<NodeId> x;
    for (int i = 0; i < n; ++i) x.push_back(dag.input(i));
    const std::vector<NodeId> h = buildHartley(dag, x, builderOptions(p, swapFactors));
    for (int k = 0; k < n; ++k) dag.output(k, h[k]);
    return dag;
}

// H[k] = sum x[j] (cos + sin)(2 pi jk/n), angles reduced exactly.
std::vector<Real> naiveHartley(const std::vector<Complex>& x) {
    const long n = static_cast<long>(x.size());
    std::vector<Real> h(n);
    for (long k = 0; k < n; ++k)
        for (long j = 0; j < n; ++j) {
            const Complex w = unitRoot(j * k, n, 1);
            h[k] += x[j].real() * (w.real() + w.imag());
        }
    return h;
}

// Refuses a DAG that does not compute the DHT (long-double evaluation).
void checkAgainstNaiveHartley(const Dag& dag, int n, Precision p) {
    std::mt19937 rng(3000u + static_cast<unsigned>(n));
    std::uniform_real_distribution<double> u(-1, 1);
    for (int trial = 0; trial < 3; ++trial) {
        std::vector<Complex> x(n);
        for (Complex& v : x) v = u(rng);
        const std::vector<Real> want = naiveHartley(x);
        const std::vector<Complex> got = evaluate(dag, x, n);
        Real err = 0, norm = 0;
        for (int k = 0; k < n; ++k) {
            err += std::pow(got[k].real() - want[k], 2);
            norm += want[k] * want[k];
        }
        if (!(std::sqrt(err / norm) < 1e-15L))
            throw std::runtime_error("DAG of " + kernelName(n, p) + " disagrees with the naive DHT");
    }
}

std::string tableLine(int n, Precision p, bool swapFactors, const FlopCount& f, const OpCounts& c) {
    const std::string algo = realAlgorithmText(realRowBuilt(n, builderOptions(p, swapFactors)));
    char line[256];
    std::snprintf(line, sizeof line, "%-22s %-18s %6ld %6ld %6ld  %6ld %6ld", kernelName(n, p).c_str(), algo.c_str(), f.adds,
                  f.muls, f.adds + f.muls, c.arithmetic, c.loads + c.stores);
    return line;
}

void generate(SourceSet& out) {
    out.setPreamble(kRealKernelPreamble);
    char header[256];
    std::snprintf(header, sizeof header, "%-22s %-18s %6s %6s %6s  %6s %6s", "kernel", "algorithm", "adds", "muls", "flops",
                  "arith", "ld/st");
    out.reportLine(header);
    for (Precision p : {Precision::F32, Precision::F64})
        for (int n = 2; n <= 64; ++n) {
            const OrderBuild chosen = bestFactorOrder(n, {.singlePrecision = p == Precision::F32}, [&](bool swap) {
                const Dag dag = buildKernelDag(n, p, swap);
                checkAgainstNaiveHartley(dag, n, p);
                return OrderBuild{swap, {emitRealKernelBody(dag, p)}, {countFlops(dag)}};
            });
            const EmitResult& body = chosen.bodies[0];
            out.add(realKernelFunction({kernelName(n, p), n, p, RealDirection::SelfInverse, body, ""}), body.counts.total());
            out.reportLine(tableLine(n, p, chosen.swap, chosen.flops[0], body.counts));
        }
}

const bool registered = registerFamily({"dht", generate});

}  // namespace

}  // namespace kfpg::gen
