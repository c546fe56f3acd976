// The Walsh-Hadamard family: the straight-line pieces of the kernels
// kfpgWHT_<order>_32f/_64f, orders 1..13. Each kernel gets one path type per
// access (see src/wht/wht_path.h): `line` for orders 1..7, and `row`,
// `cross`, `column` for the row/column passes of orders 8..13, split as the
// library's pass table says. The checks and pass loops are the library's
// own (src/wht/wht_kernel.h); this file emits the pieces and the line that
// defines the kernel around them.
#include <cmath>
#include <cstdio>
#include <random>
#include <stdexcept>
#include <string>

#include "builders/walsh_hadamard.h"
#include "emit.h"
#include "evaluate.h"
#include "family.h"
#include "wht/wht_layout.h"

namespace kfpg::gen {

namespace {

using wht::Passes;

struct Kernel {
    int order;
    Precision precision;

    bool f32() const { return precision == Precision::F32; }
    std::string type() const { return f32() ? "float" : "double"; }
    std::string suffix() const { return f32() ? "32f" : "64f"; }
    std::string name() const { return "kfpgWHT_" + std::to_string(order) + "_" + suffix(); }
    int lanes() const { return f32() ? 4 : 2; }
    // Orders 1..3 in 32f and 1..2 in 64f work element by element.
    bool scalar() const { return order <= (f32() ? 3 : 2); }
    bool blocked() const { return order > wht::kMaxLineOrder; }
    Passes passes() const { return f32() ? wht::passesFor<float>(order) : wht::passesFor<double>(order); }
};

// What a piece reads and writes, and how.
struct Piece {
    Dag dag;
    EmitOptions options;
};

// Refuses a DAG that does not compute the WHT (long-double evaluation).
// Strided DAGs are checked on every element they write.
void checkAgainstNaiveWht(const Dag& dag, int order, int stride, const std::string& what) {
    const int points = 1 << order, lanes = dag.lanes();
    const int span = stride == 0 ? points : points * stride;
    std::mt19937 rng(2000u + static_cast<unsigned>(points + stride));
    std::uniform_real_distribution<double> u(-1, 1);
    std::vector<Complex> x(span);
    for (Complex& v : x) v = u(rng);
    const std::vector<Complex> got = evaluate(dag, x, span);
    Real err = 0, norm = 0;
    for (int l = 0; l < (stride == 0 ? 1 : lanes); ++l) {
        std::vector<Complex> column(points);
        const int step = stride == 0 ? 1 : stride;
        for (int i = 0; i < points; ++i) column[i] = x[i * step + l];
        const std::vector<Complex> want = naiveWht(column);
        for (int i = 0; i < points; ++i) err += std::norm(got[i * step + l] - want[i]), norm += std::norm(want[i]);
    }
    if (!(std::sqrt(err / norm) < 1e-15L)) throw std::runtime_error(what + ": DAG disagrees with the naive WHT");
}

std::string pointer(const std::string& base, int element) { return base + " + " + std::to_string(element); }

EmitOptions vectorOptions(const Kernel& k, bool loadsAligned, bool storesAligned, bool scaled) {
    EmitOptions o;
    o.mode = EmitMode::Vertical;
    o.precision = k.precision;
    o.alignedLoads = loadsAligned;
    o.alignedStores = storesAligned;
    o.load = [](int e) { return pointer("pSrc", e); };
    o.store = [](int e) { return pointer("pDst", e); };
    if (scaled) o.scaleVar = "sc";
    return o;
}

// Contiguous transform of `order` from pSrc to pDst.
Piece contiguous(const Kernel& k, int order, bool loadsAligned, bool storesAligned, bool scaled) {
    const int lanes = k.scalar() ? 1 : k.lanes();
    Piece p{Dag(ValueKind::Real, lanes), vectorOptions(k, loadsAligned, storesAligned, scaled)};
    // The order-4 single-precision kernel is the 4x4 transpose scheme; the
    // in-vector lane stages need half the shuffles everywhere else.
    const bool transposes = k.f32() && order == 4;
    buildContiguousWht(p.dag, order, transposes ? LaneBits::Transpose : LaneBits::InVector);
    checkAgainstNaiveWht(p.dag, order, 0, k.name());
    if (k.scalar()) {
        // Element by element at any byte address.
        const std::string any = k.f32() ? "WhtAnyFloat" : "WhtAnyDouble";
        p.options.mode = EmitMode::Scalar;
        p.options.load = [any](int e) { return "(const " + any + "*)(" + pointer("pSrc", e) + ")"; };
        p.options.store = [any](int e) { return "(" + any + "*)(" + pointer("pDst", e) + ")"; };
        if (scaled) p.options.scaleVar = "s";
    }
    return p;
}

// 2^order-point transforms across rows `stride` elements apart, one per lane.
Piece strided(const Kernel& k, int order, int stride, bool storesAligned, bool scaled) {
    Piece p{Dag(ValueKind::Real, k.lanes()), vectorOptions(k, true, storesAligned, scaled)};
    buildStridedWht(p.dag, order, stride);
    checkAgainstNaiveWht(p.dag, order, stride, k.name());
    return p;
}

struct Emitted {
    std::string code;
    long cost = 0;
    OpCounts counts;  // of the aligned path
};

void emitMember(Emitted& out, const Piece& piece, const std::string& signature, bool first, const std::string& setup = "") {
    const EmitResult r = emitBody(piece.dag, piece.options);
    out.code += "    static void " + signature + " {\n" + setup + r.body + "    }\n";
    out.cost += r.counts.total();
    if (first) {
        out.counts.arithmetic += r.counts.arithmetic, out.counts.shuffles += r.counts.shuffles;
        out.counts.loads += r.counts.loads, out.counts.stores += r.counts.stores;
    }
}

// One path type: the pieces of kernel k for aligned or unaligned caller arrays.
void emitPath(Emitted& out, const Kernel& k, const std::string& typeName, bool aligned) {
    const std::string t = k.type();
    const std::string splat = "        const " + std::string(k.f32() ? "__m128 sc = _mm_set1_ps" : "__m128d sc = _mm_set1_pd") + "(s);\n";
    out.code += "struct " + typeName + " {\n";
    if (!k.blocked()) {
        emitMember(out, contiguous(k, k.order, aligned, aligned, true),
                   "line(const " + t + "* pSrc, " + t + "* pDst, " + t + " s)", aligned, k.scalar() ? "" : splat);
    } else {
        const Passes p = k.passes();
        emitMember(out, contiguous(k, p.row, aligned, true, false), "row(const " + t + "* pSrc, " + t + "* pDst)", aligned);
        if (p.cross)
            emitMember(out, strided(k, p.cross, 1 << p.row, true, false), "cross(const " + t + "* pSrc, " + t + "* pDst)",
                       aligned);
        emitMember(out, strided(k, p.last, 1 << (p.row + p.cross), aligned, true),
                   "column(const " + t + "* pSrc, " + t + "* pDst, " + t + " s)", aligned, splat);
    }
    out.code += "};\n";
}

// The path types of one kernel and the macro line that defines it.
Emitted kernelCode(const Kernel& k) {
    const std::string base = "Wht" + std::to_string(k.order) + "_" + k.suffix();
    const std::string args = std::to_string(k.order) + ", kfp" + k.suffix() + ", " + k.suffix() + ", ";
    Emitted out;
    out.code += "namespace {\n";
    emitPath(out, k, base + "_aligned", true);
    if (k.scalar()) {
        out.code += "}  // namespace\nKFPG_WHT_ONE_PATH(" + args + base + "_aligned)\n";
        return out;
    }
    emitPath(out, k, base + "_unaligned", false);
    const bool inner = k.order == 3;  // order 3 in 64f keeps both paths in the kernel
    out.code += "}  // namespace\n" + std::string(inner ? "KFPG_WHT_INNER_TWO_PATHS(" : "KFPG_WHT_TWO_PATHS(") + args +
                base + "_aligned, " + base + "_unaligned)\n";
    return out;
}

std::string describe(const Kernel& k) {
    if (k.scalar()) return "scalar";
    if (!k.blocked()) return k.order == 4 && k.f32() ? "4x4 transposes" : "vectors, lane swaps";
    const Passes p = k.passes();
    std::string s = "R " + std::to_string(1 << p.row);
    if (p.cross) s += ", B " + std::to_string(1 << p.cross);
    return s + ", F " + std::to_string(1 << p.last);
}

std::string tableLine(const Kernel& k, const OpCounts& c) {
    char line[256];
    const long adds = static_cast<long>(k.order) << k.order;
    std::snprintf(line, sizeof line, "%-16s %-20s %8ld %8ld %8ld %8ld", k.name().c_str(), describe(k).c_str(), adds,
                  c.arithmetic, c.shuffles, c.loads + c.stores);
    return line;
}

void generate(SourceSet& out) {
    out.setPreamble(
        "// Generated by kfpg_gen: the straight-line pieces of the Walsh-Hadamard kernels. Do not edit.\n"
        "#include <emmintrin.h>\n\n#include \"wht/wht_kernel.h\"\n\n"
        "// Elements of the scalar orders may sit at any byte address.\n"
        "typedef float WhtAnyFloat __attribute__((aligned(1)));\n"
        "typedef double WhtAnyDouble __attribute__((aligned(1)));\n");
    char header[256];
    std::snprintf(header, sizeof header, "%-16s %-20s %8s %8s %8s %8s", "kernel", "passes", "adds", "arith", "shuf",
                  "ld/st");
    out.reportLine(header);
    out.reportLine("(arith, shuf, ld/st: vector instructions of one call of each piece, aligned path)");
    for (Precision p : {Precision::F32, Precision::F64})
        for (int order = wht::kMinOrder; order <= wht::kMaxOrder; ++order) {
            const Kernel k{order, p};
            Emitted e = kernelCode(k);
            out.add(e.code, e.cost);
            out.reportLine(tableLine(k, e.counts));
        }
}

const bool registered = registerFamily({"wht", generate});

}  // namespace

}  // namespace kfpg::gen
