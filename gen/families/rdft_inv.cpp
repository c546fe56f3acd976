// The inverse real DFT family: kernels of lengths 2..64 in 32f and 64f, each
// from the CCS, Pack and Perm layouts. A length's DAG is the transpose of the
// forward real DFT's (transpose.h) applied to the loaded half spectrum with
// its interior values doubled; the three layouts differ only in where each
// value is loaded from.
#include <cmath>
#include <cstdio>
#include <map>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>

#include "builders/real_dft.h"
#include "builders/real_dft_table.h"
#include "emit.h"
#include "evaluate.h"
#include "family.h"
#include "pair_lanes.h"
#include "real_kernel.h"
#include "real_layout.h"
#include "transpose.h"

namespace kfpg::gen {

namespace {

// Constant multiplications of the intended algorithms per length, 2..64
// (doublings included, the scale multiplications not), printed next to ours.
const int kIntendedMultiplications[] = {
    0, 3, 2, 12, 8, 24, 8, 25, 24, 60, 16, 56, 48, 47, 26, 68,
    52, 128, 50, 87, 120, 264, 44, 136, 112, 125, 98, 238, 94, 224, 72, 203,
    136, 180, 106, 272, 256, 180, 112, 282, 176, 394, 242, 206, 528, 1104, 118, 372,
    272, 245, 210, 502, 250, 392, 212, 423, 476, 1012, 194, 478, 448, 361, 196,
};

struct Kernel {
    int n;
    Precision precision;
    Layout layout;

