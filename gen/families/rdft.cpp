// The forward real DFT family: kernels of lengths 2..64 in 32f and 64f, each
// in the CCS, Pack and Perm layouts. One DAG per length and precision; the
// three layouts differ only in where each spectral value is stored.
#include <cmath>
#include <cstdio>
#include <random>
#include <stdexcept>
#include <string>

#include "builders/real_dft.h"
#include "builders/real_dft_table.h"
#include "emit.h"
#include "evaluate.h"
#include "family.h"
#include "real_kernel.h"
#include "real_layout.h"

namespace kfpg::gen {

namespace {

// Constant multiplications of the intended algorithms per length, 2..64 (the
// scale multiplications not included), printed next to ours.
const int kIntendedMultiplications[] = {
    0, 2, 0, 8, 4, 18, 2, 20, 16, 50, 8, 41, 36, 34, 12, 54,
    40, 108, 32, 68, 100, 242, 22, 112, 82, 110, 72, 210, 68, 192, 44, 172,
    108, 146, 80, 228, 216, 149, 74, 242, 136, 352, 200, 172, 484, 1058, 68, 324,
    224, 196, 164, 456, 220, 338, 158, 362, 420, 954, 136, 415, 384, 302, 132,
};

struct Kernel {
    int n;
    Precision precision;
    Layout layout;

    bool f32() const { return precision == Precision::F32; }
    std::string type() const { return f32() ? "32f" : "64f"; }
    std::string name() const {
        return std::string("kfpgDFTFwd_RTo") + layoutName(layout) + "_" + std::to_string(n) + "_" + type();
    }
    // Where R_k (part 0) and I_k (part 1) are stored.
    int element(int k, int part) const { return packedElement(layout, n, k, part); }
};

RealDftOptions builderOptions(const Kernel& k, bool swapFactors) {
    RealDftOptions options{k.f32(), k.f32()};
    options.swapFactors = swapFactors;
    return options;
}

// The half spectrum of n real inputs; outputs recorded in `kernel`'s layout.
Dag buildKernelDag(const Kernel& k, bool swapFactors) {
    Dag dag(ValueKind::Real, 1, Signs::Separate);
    std::vector<NodeId> x;
    for (int i = 0; i < k.n; ++i) x.push_back(dag.input(i));
    const HalfSpectrum X = buildRealDft(dag, x, builderOptions(k, swapFactors));
    for (int f = 0; f <= k.n / 2; ++f) {
        dag.output(k.element(f, 0), X.re[f]);
        if (hasImaginary(k.n, f)) dag.output(k.element(f, 1), X.im[f]);
    }
    return dag;
}

// Refuses a DAG that does not compute the real DFT (long-double evaluation).
void checkAgainstNaiveDft(const Dag& dag, const Kernel& k) {
    std::mt19937 rng(2000u + static_cast<unsigned>(k.n));
    std::uniform_real_distribution<double> u(-1, 1);
    for (int trial = 0; trial < 3; ++trial) {
        std::vector<Complex> x(k.n);
        for (Complex& v : x) v = u(rng);
        const std::vector<Complex> want = naiveDft(x, -1), got = evaluate(dag, x, k.n + 2);
        Real err = 0, norm = 0;
        for (int f = 0; f <= k.n / 2; ++f) {
            err += std::pow(got[k.element(f, 0)].real() - want[f].real(), 2);
            if (hasImaginary(k.n, f)) err += std::pow(got[k.element(f, 1)].real() - want[f].imag(), 2);
            norm += std::norm(want[f]);
        }
        if (!(std::sqrt(err / norm) < 1e-15L)) throw std::runtime_error("DAG of " + k.name() + " disagrees with the naive DFT");
    }
}

std::string kernelCode(const Kernel& k, const EmitResult& body) {
    std::string zeros;
    if (k.layout == Layout::CCS) {
        // The imaginary parts of X[0] and of the Nyquist value: literal zeros, never scaled.
        zeros += "    pDst[1] = 0;\n";
        if (k.n % 2 == 0) zeros += "    pDst[" + std::to_string(k.n + 1) + "] = 0;\n";
    }
    return realKernelFunction({k.name(), k.n, k.precision, RealDirection::Forward, body, zeros});
}

std::string tableLine(const Kernel& k, bool swapFactors, const FlopCount& f, const OpCounts& c) {
    const std::string algo = realAlgorithmText(realRowBuilt(k.n, builderOptions(k, swapFactors)));
    char line[256];
    std::snprintf(line, sizeof line, "%-30s %-18s %6ld %6d %6ld %6ld  %6ld %6ld %6ld", k.name().c_str(), algo.c_str(), f.muls,
                  kIntendedMultiplications[k.n - 2], f.adds, f.adds + f.muls, c.arithmetic, c.shuffles, c.loads + c.stores);
    return line;
}

void generate(SourceSet& out) {
    out.setPreamble(kRealKernelPreamble);
    char header[256];
    std::snprintf(header, sizeof header, "%-30s %-18s %6s %6s %6s %6s  %6s %6s %6s", "kernel", "algorithm", "muls", "intended",
                  "adds", "flops", "arith", "shuf", "ld/st");
    out.reportLine(header);
    for (Precision p : {Precision::F32, Precision::F64})
        for (int n = 2; n <= 64; ++n) {
            const OrderBuild chosen = bestFactorOrder(n, {.singlePrecision = p == Precision::F32}, [&](bool swap) {
                OrderBuild b{swap, {}, {}};
                for (Layout layout : kLayouts) {
                    const Kernel k{n, p, layout};
                    const Dag dag = buildKernelDag(k, swap);
                    checkAgainstNaiveDft(dag, k);
                    b.bodies.push_back(emitRealKernelBody(dag, p));
                    b.flops.push_back(countFlops(dag));
                }
                return b;
            });
            std::string code;
            for (std::size_t i = 0; i < kLayouts.size(); ++i) {
                const Kernel k{n, p, kLayouts[i]};
                code += kernelCode(k, chosen.bodies[i]) + "\n";
                out.reportLine(tableLine(k, chosen.swap, chosen.flops[i], chosen.bodies[i].counts));
            }
            out.add(code, chosen.cost());
        }
}

const bool registered = registerFamily({"rdft", generate});

}  // namespace

}  // namespace kfpg::gen
