#include "real_kernel.h"

#include <cmath>
#include <random>
#include <stdexcept>

#include "builders/real_dft_table.h"
#include "evaluate.h"
#include "pair_lanes.h"

namespace kfpg::gen {

namespace {

int elementCount(const Dag& dag, bool outputs) {
    int count = 0;
    if (outputs)
        for (const Output& o : dag.outputs())
            for (int e : o.elements) count = std::max(count, e + 1);
    else
        for (const Node& n : dag.nodes())
            if (n.op == Op::Input)
                for (int e : dag.inputElements(n.arg)) count = std::max(count, e + 1);
    return count;
}

// Refuses a paired DAG that computes anything else than the scalar one.
void checkSameOutputs(const Dag& scalar, const Dag& paired) {
    std::mt19937 rng(77);
    std::uniform_real_distribution<double> u(-1, 1);
    std::vector<Complex> x(elementCount(scalar, false));
    for (Complex& v : x) v = u(rng);
    const int outputs = elementCount(scalar, true);
    const auto want = evaluate(scalar, x, outputs), got = evaluate(paired, x, outputs);
    for (int e = 0; e < outputs; ++e)
        if (!(std::abs(got[e] - want[e]) <= 1e-15L * (1 + std::abs(want[e])) || (std::isnan(want[e].real()) && std::isnan(got[e].real()))))
            throw std::runtime_error("paired lanes disagree with the scalar DAG at output " + std::to_string(e));
}

// Keeps in `best` whichever of it and r emits fewer instructions (the first on a tie).
void keepFewer(EmitResult& best, EmitResult r) {
    if (best.body.empty() || r.counts.total() < best.counts.total()) best = std::move(r);
}

}  // namespace

EmitResult emitRealKernelBody(const Dag& dag, Precision precision) {
    EmitOptions o;
    o.mode = EmitMode::RealPairs;
    o.precision = precision;
    o.load = [](int i) { return "pSrc + " + std::to_string(i); };
    o.store = [](int i) { return "pDst + " + std::to_string(i); };
    o.scaleVar = "sc";
    o.schedule = Schedule::CreationNearUse;
    // The pairing that emits the fewest instructions.
    EmitResult best;
    for (Depth depth : {Depth::FromInputs, Depth::FromOutputs, Depth::Flexible, Depth::Instances})
        for (Orientation orientation : {Orientation::Any, Orientation::LaneZeroCheaper}) {
            const Dag paired = pairLanes(dag, depth, orientation);
            checkSameOutputs(dag, paired);
            keepFewer(best, emitBody(paired, o));
        }
    return best;
}

EmitResult emitBestRealKernelBody(const std::vector<Dag>& dags, Precision precision) {
    EmitResult best;
    for (const Dag& dag : dags) keepFewer(best, emitRealKernelBody(dag, precision));
    return best;
}

long OrderBuild::cost() const {
    long total = 0;
    for (const EmitResult& body : bodies) total += body.counts.total();
    return total;
}

OrderBuild bestFactorOrder(int n, const RowUse& use, const std::function<OrderBuild(bool swap)>& build) {
    OrderBuild best = build(false);
    if (!factorsMaySwap(realRow(n)) || builtForAccuracy(n, use)) return best;
    OrderBuild swapped = build(true);
    const bool sameMultiplications = swapped.flops.at(0).muls == best.flops.at(0).muls;
    return sameMultiplications && swapped.cost() < best.cost() ? swapped : best;
}

std::string realKernelFunction(const RealKernelText& k) {
    const bool f32 = k.precision == Precision::F32;
    const std::string t = f32 ? "float" : "double", type = f32 ? "kfp32f" : "kfp64f";
    static const char* const directions[] = {"Forward", "Inverse", "SelfInverse"};
    const Real n = k.n;
    std::string options = std::string(k.body.counts.total() >= kKeptOrderFrom ? "\"no-tree-ter\", " : "") + "\"no-tree-slp-vectorize\"";
    if (f32 && onlyShortDirectBlocks(k.n)) options += ", \"schedule-insns\", \"sched-pressure\"";
    std::string s = "extern \"C\" KFPG_API __attribute__((optimize(" + options + "), aligned(64))) KfpStatus " + k.name + "(const " + type +
                    "* pSrc, " + type + "* pDst, int flag) {\n";
    s += "    if (!pSrc || !pDst) return StatusNullPointer;\n";
    s += "    static constexpr kfpg::FlagFactors<" + t + "> kFactors = kfpg::flagFactors<" + t + ">(kfpg::ScaleDirection::" +
         directions[static_cast<int>(k.direction)] + ", " + literal(1, k.precision) + ", " + literal(1 / n, k.precision) + ", " +
         literal(1 / std::sqrt(n), k.precision) + ");\n";
    s += "    " + t + " factor;\n";
    s += "    if (!kfpg::scaleFactor(flag, kFactors, factor)) return StatusFlagError;\n";
    s += std::string("    const ") + (f32 ? "__m128 sc = _mm_set1_ps" : "__m128d sc = _mm_set1_pd") + "(factor);\n";
    return s + k.body.body + k.after + "    return StatusOk;\n}\n";
}

}  // namespace kfpg::gen
