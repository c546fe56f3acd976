// The DCT-IV family's root output side, owngDCT4_output_<d>_<p>, in vertical
// mode with lane = output index i. The rotated values a_r (real parts) and
// b'_r = (-1)^r b_r (imaginary parts, the sign folded into the rotation) go
// through a DCT-II each, A = DCT-II(a) and D = DCT-II(b'), and B[p] = D[d-p]:
//   y[M p + i] = A[p] + D[d-p],  y[M p - 1 - i] = A[p] - D[d-p].
// For d = 32 the first butterfly level of both DCT-IIs, u_r = a_r + a_{d-1-r}
// and v_r = a_r - a_{d-1-r}, runs in the gather; then A[2p] =
// DCT-II_{d/2}(u)[p] and A[2p+1] = DCT-IV_{d/2}(v)[p], D likewise from b'.
#include <string>
#include <vector>

#include "builders/dct4_blocks.h"
#include "families/dct4_family.h"

namespace kfpg::gen::dct4family {

namespace {

// Unnormalised DCT-II of size n on inputs 0..n-1.
Dag dct2Dag(int n) {
    return checkedCosineDag(n, buildDct2, [](long r, long p) { return (2 * r + 1) * p; }, 2L * n, "DCT-II");
}

const char* kOutput = R"(void owngDCT4_output_$N_$P(const $T* w, $T* y, int n, const $T* table) {
    const int m = n / (2 * $N), M = 2 * m;
    int g = 0;
    // Long output rows: sixteen groups (four cache lines of every output row)
    // at a time, their rows combined and stored line by line, so that each
    // line is written at once and each row's page is visited once per four
    // lines (the 2d rows of one pass are more pages than the data TLB holds).
    for (; M * sizeof($T) >= 2048 && g + 16 <= m / $L; g += 16) {
        alignas(16) $T blockA[16 * $N * $L], blockD[16 * $N * $L];
        for (int group = 0; group < 16; ++group) {
            const $T* tab = table + (g + group) * (2 * $N * $L);
            const $T* rows = w + 2L * $L * (g + group) * $N;
            $T* const A = blockA + group * $N * $L;
            $T* const D = blockD + group * $N * $L;
            alignas(16) $T u[2 * $H * $L], v[2 * $H * $L];
$blockbody        }
        combineHalves<$N, 16>(blockA, blockD, y + $L * g, M, y + M - $L - $L * g, M);
    }
    for (; g < m / $L; ++g) {
        const int i0 = $L * g;
        const $T* tab = table + g * (2 * $N * $L);
        const $T* rows = w + 2L * i0 * $N;
        alignas(16) $T u[2 * $H * $L], v[2 * $H * $L], A[$N * $L], D[$N * $L];
$body        combineHalves<$N, 1>(A, D, y + i0, M, y + M - $L - i0, M);
    }
}
)";

