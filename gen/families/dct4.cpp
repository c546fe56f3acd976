// The DCT-IV family: the compute stages of the split path, each a loop
// around straight-line bodies emitted in vertical mode (every vector lane an
// independent transform), and the scalar direct transforms of lengths 2..32.
//
//   owngDCT4_leaf_<M>_<p>:    R_M on v interleaved lanes into the work rows;
//   owngDCT4_output_<d>_<p>:  root output side, rotations by the plan's table,
//                             then a DCT-II/DST-II pair of size d
//                             (dct4_output.cpp);
//   owngDCT4_split_<d'>_<p>:  output side of a recursive split, twiddles by
//                             the plan's table, then a complex DFT of size d';
//   owngDCT4_direct_<N>_<p>:  DCT-IV of length N: scalar up to 16, 32 as the
//                             split path on one vector group.
// Every body is checked in long double against a naive transform first.
#include <cmath>
#include <cstdio>
#include <map>
#include <random>
#include <stdexcept>
#include <string>

#include "builders/dct4_blocks.h"
#include "evaluate.h"
#include "families/dct4_family.h"
#include "family.h"

namespace kfpg::gen::dct4family {

std::string fill(std::string text, const std::map<std::string, std::string>& values) {
    for (const auto& [key, value] : values)
        for (std::size_t at; (at = text.find(key)) != std::string::npos;) text.replace(at, key.size(), value);
    return text;
}

std::map<std::string, std::string> words(const Target& t, int size) {
    return {{"$T", t.real()},     {"$V", t.vec()},   {"$S", t.sfx()},      {"$L", std::to_string(t.lanes())},
            {"$P", t.tag()},      {"$N", std::to_string(size)}, {"$H", std::to_string(size / 2)}};
}

std::string indent(const std::string& body) {
    std::string out;
    std::size_t start = 0;
    while (start < body.size()) {
        const std::size_t end = body.find('\n', start);
        out += "    " + body.substr(start, end - start + 1);
        if (end == std::string::npos) break;
        start = end + 1;
    }
    return out;
}

std::vector<Real> randomReals(int count, unsigned seed) {
    std::mt19937 rng(seed);
    std::uniform_real_distribution<double> u(-1, 1);
    std::vector<Real> x(count);
    for (Real& v : x) v = u(rng);
    return x;
}

std::vector<Real> run(const Dag& dag, const std::vector<Real>& x, int outputs) {
    const std::vector<Complex> in(x.begin(), x.end());
    std::vector<Real> out;
    for (const Complex& v : evaluate(dag, in, outputs)) out.push_back(v.real());
    return out;
}

void expectClose(const std::vector<Real>& got, const std::vector<Real>& want, const std::string& what) {
    Real err = 0, norm = 0;
    for (std::size_t i = 0; i < want.size(); ++i) err += (got[i] - want[i]) * (got[i] - want[i]), norm += want[i] * want[i];
    if (!(std::sqrt(err / norm) < 1e-15L)) throw std::runtime_error(what + " disagrees with the naive transform");
}

Dag checkedCosineDag(int n, const std::function<std::vector<NodeId>(Dag&, const std::vector<NodeId>&)>& build,
                     const std::function<long(long i, long k)>& angle, long den, const std::string& what) {
    Dag dag(ValueKind::Real, 1);
    std::vector<NodeId> x(n);
    for (int i = 0; i < n; ++i) x[i] = dag.input(i);
    const std::vector<NodeId> y = build(dag, x);
    for (int k = 0; k < n; ++k) dag.output(k, y[k]);
    const std::vector<Real> in = randomReals(n, 7u + n);
    std::vector<Real> want(n);
    for (int k = 0; k < n; ++k)
        for (int i = 0; i < n; ++i) want[k] += in[i] * cosPiRatio(angle(i, k), den);
    expectClose(run(dag, in, n), want, what + " " + std::to_string(n));
    return dag;
}

EmitOptions vertical(const Target& t, std::function<std::string(int)> load, std::function<std::string(int)> store) {
    EmitOptions o;
    o.mode = EmitMode::Vertical;
    o.precision = t.precision;
    o.aligned = false;
    o.load = std::move(load);
    o.store = std::move(store);
    return o;
}

namespace {

// ---- R_M: inputs 0..M-1 (the second half arrives unnegated), outputs 2k + c.
Dag rodftDag(int m) {
    Dag dag(ValueKind::Real, 1);
    Values s(m), re, im;
    for (int n = 0; n < m; ++n) s[n] = n < m / 2 ? dag.input(n) : dag.neg(dag.input(n));
    buildRodft(dag, s, re, im);
    for (int k = 0; k < m / 2; ++k) dag.output(2 * k, re[k]), dag.output(2 * k + 1, im[k]);
    std::vector<Real> x = randomReals(m, 11u + m), want(m);
    for (int k = 0; k < m / 2; ++k)
        for (int n = 0; n < m; ++n) {
            const Real sn = n < m / 2 ? x[n] : -x[n];
            want[2 * k] += sn * cosPiRatio(static_cast<long>(n) * (2 * k + 1), m);
            want[2 * k + 1] -= sn * sinPiRatio(static_cast<long>(n) * (2 * k + 1), m);
        }
    expectClose(run(dag, x, m), want, "R_" + std::to_string(m));
    return dag;
}


// Rows 4 KiB apart share one cache set (2 KiB apart: one of two sets). When
// a set gets more of the M output rows (v apart) than the cache has ways,
// 32 lanes at a time (8 lane groups in 32f, 16 in 64f: two or four cache
// lines of every row) go through local blocks, so that each line of the strided
// rows is read and written once instead of once per group, and each row's
// page is visited once per block (the rows of one block lie on as many
// pages as the data TLB holds, or more).
const char* kLeafBlocked = R"(    if ($N * std::min<long>(v * sizeof($T), 4096) > 8 * 4096 && (rootD & ($B * $L - 1)) == 0) {
        for (; lane < v; lane += $B * $L) {
            const long offset = 2L * lane - (lane & (rootD - 1));
            const $T* fwdRow = x + offset;
            const $T* reflRow = x + (2L * n - $B * $L) - offset;
            alignas(64) $T inBlock[$N * $B * $L], outBlock[$N * $B * $L];
            for (int j = 0; j < $H; ++j)
                for (int q = 0; q < $B * $L; q += $L) {
                    _mm_store_$S(inBlock + j * $B * $L + q, _mm_loadu_$S(fwdRow + j * stride + q));
                    // Reflected rows reversed: group g's lanes at g's place.
                    _mm_store_$S(inBlock + ($H + j) * $B * $L + ($B - 1) * $L - q,
                                 reversed(_mm_loadu_$S(reflRow - ($H + j) * stride + q)));
                }
            for (int group = 0; group < $B; ++group) {
                constexpr long stride = $B * $L, revStride = stride;
                const int v = $B * $L;
                const $T* fwd = inBlock + $L * group;
                const $T* rev = fwd + $H * stride;
                $T* out = outBlock + $L * group;
$blockbody            }
            for (int e = 0; e < $N; ++e)
                for (int q = 0; q < $B * $L; q += $L)
                    _mm_storeu_$S(dst + e * static_cast<long>(v) + lane + q, _mm_load_$S(outBlock + e * $B * $L + q));
        }
    }
)";