    bool f32() const { return precision == Precision::F32; }
    std::string name() const {
        return std::string("kfpgDFTInv_") + layoutName(layout) + "ToR_" + std::to_string(n) + (f32() ? "_32f" : "_64f");
    }
    // Where R_k (part 0) and I_k (part 1) are loaded from.
    int element(int k, int part) const { return packedElement(layout, n, k, part); }
    // Spectral values with an imaginary part are the interior ones, doubled.
    bool interior(int k) const { return hasImaginary(n, k); }
};

RealDftOptions forwardOptions(bool f32, bool swapFactors, bool sinesFirst = false) {
    RealDftOptions options;
    options.wideProducts = f32;
    options.wideSums = f32;
    options.forTransposition = true;
    options.sinesFirst = sinesFirst;
    options.swapFactors = swapFactors;
    return options;
}

// The forward real DFT of length n, R_k at output 2k and I_k at 2k + 1.
Dag forwardDag(int n, bool f32, bool swapFactors, bool sinesFirst) {
    Dag dag(ValueKind::Real, 1, Signs::Separate);
    std::vector<NodeId> x;
    for (int i = 0; i < n; ++i) x.push_back(dag.input(i));
    const HalfSpectrum X = buildRealDft(dag, x, forwardOptions(f32, swapFactors, sinesFirst));
    for (int k = 0; k <= n / 2; ++k) {
        dag.output(2 * k, X.re[k]);
        if (hasImaginary(n, k)) dag.output(2 * k + 1, X.im[k]);
    }
    return dag;
}

// Which nodes of a DAG the outputs need, and how many of those use each node.
struct Uses {
    std::vector<char> live;
    std::vector<int> count;
};

Uses usesOf(const Dag& dag) {
    Uses u{std::vector<char>(dag.nodes().size(), 0), std::vector<int>(dag.nodes().size(), 0)};
    for (const Output& o : dag.outputs()) u.live[o.value] = 1;
    for (NodeId id = static_cast<NodeId>(u.live.size()) - 1; id >= 0; --id) {
        if (!u.live[id]) continue;
        for (NodeId operand : {dag.node(id).a, dag.node(id).b})
            if (operand >= 0) ++u.count[operand], u.live[operand] = 1;
    }
    return u;
}

// x[j] = R_0 + 2 sum (R_k cos - I_k sin)(2 pi jk/n) + (-1)^j R_{n/2}: the
// transpose of the forward DFT on the half spectrum with R_k, I_k doubled.
// A doubled value is a multiplication of its own (in the element type), but
// where its one use is a product the 2 goes into that product's constant.
// `folded` lists the spectral slots (2k + part) whose doubling is folded,
// with the precision of the product.
Dag transposedDag(const Kernel& k, const Dag& forward, const std::vector<NodeId>& partners, const std::map<int, bool>& folded,
                  std::vector<NodeId>* doublings) {
    Dag dag(ValueKind::Real, 1, Signs::Separate);
    std::vector<NodeId> y(2 * (k.n / 2) + 2, dag.zero());
    if (doublings) doublings->assign(y.size(), -1);
    for (int f = 0; f <= k.n / 2; ++f)
        for (int part = 0; part < (k.interior(f) ? 2 : 1); ++part) {
            const int slot = 2 * f + part;
            NodeId value = dag.input(k.element(f, part));
            if (k.interior(f)) {
                const auto fold = folded.find(slot);
                if (fold == folded.end()) {
                    value = dag.keptScale(2, value);
                } else {
                    std::unique_ptr<Dag::WideScope> scope(fold->second ? new Dag::WideScope(dag) : nullptr);
                    value = dag.scale(2, value);
                }
            }
            y[slot] = value;
            if (doublings && k.interior(f)) (*doublings)[slot] = value;
        }
    const std::vector<NodeId> x =
        transposeInto(dag, forward, y, k.n, partners, builtForAccuracy(k.n, {.singlePrecision = k.f32(), .forTransposition = true}));
    for (int j = 0; j < k.n; ++j) dag.output(j, x[j]);
    return dag;
}

// `partners`: lane pairs of the forward DAG for the transposed one to follow
// (transposeInto), or none.
Dag buildKernelDag(const Kernel& k, const Dag& forward, const std::vector<NodeId>& partners) {
    std::vector<NodeId> doublings;
    const Dag kept = transposedDag(k, forward, partners, {}, &doublings);
    const Uses uses = usesOf(kept);
    std::map<int, bool> folded;
    for (NodeId id = 0; id < static_cast<NodeId>(kept.nodes().size()); ++id) {
        const Node& n = kept.node(id);
        if (n.op != Op::Scale || !uses.live[id] || uses.count[n.a] != 1) continue;
        for (std::size_t slot = 0; slot < doublings.size(); ++slot)
            if (doublings[slot] == n.a) folded[static_cast<int>(slot)] = n.wide;
    }
    return folded.empty() ? kept : transposedDag(k, forward, partners, folded, nullptr);
}

// The same inverse built to be paired in two ways: by its own builder loop
// instances, or as the forward DAG's lanes pair by instances (the other ways
// of pairing the forward DAG measured no better than these two); each from
// the forward DAG with its direct sums' cosine or sine blocks first.
std::vector<Dag> kernelDags(const Kernel& k, bool swapFactors) {
    std::vector<Dag> dags;
    for (bool sinesFirst : {false, true}) {
        const Dag forward = forwardDag(k.n, k.f32(), swapFactors, sinesFirst);
        dags.push_back(buildKernelDag(k, forward, {}));
        dags.push_back(buildKernelDag(k, forward, lanePartners(forward, Depth::Instances)));
    }
    return dags;
}

// Refuses a DAG that does not compute the inverse real DFT (long-double evaluation).
void checkAgainstNaiveInverse(const Dag& dag, const Kernel& k) {
    std::mt19937 rng(3000u + static_cast<unsigned>(k.n));
    std::uniform_real_distribution<double> u(-1, 1);
    for (int trial = 0; trial < 3; ++trial) {
        std::vector<Complex> spectrum(k.n), packed(k.n + 2, 0);
        for (int f = 0; f <= k.n / 2; ++f) {
            spectrum[f] = Complex(u(rng), k.interior(f) ? u(rng) : 0);
            spectrum[(k.n - f) % k.n] = std::conj(spectrum[f]);
            packed[k.element(f, 0)] = spectrum[f].real();
            if (k.interior(f)) packed[k.element(f, 1)] = spectrum[f].imag();
        }
        const std::vector<Complex> want = naiveDft(spectrum, 1), got = evaluate(dag, packed, k.n);
        Real err = 0, norm = 0;
        for (int j = 0; j < k.n; ++j) err += std::norm(got[j] - want[j]), norm += std::norm(want[j]);
        if (!(std::sqrt(err / norm) < 1e-15L)) throw std::runtime_error("DAG of " + k.name() + " disagrees with the naive inverse");
    }
}

std::string tableLine(const Kernel& k, bool swapFactors, const FlopCount& f, const OpCounts& c) {
    const std::string algo = realAlgorithmText(realRowBuilt(k.n, forwardOptions(k.f32(), swapFactors)));
    char line[256];
    std::snprintf(line, sizeof line, "%-30s %-18s %6ld %8d %6ld %6ld  %6ld %6ld", k.name().c_str(), algo.c_str(), f.muls,
                  kIntendedMultiplications[k.n - 2], f.adds, f.adds + f.muls, c.arithmetic, c.loads + c.stores);
    return line;
}

void generate(SourceSet& out) {
    out.setPreamble(kRealKernelPreamble);
    char header[256];
    std::snprintf(header, sizeof header, "%-30s %-18s %6s %8s %6s %6s  %6s %6s", "kernel", "algorithm", "muls", "intended",
                  "adds", "flops", "arith", "ld/st");
    out.reportLine(header);
    for (Precision p : {Precision::F32, Precision::F64})
        for (int n = 2; n <= 64; ++n) {
            const OrderBuild chosen = bestFactorOrder(n, {.singlePrecision = p == Precision::F32, .forTransposition = true}, [&](bool swap) {
                OrderBuild b{swap, {}, {}};
                for (Layout layout : kLayouts) {
                    const Kernel k{n, p, layout};
                    const std::vector<Dag> dags = kernelDags(k, swap);
                    for (const Dag& dag : dags) checkAgainstNaiveInverse(dag, k);
                    b.bodies.push_back(emitBestRealKernelBody(dags, p));
                    b.flops.push_back(countFlops(dags.front()));
                }
                return b;
            });
            std::string code;
            for (std::size_t i = 0; i < kLayouts.size(); ++i) {
                const Kernel k{n, p, kLayouts[i]};
                code += realKernelFunction({k.name(), k.n, k.precision, RealDirection::Inverse, chosen.bodies[i], ""}) + "\n";
                out.reportLine(tableLine(k, chosen.swap, chosen.flops[i], chosen.bodies[i].counts));
            }
            out.add(code, chosen.cost());
        }
}

const bool registered = registerFamily({"rdft-inv", generate});

}  // namespace

}  // namespace kfpg::gen