// Rows 2i + c of the work array, transposed so that lane = i, rotated by the
// table pair of r into a_r and b'_r, and the first butterfly level of both
// DCT-IIs into u (side a, then side b) and v. Column blocks j and
// d - lanes - j are taken together, so that every pair r, d-1-r is in
// registers at once; a loop runs over j (one block when d is the lane count).
std::string outputGather(const Target& t, int d) {
    const int l = t.lanes();
    const std::string ld = "_mm_load_" + t.sfx(), st = "_mm_store_" + t.sfx(), sfx = t.sfx();
    const std::string sideB = num(d / 2 * l);
    const bool loop = d > l;
    std::string out = loop ? "for (int j = 0; j < " + num(d / 2) + "; j += " + num(l) + ") {\n    const int k = " +
                                 num(d - l) + " - j;\n"
                           : "{\n    const int j = 0;\n";
    // Block at column `col` into re<prefix>, im<prefix> vectors 0..l-1 (lane = i, vector = r - col).
    auto column = [&](const std::string& col, const std::string& re, const std::string& im) {
        std::string names[2];
        for (int i = 0; i < l; ++i) {
            out += "    " + t.vec() + " " + re + num(i) + " = " + ld + "(rows + " + num(2 * i * d) + " + " + col + "), " +
                   im + num(i) + " = " + ld + "(rows + " + num((2 * i + 1) * d) + " + " + col + ");\n";
            names[0] += (i ? ", " : "") + re + num(i), names[1] += (i ? ", " : "") + im + num(i);
        }
        out += "    transpose(" + names[0] + ");\n    transpose(" + names[1] + ");\n";
        // col is even, so r = col + i has the parity of i.
        for (int i = 0; i < l; ++i)
            out += std::string("    ") + (i % 2 ? "rotateNegated" : "rotate") + "(" + re + num(i) + ", " + im + num(i) +
                   ", tab + 2 * (" + col + " + " + num(i) + ") * " + num(l) + ");\n";
    };
    column("j", "a", "b");
    if (loop) column("k", "c", "e");
    const std::string hiRe = loop ? "c" : "a", hiIm = loop ? "e" : "b";
    for (int i = 0; i < (loop ? l : l / 2); ++i) {
        // r = j + i pairs with d-1-r, lane vector l-1-i of the partner block.
        const std::string at = "(j + " + num(i) + ") * " + num(l), p = num(l - 1 - i);
        for (int side = 0; side < 2; ++side) {
            const std::string x = (side ? "b" : "a") + num(i), y = (side ? hiIm : hiRe) + p;
            const std::string to = side ? " + " + sideB : "";
            out += "    " + st + "(u" + to + " + " + at + ", _mm_add_" + sfx + "(" + x + ", " + y + "));\n";
            out += "    " + st + "(v" + to + " + " + at + ", _mm_sub_" + sfx + "(" + x + ", " + y + "));\n";
        }
    }
    return out + "}\n";
}

// Short rows (d <= 16: N <= 512 in every plan) in one body over all 2d
// rotated values: inputs a_r (0..d-1) and b'_r (d..2d-1), outputs p < d:
// A[p] + D[d-p] and d + p - 1 for p = 1..d: A[p] - D[d-p].
Dag outputPairDag(int d) {
    Dag dag(ValueKind::Real, 1);
    Values a(d), b(d);
    for (int r = 0; r < d; ++r) a[r] = dag.input(r), b[r] = dag.input(d + r);
    const Values A = buildDct2(dag, a), D = buildDct2(dag, b);
    dag.output(0, A[0]);
    for (int p = 1; p < d; ++p) {
        dag.output(p, dag.add(A[p], D[d - p]));
        dag.output(d + p - 1, dag.sub(A[p], D[d - p]));
    }
    dag.output(2 * d - 1, dag.neg(D[0]));
    // y[p] = sum a cos(pi(2r+1)p/(2d)) +- sum b sin(...), b_r = (-1)^r b'_r.
    const std::vector<Real> x = randomReals(2 * d, 5u + d);
    std::vector<Real> want(2 * d);
    for (int p = 0; p <= d; ++p) {
        Real ca = 0, sb = 0;
        for (int r = 0; r < d; ++r) {
            ca += x[r] * cosPiRatio(static_cast<long>(2 * r + 1) * p, 2 * d);
            sb += (r % 2 ? -x[d + r] : x[d + r]) * sinPiRatio(static_cast<long>(2 * r + 1) * p, 2 * d);
        }
        if (p < d) want[p] = ca + sb;
        if (p > 0) want[d + p - 1] = ca - sb;
    }
    expectClose(run(dag, x, 2 * d), want, "DCT-II/DST-II pair " + std::to_string(d));
    return dag;
}