const char* kLeaf = R"(namespace {
// V: the lane count when known at compile time (0: lanes).
template <int V>
void leafStage_$N_$P(const $T* x, int n, $T* dst, int lanes, int rootD) {
    const int v = V ? V : lanes;
    const long stride = 2L * v;
    int lane = 0;
$blocked    for (; lane < v; lane += $L) {
        // Lane l reads u[2l - (l mod d) + 2v j]; rootD is a power of two.
        const long offset = 2L * lane - (lane & (rootD - 1));
        const $T* fwd = x + offset;
        const $T* refl = x + (2L * n - $L) - offset;
        $T* out = dst + lane;
        alignas(16) $T rev[$H * $L];
        constexpr long revStride = $L;
$stage$body    }
}
}  // namespace

// The root of N = 1024 and 2048 interleaves 32 lanes.
void owngDCT4_leaf_$N_$P(const $T* x, int n, $T* dst, int v, int rootD) {
    if (v == 32)
        leafStage_$N_$P<32>(x, n, dst, v, rootD);
    else
        leafStage_$N_$P<0>(x, n, dst, v, rootD);
}
)";

// Second pass of R_M split with radix dp (M' = M/dp): for group g < M'/2,
// the dp sub-results F'_n2[g] (inputs 2 n2 + c) are twiddled by
// e^{-i pi n2 (2g+1)/M} and combined by a complex DFT of size dp; output k
// of the DFT is F[g + M' k] (k < dp/2) or the conjugate F[M'(dp-k) - 1 - g].
// Outputs are numbered 2k + c by the index of F.
Dag splitPassDag(int m, int dp, int g) {
    const int sub = m / dp;
    Dag dag(ValueKind::Real, 1);
    Values re(dp), im(dp);
    for (int n2 = 0; n2 < dp; ++n2) {
        re[n2] = dag.input(2 * n2), im[n2] = dag.input(2 * n2 + 1);
        const Real c = cosPiRatio(static_cast<long>(n2) * (2 * g + 1), m), sn = sinPiRatio(static_cast<long>(n2) * (2 * g + 1), m);
        const NodeId r = dag.add(dag.scale(c, re[n2]), dag.scale(sn, im[n2]));
        im[n2] = dag.sub(dag.scale(c, im[n2]), dag.scale(sn, re[n2]));
        re[n2] = r;
    }
    buildPairDft(dag, re, im);
    for (int k = 0; k < dp; ++k) {
        const bool upper = 2 * k >= dp;
        const int f = upper ? sub * (dp - k) - 1 - g : g + sub * k;
        dag.output(2 * f, re[k]);
        dag.output(2 * f + 1, upper ? dag.neg(im[k]) : im[k]);
    }
    const std::vector<Real> x = randomReals(2 * dp, 17u + m + g);
    std::vector<Real> want(m, 0);
    std::vector<char> used(m, 0);
    for (int k = 0; k < dp; ++k) {
        Complex q = 0;
        for (int n2 = 0; n2 < dp; ++n2) {
            // e^{-i pi n2 (2g+1)/M} e^{-2 pi i n2 k/dp} = e^{-i pi n2 (2g+1 + 2 k M') / M}
            const long a = static_cast<long>(n2) * (2 * g + 1 + 2L * k * sub);
            q += Complex(x[2 * n2], x[2 * n2 + 1]) * Complex(cosPiRatio(a, m), -sinPiRatio(a, m));
        }
        const bool upper = 2 * k >= dp;
        const int f = upper ? sub * (dp - k) - 1 - g : g + sub * k;
        want[2 * f] = q.real(), want[2 * f + 1] = upper ? -q.imag() : q.imag();
        used[2 * f] = used[2 * f + 1] = 1;
    }
    const std::vector<Real> got = run(dag, x, m);
    std::vector<Real> a, b;
    for (int e = 0; e < m; ++e)
        if (used[e]) a.push_back(got[e]), b.push_back(want[e]);
    expectClose(a, b, "R_" + std::to_string(m) + " second pass");
    return dag;
}

