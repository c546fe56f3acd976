// The complex DFT family: forward and inverse kernels of lengths 2..64 in
// 32fc and 64fc, with their unaligned twins.
#include <cmath>
#include <cstdio>
#include <map>
#include <random>
#include <stdexcept>
#include <string>

#include "builders/complex_dft.h"
#include "builders/dft_table.h"
#include "emit.h"
#include "evaluate.h"
#include "family.h"

namespace kfpg::gen {

namespace {

struct Kernel {
    int n;
    Precision precision;
    int sign;  // -1 forward, +1 inverse

    bool f32() const { return precision == Precision::F32; }
    std::string suffix() const { return std::to_string(n) + (f32() ? "_32fc" : "_64fc"); }
    std::string name() const { return std::string("kfpgDFT") + (sign < 0 ? "Fwd" : "Inv") + "_CToC_" + suffix(); }
    std::string twinName() const { return std::string("owngDFT") + (sign < 0 ? "Fwd" : "Inv") + "_CToC_" + suffix() + "_unaligned"; }
    // 32fc N <= 5 is scalar code; from 6 two complex values share a vector.
    bool scalar() const { return f32() && n <= 5; }
    int lanes() const { return f32() && n >= 6 ? 2 : 1; }
    bool hasTwin() const { return f32() ? n >= 6 : n >= 5; }
    bool hasAlignmentTest() const { return !scalar(); }
};

// FFTW's published operation counts (real adds, real muls) of its codelets.
const std::map<int, std::pair<int, int>> kFftwCounts = {
    {2, {4, 0}},     {3, {12, 4}},    {4, {16, 0}},    {5, {32, 12}},   {6, {36, 8}},    {7, {60, 36}},   {8, {52, 4}},
    {9, {80, 40}},   {10, {84, 24}},  {11, {140, 100}}, {12, {96, 16}}, {13, {176, 68}}, {14, {148, 72}}, {15, {156, 56}},
    {16, {144, 24}}, {20, {208, 48}}, {25, {352, 184}}, {32, {372, 84}}, {64, {912, 248}},
};

Dag buildKernelDag(const Kernel& k, int lanes) {
    Dag dag(ValueKind::Complex, lanes);
    buildComplexDft(dag, k.n, ComplexDftOptions{k.sign, k.f32() && (k.n == 3 || k.n == 5)});
    return dag;
}

// Refuses a DAG that does not compute the DFT (long-double evaluation).
void checkAgainstNaiveDft(const Dag& dag, const Kernel& k) {
    std::mt19937 rng(1000u + static_cast<unsigned>(k.n));
    std::uniform_real_distribution<double> u(-1, 1);
    for (int trial = 0; trial < 3; ++trial) {
        std::vector<Complex> x(k.n);
        for (Complex& v : x) v = Complex(u(rng), u(rng));
        const std::vector<Complex> got = evaluate(dag, x, k.n), want = naiveDft(x, k.sign);
        Real err = 0, norm = 0;
        for (int i = 0; i < k.n; ++i) err += std::norm(got[i] - want[i]), norm += std::norm(want[i]);
        if (!(std::sqrt(err / norm) < 1e-15L))
            throw std::runtime_error("DAG of " + k.name() + " disagrees with the naive DFT");
    }
}

std::string signature(const Kernel& k, const std::string& name) {
    const std::string t = k.f32() ? "kfp32fc" : "kfp64fc";
    return name + "(const " + t + "* pSrc, " + t + "* pDst, int flag)";
}

// Null checks, flag decoding into `factor` (and `sc` for vector code), body.
std::string checkedBody(const Kernel& k, const std::string& body) {
    const std::string t = k.f32() ? "float" : "double";
    const Real n = k.n;
    std::string s;
    s += "    if (!pSrc || !pDst) return StatusNullPointer;\n";
    s += "    static constexpr kfpg::FlagFactors<" + t + "> kFactors = kfpg::flagFactors<" + t +
         ">(kfpg::ScaleDirection::" + (k.sign < 0 ? "Forward" : "Inverse") + ", " + literal(1, k.precision) + ", " +
         literal(1 / n, k.precision) + ", " + literal(1 / std::sqrt(n), k.precision) + ");\n";
    s += "    " + t + " factor;\n";
    s += "    if (!kfpg::scaleFactor(flag, kFactors, factor)) return StatusFlagError;\n";
    if (!k.scalar()) s += std::string("    const ") + (k.f32() ? "__m128 sc = _mm_set1_ps" : "__m128d sc = _mm_set1_pd") + "(factor);\n";
    return s + body + "    return StatusOk;\n";
}

EmitOptions emitOptions(const Kernel& k, bool aligned, Schedule schedule) {
    EmitOptions o;
    o.mode = k.scalar() ? EmitMode::Scalar : EmitMode::ComplexVector;
    o.precision = k.precision;
    o.aligned = aligned;
    o.scaleVar = k.scalar() ? "factor" : "sc";
    o.schedule = schedule;
    return o;
}

// Long 64fc kernels (600 emitted instructions and more) gain about 2% from
// the latency-aware order (measured kernel by kernel); shorter ones keep the
// creation order, and the blocked direct sums keep the order their blocks
// were built in.
constexpr long kLatencyOrderFrom = 600;

Schedule schedule(const Kernel& k, long instructions) {
    const bool latency = !k.f32() && instructions >= kLatencyOrderFrom && !blockedDirectSums(k.n);
    return latency ? Schedule::Latency : Schedule::Creation;
}

// Where the compiler's register-pressure-aware scheduling before register
// allocation pays (measured with kfpg bench): short kernels of up to 180
// emitted instructions in 64fc, and Rader kernels of medium size (64fc up to
// 350 instructions: 7..17; 32fc 181..620: 17..37). Longer kernels spill more
// with it; the other single-precision kernels do not gain.
constexpr long kPreScheduleShort = 180;
constexpr long kPreScheduleRader64UpTo = 350;
constexpr long kPreScheduleRader32UpTo = 620;

bool preSchedule(const Kernel& k, long instructions) {
    const bool rader = dftRow(k.n).kernel == DftAlgorithm::Rader;
    if (!k.f32()) return instructions <= kPreScheduleShort || (rader && instructions <= kPreScheduleRader64UpTo);
    return rader && instructions > kPreScheduleShort && instructions <= kPreScheduleRader32UpTo;
}

std::string kernelCode(const Kernel& k, const Dag& dag, OpCounts& counts) {
    const long instructions = emitBody(dag, emitOptions(k, !k.scalar(), Schedule::Creation)).counts.total();
    const Schedule order = schedule(k, instructions);
    const EmitResult aligned = emitBody(dag, emitOptions(k, !k.scalar(), order));
    counts = aligned.counts;
    std::string options;
    if (preSchedule(k, counts.total()))
        options = "\"schedule-insns\", \"sched-pressure\"";
    else if (blockedDirectSums(k.n))
        options = "\"no-tree-ter\"";
    // Two paths in one function: the compiler would otherwise share their
    // tails, and the unaligned path of these few-cycle kernels pays a jump
    // into it.
    if (!k.hasTwin() && k.hasAlignmentTest()) options += std::string(options.empty() ? "" : ", ") + "\"no-crossjumping\"";
    const std::string attributes = options.empty() ? "" : "__attribute__((optimize(" + options + "))) ";
    const std::string misaligned =
        "    if ((reinterpret_cast<std::uintptr_t>(pSrc) | reinterpret_cast<std::uintptr_t>(pDst)) & 15)";
    std::string code;
    if (k.hasTwin()) {
        const EmitResult unaligned = emitBody(dag, emitOptions(k, false, order));
        code += "extern \"C\" __attribute__((noinline)) " + attributes + "KfpStatus " + signature(k, k.twinName()) + " {\n" +
                checkedBody(k, unaligned.body) + "}\n\n";
        code += "extern \"C\" KFPG_API " + attributes + "KfpStatus " + signature(k, k.name()) + " {\n" + misaligned + "\n        return " +
                k.twinName() + "(pSrc, pDst, flag);\n" + checkedBody(k, aligned.body) + "}\n";
    } else if (k.hasAlignmentTest()) {
        // Short double-precision lengths: the unaligned path is a second copy inside the kernel.
        const EmitResult unaligned = emitBody(dag, emitOptions(k, false, order));
        code += "extern \"C\" KFPG_API " + attributes + "KfpStatus " + signature(k, k.name()) + " {\n" + misaligned + " {\n" +
                checkedBody(k, unaligned.body) + "    }\n" + checkedBody(k, aligned.body) + "}\n";
    } else {
        code += "extern \"C\" KFPG_API " + attributes + "KfpStatus " + signature(k, k.name()) + " {\n" + checkedBody(k, aligned.body) + "}\n";
    }
    return code;
}

std::string tableLine(const Kernel& k, const FlopCount& f, const OpCounts& c) {
    const DftRow& row = dftRow(k.n);
    std::string algo = algorithmName(row.kernel);
    const auto [n1, n2] = dftFactors(row, k.lanes());
    if (n1) algo += " " + std::to_string(n1) + "x" + std::to_string(n2);
    char peer[32] = "-";
    auto it = kFftwCounts.find(k.n);
    if (it != kFftwCounts.end()) {
        const int total = it->second.first + it->second.second;
        std::snprintf(peer, sizeof peer, "%d %+.0f%%", total, 100.0 * (f.adds + f.muls - total) / total);
    }
    char line[256];
    std::snprintf(line, sizeof line, "%-34s %-20s %6ld %6ld %6ld  %-12s %6ld %6ld %6ld %6ld", k.name().c_str(), algo.c_str(),
                  f.adds, f.muls, f.adds + f.muls, peer, c.arithmetic, c.oneLane, c.shuffles, c.loads + c.stores);
    return line;
}

void generate(SourceSet& out) {
    out.setPreamble(
        "// Generated by kfpg_gen from the complex DFT algorithm table. Do not edit.\n"
        "#include <emmintrin.h>\n\n#include <cstdint>\n\n#include \"frame/scale_flag.h\"\n#include \"kfpgen.h\"\n");
    char header[256];
    std::snprintf(header, sizeof header, "%-34s %-20s %6s %6s %6s  %-12s %6s %6s %6s %6s", "kernel", "algorithm", "adds",
                  "muls", "flops", "fftw flops", "arith", "1lane", "shuf", "ld/st");
    out.reportLine(header);
    for (Precision p : {Precision::F32, Precision::F64})
        for (int n = 2; n <= 64; ++n) {
            std::string code;
            long cost = 0;
            for (int sign : {-1, 1}) {
                const Kernel k{n, p, sign};
                const Dag dag = buildKernelDag(k, k.lanes());
                checkAgainstNaiveDft(dag, k);
                const Dag plain = buildKernelDag(k, 1);
                checkAgainstNaiveDft(plain, k);
                OpCounts counts;
                code += kernelCode(k, dag, counts) + "\n";
                cost += counts.total() * (k.hasAlignmentTest() ? 2 : 1);
                out.reportLine(tableLine(k, countFlops(plain), counts));
            }
            out.add(code, cost);
        }
}

const bool registered = registerFamily({"cdft", generate});

}  // namespace

}  // namespace kfpg::gen