const char* kOutputShort = R"(void owngDCT4_output_$N_$P(const $T* w, $T* y, int n, const $T* table) {
    const int m = n / (2 * $N), M = 2 * m;
    for (int g = 0; g < m / $L; ++g) {
        const int i0 = $L * g;
        const $T* tab = table + g * (2 * $N * $L);
        const $T* rows = w + 2L * i0 * $N;
        alignas(16) $T a[$N * $L], b[$N * $L], hi[$N * $L];
$gather$body$scatter    }
}
)";

std::string shortOutputKernel(const Target& t, int d, OpCounts& counts) {
    const int l = t.lanes();
    const std::string ld = "_mm_load_" + t.sfx(), st = "_mm_store_" + t.sfx();
    std::string gather;
    for (int j = 0; j < d; j += l) {
        std::string re, im;
        gather += "{\n";
        for (int i = 0; i < l; ++i) {
            gather += "    " + t.vec() + " re" + num(i) + " = " + ld + "(rows + " + num(2 * i * d + j) + "), im" + num(i) +
                      " = " + ld + "(rows + " + num((2 * i + 1) * d + j) + ");\n";
            re += (i ? ", re" : "re") + num(i), im += (i ? ", im" : "im") + num(i);
        }
        gather += "    transpose(" + re + ");\n    transpose(" + im + ");\n";
        for (int i = 0; i < l; ++i) {
            const int r = j + i;
            gather += std::string("    ") + (r % 2 ? "rotateNegated" : "rotate") + "(re" + num(i) + ", im" + num(i) +
                      ", tab + " + num(2 * r * l) + ");\n    " + st + "(a + " + num(l * r) + ", re" + num(i) + ");\n    " +
                      st + "(b + " + num(l * r) + ", im" + num(i) + ");\n";
        }
        gather += "}\n";
    }
    const EmitResult r = emitBody(outputPairDag(d), vertical(
        t, [d, l](int i) { return i < d ? "a + " + num(l * i) : "b + " + num(l * (i - d)); },
        [d, l](int e) { return e < d ? "y + " + num(e) + "L * M + i0" : "hi + " + num(l * (e - d)); }));
    counts = r.counts;
    auto w = words(t, d);
    w["$gather"] = indent(indent(gather));
    w["$body"] = indent(r.body);
    // The differences A[p] - D[d-p] go to y[M p - 1 - i], lanes reversed.
    w["$scatter"] = lines(d, [&](int q) {
        return "        _mm_storeu_" + t.sfx() + "(y + " + num(q + 1) + "L * M - " + num(l) + " - i0, reversed(" + ld +
               "(hi + " + num(l * q) + ")));\n";
    });
    return fill(kOutputShort, w);
}

}  // namespace

std::string outputKernel(const Target& t, int d, OpCounts& counts) {
    if (d <= 16) return shortOutputKernel(t, d, counts);
    const int l = t.lanes();
    std::string body = outputGather(t, d);
    counts = OpCounts{};
    // The half-size transforms, each in a loop over the two sides: u into the
    // even rows of A (side a) or D (side b), v into the odd rows.
    const Dag even = dct2Dag(d / 2), odd = directDag(d / 2);
    for (int half = 0; half < 2; ++half) {
        const EmitResult r = emitBody(half ? odd : even, vertical(
            t, [l](int i) { return "in + " + num(i * l); },
            [half, l](int p) { return "to + " + num((2 * p + half) * l); }));
        counts.arithmetic += 2 * r.counts.arithmetic, counts.shuffles += 2 * r.counts.shuffles;
        counts.loads += 2 * r.counts.loads, counts.stores += 2 * r.counts.stores;
        body += "for (int side = 0; side < 2; ++side) {\n    const " + t.real() + "* in = " + (half ? "v" : "u") +
                " + side * " + num(d / 2 * l) + ";\n    " + t.real() + "* to = side ? D : A;\n" + indent(r.body) + "}\n";
    }
    auto w = words(t, d);
    w["$body"] = indent(indent(body));
    w["$blockbody"] = indent(indent(indent(body)));
    return fill(kOutput, w);
}

}  // namespace kfpg::gen::dct4family