// The body of R_M on one lane group: up to 8 in one piece, larger sizes in
// two passes through a local array (R_8 on s[dp n1 + n2], then twiddles and
// DFT_dp with dp = M/8), which keeps every piece close to the registers.
EmitResult leafBody(const Target& t, int m) {
    const int l = t.lanes();
    auto input = [m, l](int n) {
        return n < m / 2 ? "fwd + " + num(n) + " * stride" : "rev + " + num(n - m / 2) + " * revStride";
    };
    auto output = [](int e) { return "out + " + num(e) + "L * v"; };
    if (m <= 8) return emitBody(rodftDag(m), vertical(t, input, output));
    const int sub = 8, dp = m / sub;
    EmitResult all;
    all.body = "alignas(16) " + t.real() + " mid[" + num(m * l) + "];\n";
    const Dag first = rodftDag(sub);
    for (int n2 = 0; n2 < dp; ++n2) {
        // Input i of the sub-transform is s[dp i + n2]; output 2k + c goes to mid row (n2, k, c).
        const EmitResult r = emitBody(first, vertical(
            t, [&](int i) { return input(dp * i + n2); },
            [n2, sub, l](int e) { return "mid + " + num(l * (n2 * sub + e)); }));
        all.body += "{\n" + indent(r.body) + "}\n";
        all.counts.arithmetic += r.counts.arithmetic, all.counts.loads += r.counts.loads;
        all.counts.stores += r.counts.stores;
    }
    for (int g = 0; g < sub / 2; ++g) {
        const EmitResult r = emitBody(splitPassDag(m, dp, g), vertical(
            t, [g, sub, l](int i) { return "mid + " + num(l * ((i / 2) * sub + 2 * g + i % 2)); }, output));
        all.body += "{\n" + indent(r.body) + "}\n";
        all.counts.arithmetic += r.counts.arithmetic, all.counts.loads += r.counts.loads;
        all.counts.stores += r.counts.stores;
    }
    return all;
}

std::string leafKernel(const Target& t, int m, OpCounts& counts) {
    const EmitResult r = leafBody(t, m);
    counts = r.counts;
    auto w = words(t, m);
    // The reflected half, lanes reversed (the DAG negates it).
    w["$stage"] = lines(m / 2, [&](int j) {
        return "        _mm_store_" + t.sfx() + "(rev + " + num(t.lanes() * j) + ", reversed(_mm_loadu_" + t.sfx() +
               "(refl - " + num(m / 2 + j) + " * stride)));\n";
    });
    w["$body"] = indent(r.body);
    w["$blockbody"] = indent(indent(indent(r.body)));
    w["$B"] = num(32 / t.lanes());
    w["$blocked"] = m >= 16 ? fill(kLeafBlocked, w) : "";
    return fill(kLeaf, w);
}

// ---- Complex DFT of size n on (re, im) values: inputs re 0..n-1, im n..2n-1,
// input j first rotated by e^{-i pi j step / den} (step 0: none); output k:
// re at 2k, im at 2k+1, the imaginary part negated for k >= n/2 (those
// results are stored as conjugates).
Dag pairDftDag(int n, bool conjugateUpperHalf, long step = 0, long den = 1) {
    Dag dag(ValueKind::Real, 1);
    Values re(n), im(n);
    for (int i = 0; i < n; ++i) {
        re[i] = dag.input(i), im[i] = dag.input(n + i);
        if (step == 0 || i == 0) continue;
        const Real c = cosPiRatio(i * step, den), sn = sinPiRatio(i * step, den);
        const NodeId r = dag.add(dag.scale(c, re[i]), dag.scale(sn, im[i]));
        im[i] = dag.sub(dag.scale(c, im[i]), dag.scale(sn, re[i]));
        re[i] = r;
    }
    buildPairDft(dag, re, im);
    for (int k = 0; k < n; ++k) {
        dag.output(2 * k, re[k]);
        dag.output(2 * k + 1, conjugateUpperHalf && 2 * k >= n ? dag.neg(im[k]) : im[k]);
    }
    const std::vector<Real> x = randomReals(2 * n, 3u + n);
    std::vector<Complex> z(n);
    for (int i = 0; i < n; ++i)
        z[i] = Complex(x[i], x[n + i]) * Complex(cosPiRatio(i * step, den), -sinPiRatio(i * step, den));
    const std::vector<Complex> dft = naiveDft(z, -1);
    std::vector<Real> want(2 * n);
    for (int k = 0; k < n; ++k) {
        want[2 * k] = dft[k].real();
        want[2 * k + 1] = conjugateUpperHalf && 2 * k >= n ? -dft[k].imag() : dft[k].imag();
    }
    expectClose(run(dag, x, 2 * n), want, "complex DFT " + std::to_string(n));
    return dag;
}

// Output side of a recursive split: for each group g and lane block, the d'
// sub-results are twiddled and combined by a complex DFT of size d'; output
// row r of the lower (upper) half at lo (hi) + r * step, its imaginary part
// `out` further.
const char* kSplit = R"(namespace {
// V: the lane count when known at compile time (0: lanes), which lets the
// bodies address their rows with constant offsets.
template <int V>
void splitStage_$N_$P(const $T* src, $T* dst, int lanes, int groups, int sub, const $T* table) {
    const long v = V ? V : lanes, row = v * $N, rowStep = 2L * sub * v;
    for (int g = 0; g < groups; ++g) {
        const $T* tab = table + g * (2 * $N - 2) * $L;
        $T* const loRows = dst + 2L * g * v;
        $T* const hiRows = dst + 2L * (sub - 1 - g) * v;
        int lane = 0;
$blocked        for (; lane < v; lane += $L) {
            const $T* in = src + 2 * g * row + lane;
            $T* lo = loRows + lane;
            $T* hi = hiRows + lane;
            const long out = v, step = rowStep;
$body        }
    }
}
}  // namespace

// Every recursive plan up to N = 2^16 interleaves the root's 32 lanes.
void owngDCT4_split_$N_$P(const $T* src, $T* dst, int v, int groups, int sub, const $T* table) {
    if (v == 32)
        splitStage_$N_$P<32>(src, dst, v, groups, sub, table);
    else
        splitStage_$N_$P<0>(src, dst, v, groups, sub, table);
}
)";

// Rows of 4 KiB and more apart share one cache set; with d' = 32 there are
// more rows of one set than the cache has ways. Eight lane groups (two cache
// lines of every row) at a time then go through local blocks, so that each
// line is read and written once and each output row's page visited once per
// block; the bodies address the input block with constant offsets.
const char* kSplitBlocked = R"(        for (; rowStep * sizeof($T) >= 4096 && lane + $B * $L <= v; lane += $B * $L) {
            // Input rows in place when their distance is known, else copied.
            alignas(64) $T inBlock[V ? 1 : 2 * $N * $B * $L], loBlock[$N * $B * $L], hiBlock[$N * $B * $L];
            const $T* rows = src + 2 * g * row + lane;
            if constexpr (V == 0)
                for (int r = 0; r < 2 * $N; ++r)
                    for (int q = 0; q < $B * $L; q += $L)
                        _mm_store_$S(inBlock + r * $B * $L + q, _mm_loadu_$S(rows + r * v + q));
            for (int q = 0; q < $B; ++q) {
                constexpr long v = V ? V : $B * $L, row = $N * v, out = $B * $L, step = 2 * out;
                const $T* in = (V ? rows : inBlock) + $L * q;
                $T* lo = loBlock + $L * q;
                $T* hi = hiBlock + $L * q;
$blockbody            }
            for (int r = 0; r < $N; ++r)
                for (int q = 0; q < $B * $L; q += $L) {
                    const long at = (r / 2) * rowStep + (r % 2) * v + lane + q;
                    _mm_storeu_$S(loRows + at, _mm_load_$S(loBlock + r * $B * $L + q));
                    _mm_storeu_$S(hiRows + at, _mm_load_$S(hiBlock + r * $B * $L + q));
                }
        }
)";

// Store target of DFT output k of a split: row k of the lower block or, for
// k >= d'/2, row d'-1-k of the upper block (conjugated by the DAG).
std::string splitStore(int d, int k, bool imag) {
    const bool upper = 2 * k >= d;
    const int rowIndex = upper ? d - 1 - k : k;
    return std::string(upper ? "hi" : "lo") + (imag ? " + out" : "") + " + " + std::to_string(rowIndex) + " * step";
}

// A body of its own scope (several bodies share names).
std::string block(const std::string& body) { return "{\n" + indent(body) + "}\n"; }

std::string splitKernel(const Target& t, int d, OpCounts& counts) {
    const int l = t.lanes();
    const std::string ld = "_mm_loadu_" + t.sfx(), st = "_mm_store_" + t.sfx();
    auto add = [&](const OpCounts& c) {
        counts.arithmetic += c.arithmetic, counts.shuffles += c.shuffles;
        counts.loads += c.loads, counts.stores += c.stores;
    };
    // Loads value k into re<k>, im<k>, rotated by table pair `entry` (none when negative).
    auto load = [&](int k, int entry) {
        std::string code = t.vec() + " re" + num(k) + " = " + ld + "(in + " + num(k) + "L * v), im" + num(k) + " = " +
                           ld + "(in + row + " + num(k) + "L * v);\n";
        if (entry >= 0) code += "rotate(re" + num(k) + ", im" + num(k) + ", tab + " + num(2 * entry * l) + ");\n";
        return code;
    };
    std::string code;
    if (d >= 16) {
        // Two passes through a local array: for each b, the values n2 = 4a + b
        // (table twiddles), a DFT of size d'/4 over a, then the twiddles of the
        // second pass; then for each t a radix 4 over b. d' = 32: first
        // twiddles pi L a/4, second pi (L + t) b/16 from the table; d' = 16:
        // first from the table, second e^{-2 pi i b t/16} inside the rounds.
        const int radix = d / 4;
        code += "alignas(16) " + t.real() + " mid[" + num(2 * d * l) + "];\n";
        const Dag first = pairDftDag(radix, false);
        for (int b = 0; b < 4; ++b) {
            std::string part;
            for (int a = 0; a < radix; ++a) {
                const int k = 4 * a + b;
                part += load(k, d == 32 ? (a > 0 ? a - 1 : -1) : k - 1);
            }
            const EmitResult r = emitBody(first, vertical(
                t, [b, radix](int i) { return std::string(i < radix ? "&re" : "&im") + num(4 * (i % radix) + b); },
                [b](int e) { return std::string(e % 2 ? "&im" : "&re") + num(4 * (e / 2) + b); }));
            add(r.counts);
            part += r.body;
            for (int a = 0; a < radix; ++a) {
                const int k = 4 * a + b;
                if (d == 32 && b > 0)
                    part += "rotate(re" + num(k) + ", im" + num(k) + ", tab + " + num(2 * (7 + 3 * a + b - 1) * l) + ");\n";
                part += st + "(mid + " + num(2 * k * l) + ", re" + num(k) + ");\n" + st + "(mid + " +
                        num((2 * k + 1) * l) + ", im" + num(k) + ");\n";
            }
            code += block(part);
        }
        for (int round = 0; round < radix; ++round) {
            // Output k2 of round t is DFT output t + radix k2; k2 >= 2 lands in the upper half.
            const Dag four = d == 32 ? pairDftDag(4, true) : pairDftDag(4, true, round, 8);
            const EmitResult r = emitBody(four, vertical(
                t, [round, l](int i) { return "mid + " + num((2 * (4 * round + i % 4) + i / 4) * l); },
                [round, d, radix](int e) { return splitStore(d, round + radix * (e / 2), e % 2); }));
            add(r.counts);
            code += block(r.body);
        }
    } else {
        for (int k = 0; k < d; ++k) code += load(k, k - 1);
        const EmitResult r = emitBody(pairDftDag(d, true), vertical(
            t, [d](int i) { return std::string(i < d ? "&re" : "&im") + num(i % d); },
            [d](int e) { return splitStore(d, e / 2, e % 2); }));
        add(r.counts);
        code += r.body;
    }
    auto w = words(t, d);
    w["$body"] = indent(indent(indent(code)));
    w["$blockbody"] = indent(w["$body"]);
    w["$B"] = "8";
    // d' = 16 puts eight rows in a set, as many as it has ways: blocking then
    // pays only in 64f (measured), where a cache line holds four lane groups
    // of two lanes and the plain loop revisits each line four times.
    w["$blocked"] = d >= 32 || (d == 16 && !t.f32()) ? fill(kSplitBlocked, w) : "";
    return fill(kSplit, w);
}

}  // namespace

// ---- Direct DCT-IV of length N, scalar.
Dag directDag(int n) {
    return checkedCosineDag(n, buildDct4, [](long i, long k) { return (2 * i + 1) * (2 * k + 1); }, 4L * n, "DCT-IV");
}

namespace {

// Length 32 runs the split path on one vector group: R_8 on d = 4 lanes into
// a local work array, then the d = 4 output side with its twiddles as
// constants (the layout of the plan's env4 table).
std::string splitDirect32(const Target& t) {
    const int n = 32, d = 4, m = n / (2 * d), l = t.lanes();
    std::string table;
    for (int g = 0; g < m / l; ++g)
        for (int k = 0; k < 2 * d; ++k)
            for (int j = 0; j < l; ++j) {
                const long angle = static_cast<long>(2 * (l * g + j) + 1) * (2 * (k / 2) + 1);
                const Real value = k % 2 ? sinPiRatio(angle, 4 * n) : cosPiRatio(angle, 4 * n);
                table += (table.empty() ? "" : ", ") + literal(value, t.precision);
            }
    return "void owngDCT4_direct_32_" + t.tag() + "(const " + t.real() + "* x, " + t.real() + "* y) {\n" +
           "    alignas(16) static const " + t.real() + " kTwiddles[] = {" + table + "};\n" +
           "    alignas(16) " + t.real() + " work[32];\n" +
           "    owngDCT4_leaf_8_" + t.tag() + "(x, 32, work, 4, 4);\n" +
           "    owngDCT4_output_4_" + t.tag() + "(work, y, 32, kTwiddles);\n}\n";
}

std::string directKernel(const Target& t, int n, OpCounts& counts) {
    if (n == 32) return splitDirect32(t);
    EmitOptions o;
    o.mode = EmitMode::Scalar;
    o.precision = t.precision;
    o.load = [](int i) { return "x + " + std::to_string(i); };
    o.store = [](int i) { return "y + " + std::to_string(i); };
    const EmitResult r = emitBody(directDag(n), o);
    counts = r.counts;
    return "void owngDCT4_direct_" + std::to_string(n) + "_" + t.tag() + "(const " + t.real() + "* x, " + t.real() +
           "* y) {\n" + r.body + "}\n";
}


void generate(SourceSet& out) {
    out.setPreamble(
        "// Generated by kfpg_gen: the DCT-IV compute stages. Do not edit.\n"
        "#include <emmintrin.h>\n#include <xmmintrin.h>\n\n#include <algorithm>\n\n#include \"dct4/codelets.h\"\n#include \"dct4/stage_helpers.h\"\n");
    char header[160];
    std::snprintf(header, sizeof header, "%-30s %6s %6s %6s", "function", "arith", "shuf", "ld/st");
    out.reportLine(header);
    auto add = [&](const std::string& code, const OpCounts& c) {
        out.add("\nnamespace kfpg::dct4 {\n\n" + code + "\n}  // namespace kfpg::dct4\n", c.total());
    };
    auto report = [&](const std::string& name, const OpCounts& c) {
        char line[160];
        std::snprintf(line, sizeof line, "%-30s %6ld %6ld %6ld", name.c_str(), c.arithmetic, c.shuffles,
                      c.loads + c.stores);
        out.reportLine(line);
    };
    for (Precision p : {Precision::F32, Precision::F64}) {
        const Target t{p};
        OpCounts c;
        for (int m = 2; m <= 64; m *= 2) {
            const std::string code = leafKernel(t, m, c);
            add(code, c);
            report("leaf_" + std::to_string(m) + "_" + t.tag(), c);
        }
        for (int d = t.lanes(); d <= 32; d *= 2) {
            const std::string code = outputKernel(t, d, c);
            add(code, c);
            report("output_" + std::to_string(d) + "_" + t.tag(), c);
        }
        for (int d = 2; d <= 32; d *= 2) {
            c = OpCounts{};
            const std::string code = splitKernel(t, d, c);
            add(code, c);
            report("split_" + std::to_string(d) + "_" + t.tag(), c);
        }
        for (int n = 2; n <= 32; n *= 2) {
            const std::string code = directKernel(t, n, c);
            add(code, c);
            report("direct_" + std::to_string(n) + "_" + t.tag(), c);
        }
    }
}

const bool registered = registerFamily({"dct4", generate});

}  // namespace

}  // namespace kfpg::gen::dct4family
