// The DCT-IV family: the compute stages of the split path, each a loop
// around straight-line bodies emitted in vertical mode (every vector lane an
// independent transform), and the scalar direct transforms of lengths 2..32.
//
//   owngDCT4_leaf_<M>_<p>:    R_M on v interleaved lanes into the work rows;
//   owngDCT4_output_<d>_<p>:  root output side, rotations by the plan's table,
//                             then a DCT-II/DST-II pair of size d;
//   owngDCT4_split_<d'>_<p>:  output side of a recursive split, twiddles by
//                             the plan's table, then a complex DFT of size d';
//   owngDCT4_direct_<N>_<p>:  DCT-IV of length N, scalar.
// Every body is checked in long double against a naive transform first.
#include <cmath>
#include <cstdio>
#include <map>
#include <random>
#include <stdexcept>
#include <string>

#include "builders/dct4_blocks.h"
#include "emit.h"
#include "evaluate.h"
#include "family.h"

namespace kfpg::gen {

namespace {

constexpr Real kPi = 3.14159265358979323846264338327950288L;

struct Target {
    Precision precision;
    bool f32() const { return precision == Precision::F32; }
    int lanes() const { return f32() ? 4 : 2; }
    std::string tag() const { return f32() ? "32f" : "64f"; }
    std::string real() const { return f32() ? "float" : "double"; }
    std::string vec() const { return f32() ? "__m128" : "__m128d"; }
    std::string sfx() const { return f32() ? "ps" : "pd"; }
};

// Replaces every "$name" of the table in a text skeleton.
std::string fill(std::string text, const std::map<std::string, std::string>& values) {
    for (const auto& [key, value] : values)
        for (std::size_t at; (at = text.find(key)) != std::string::npos;) text.replace(at, key.size(), value);
    return text;
}

std::map<std::string, std::string> words(const Target& t, int size) {
    return {{"$T", t.real()},     {"$V", t.vec()},   {"$S", t.sfx()},      {"$L", std::to_string(t.lanes())},
            {"$P", t.tag()},      {"$N", std::to_string(size)}, {"$H", std::to_string(size / 2)}};
}

std::string indent(const std::string& body);

std::vector<Real> randomReals(int count, unsigned seed) {
    std::mt19937 rng(seed);
    std::uniform_real_distribution<double> u(-1, 1);
    std::vector<Real> x(count);
    for (Real& v : x) v = u(rng);
    return x;
}

// Evaluates a real DAG on real inputs; outputs by element.
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

EmitOptions vertical(const Target& t, std::function<std::string(int)> load, std::function<std::string(int)> store) {
    EmitOptions o;
    o.mode = EmitMode::Vertical;
    o.precision = t.precision;
    o.aligned = false;
    o.load = std::move(load);
    o.store = std::move(store);
    return o;
}

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

const char* kLeaf = R"(void owngDCT4_leaf_$N_$P(const $T* x, int n, $T* dst, int v, int rootD) {
    const long stride = 2L * v;
    for (int lane = 0; lane < v; lane += $L) {
        const long offset = 2L * lane - lane % rootD;
        const $T* fwd = x + offset;
        const $T* refl = x + (2L * n - $L) - offset;
        $T* out = dst + lane;
        alignas(16) $T rev[$H * $L];
        for (int j = 0; j < $H; ++j) {
            const $V r = _mm_loadu_$S(refl - ($H + j) * stride);
            _mm_store_$S(rev + $L * j, $REVERSE);
        }
$BODY    }
}
)";

std::string leafKernel(const Target& t, int m, OpCounts& counts) {
    const Dag dag = rodftDag(m);
    const EmitResult r = emitBody(dag, vertical(
        t, [m, &t](int i) {
            return i < m / 2 ? "fwd + " + std::to_string(i) + " * stride"
                             : "rev + " + std::to_string(t.lanes() * (i - m / 2));
        },
        [](int e) { return "out + " + std::to_string(e) + "L * v"; }));
    counts = r.counts;
    auto w = words(t, m);
    w["$REVERSE"] = t.f32() ? "_mm_shuffle_ps(r, r, 0x1B)" : "_mm_shuffle_pd(r, r, 1)";
    w["$BODY"] = indent(r.body);
    return fill(kLeaf, w);
}

// ---- Root output side: inputs a[0..d-1], b[d..2d-1] (b already alternated);
// outputs p < d: A[p] + B[d-p] (B[d] = 0), d + p - 1 for p = 1..d: A[p] - B[d-p].
Dag outputDag(int d) {
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
    // y[p] = sum a cos(pi(2r+1)p/(2d)) +- sum b' sin(...), b' = (-1)^r b.
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

const char* kOutput32 = R"(void owngDCT4_output_$N_32f(const float* w, float* y, int n, const float* table) {
    const int m = n / (2 * $N), M = 2 * m;
    for (int g = 0; g < m / 4; ++g) {
        const int i0 = 4 * g;
        const float* tab = table + g * (2 * $N * 4);
        alignas(16) float a[$N * 4], b[$N * 4], hi[$N * 4];
        for (int j = 0; j < $N; j += 4) {
            __m128 re[4], im[4];
            for (int t = 0; t < 4; ++t) {
                re[t] = _mm_load_ps(w + (2 * (i0 + t)) * $N + j);
                im[t] = _mm_load_ps(w + (2 * (i0 + t) + 1) * $N + j);
            }
            _MM_TRANSPOSE4_PS(re[0], re[1], re[2], re[3]);
            _MM_TRANSPOSE4_PS(im[0], im[1], im[2], im[3]);
            for (int t = 0; t < 4; ++t) {
                const __m128 c = _mm_load_ps(tab + 2 * (j + t) * 4), s = _mm_load_ps(tab + (2 * (j + t) + 1) * 4);
                _mm_store_ps(a + 4 * (j + t), _mm_add_ps(_mm_mul_ps(re[t], c), _mm_mul_ps(im[t], s)));
                // The DST-II runs as a DCT-II of the alternating sequence.
                const __m128 bt = _mm_sub_ps(_mm_mul_ps(im[t], c), _mm_mul_ps(re[t], s));
                _mm_store_ps(b + 4 * (j + t), t % 2 ? _mm_sub_ps(_mm_setzero_ps(), bt) : bt);
            }
        }
$BODY        for (int p = 1; p <= $N; ++p) {
            const __m128 v = _mm_load_ps(hi + 4 * (p - 1));
            _mm_storeu_ps(y + M * p - 4 - i0, _mm_shuffle_ps(v, v, 0x1B));
        }
    }
}
)";

const char* kOutput64 = R"(void owngDCT4_output_$N_64f(const double* w, double* y, int n, const double* table) {
    const int m = n / (2 * $N), M = 2 * m;
    for (int g = 0; g < m / 2; ++g) {
        const int i0 = 2 * g;
        const double* tab = table + g * (2 * $N * 2);
        alignas(16) double a[$N * 2], b[$N * 2], hi[$N * 2];
        for (int j = 0; j < $N; j += 2) {
            const __m128d r0 = _mm_load_pd(w + (2 * i0) * $N + j), r1 = _mm_load_pd(w + (2 * i0 + 2) * $N + j);
            const __m128d m0 = _mm_load_pd(w + (2 * i0 + 1) * $N + j), m1 = _mm_load_pd(w + (2 * i0 + 3) * $N + j);
            const __m128d re[2] = {_mm_unpacklo_pd(r0, r1), _mm_unpackhi_pd(r0, r1)};
            const __m128d im[2] = {_mm_unpacklo_pd(m0, m1), _mm_unpackhi_pd(m0, m1)};
            for (int t = 0; t < 2; ++t) {
                const __m128d c = _mm_load_pd(tab + 2 * (j + t) * 2), s = _mm_load_pd(tab + (2 * (j + t) + 1) * 2);
                _mm_store_pd(a + 2 * (j + t), _mm_add_pd(_mm_mul_pd(re[t], c), _mm_mul_pd(im[t], s)));
                // The DST-II runs as a DCT-II of the alternating sequence.
                const __m128d bt = _mm_sub_pd(_mm_mul_pd(im[t], c), _mm_mul_pd(re[t], s));
                _mm_store_pd(b + 2 * (j + t), t % 2 ? _mm_sub_pd(_mm_setzero_pd(), bt) : bt);
            }
        }
$BODY        for (int p = 1; p <= $N; ++p) {
            const __m128d v = _mm_load_pd(hi + 2 * (p - 1));
            _mm_storeu_pd(y + M * p - 2 - i0, _mm_shuffle_pd(v, v, 1));
        }
    }
}
)";

std::string outputKernel(const Target& t, int d, OpCounts& counts) {
    const Dag dag = outputDag(d);
    const int l = t.lanes();
    const EmitResult r = emitBody(dag, vertical(
        t, [d, l](int i) { return i < d ? "a + " + std::to_string(l * i) : "b + " + std::to_string(l * (i - d)); },
        [d, l](int e) {
            return e < d ? "y + " + std::to_string(e) + "L * M + i0" : "hi + " + std::to_string(l * (e - d));
        }));
    counts = r.counts;
    auto w = words(t, d);
    w["$BODY"] = indent(r.body);
    return fill(t.f32() ? kOutput32 : kOutput64, w);
}

// ---- Complex DFT of size n on (re, im) values: inputs re 0..n-1, im n..2n-1;
// output k: re at 2k, im at 2k+1, the imaginary part negated for k >= n/2
// (those results are stored as conjugates).
Dag pairDftDag(int n, bool conjugateUpperHalf) {
    Dag dag(ValueKind::Real, 1);
    Values re(n), im(n);
    for (int i = 0; i < n; ++i) re[i] = dag.input(i), im[i] = dag.input(n + i);
    buildPairDft(dag, re, im);
    for (int k = 0; k < n; ++k) {
        dag.output(2 * k, re[k]);
        dag.output(2 * k + 1, conjugateUpperHalf && 2 * k >= n ? dag.neg(im[k]) : im[k]);
    }
    const std::vector<Real> x = randomReals(2 * n, 3u + n);
    std::vector<Complex> z(n);
    for (int i = 0; i < n; ++i) z[i] = Complex(x[i], x[n + i]);
    const std::vector<Complex> dft = naiveDft(z, -1);
    std::vector<Real> want(2 * n);
    for (int k = 0; k < n; ++k) {
        want[2 * k] = dft[k].real();
        want[2 * k + 1] = conjugateUpperHalf && 2 * k >= n ? -dft[k].imag() : dft[k].imag();
    }
    expectClose(run(dag, x, 2 * n), want, "complex DFT " + std::to_string(n));
    return dag;
}

// Twiddled loads of the d' sub-results: element k of group g, lane block.
const char* kSplitHead = R"(void owngDCT4_split_$N_$P(const $T* src, $T* dst, int v, int groups, int sub, const $T* table) {
    const long row = static_cast<long>(v) * $N, step = 2L * sub * v;
    for (int g = 0; g < groups; ++g) {
        const $T* tab = table + g * (2 * $N - 2) * $L;
        for (int lane = 0; lane < v; lane += $L) {
            const $T* in = src + 2 * g * row + lane;
            $T* lo = dst + 2L * g * v + lane;
            $T* hi = dst + 2L * (sub - 1 - g) * v + lane;
            alignas(16) $T re[$N * $L], im[$N * $L];
            for (int k = 0; k < $N; ++k) {
                _mm_store_$S(re + $L * k, _mm_loadu_$S(in + k * v));
                _mm_store_$S(im + $L * k, _mm_loadu_$S(in + row + k * v));
            }
)";

const char* kRotate = R"(            for (int k = $from; k < $upto; ++k) {
                const int e = $entry;
                if (e < 0) continue;
                const $V c = _mm_load_$S(tab + 2 * e * $L), s = _mm_load_$S(tab + (2 * e + 1) * $L);
                const $V r = _mm_load_$S(re + $L * k), i = _mm_load_$S(im + $L * k);
                _mm_store_$S(re + $L * k, _mm_add_$S(_mm_mul_$S(r, c), _mm_mul_$S(i, s)));
                _mm_store_$S(im + $L * k, _mm_sub_$S(_mm_mul_$S(i, c), _mm_mul_$S(r, s)));
            }
)";

// Store target of DFT output k of a split: row k of the lower block or, for
// k >= d'/2, row d'-1-k of the upper block (conjugated by the DAG).
std::string splitStore(int d, int k, bool imag) {
    const bool upper = 2 * k >= d;
    const int rowIndex = upper ? d - 1 - k : k;
    return std::string(upper ? "hi" : "lo") + (imag ? " + v" : "") + " + " + std::to_string(rowIndex) + " * step";
}

// A body of its own scope inside the lane loop (several bodies share names).
std::string block(const std::string& body) { return "            {\n" + indent(indent(indent(body))) + "            }\n"; }

std::string splitKernel(const Target& t, int d, OpCounts& counts) {
    const int l = t.lanes();
    auto w = words(t, d);
    std::string code = fill(kSplitHead, w);
    auto rotate = [&](int first, int last, const std::string& entry) {
        auto rw = w;
        rw["$from"] = std::to_string(first), rw["$upto"] = std::to_string(last), rw["$entry"] = entry;
        code += fill(kRotate, rw);
    };
    auto add = [&](const OpCounts& c) {
        counts.arithmetic += c.arithmetic, counts.shuffles += c.shuffles;
        counts.loads += c.loads, counts.stores += c.stores;
    };
    if (d == 32) {
        // Radix 8 over a (n2 = 4a + b) after twiddles pi L a/4, then in eight
        // rounds t twiddles pi (L + t) b/16 and radix 4 over b.
        rotate(4, 32, "k / 4 - 1");
        const Dag eight = pairDftDag(8, false);
        for (int b = 0; b < 4; ++b) {
            auto at = [b, l](int i) {
                const int k = i % 8, part = i / 8 % 2;  // inputs and outputs alike: re 0..7, im 8..15
                return std::string(part ? "im" : "re") + " + " + std::to_string(l * (4 * k + b));
            };
            const EmitResult r = emitBody(eight, vertical(
                t, at, [b, l](int e) {
                    return std::string(e % 2 ? "im" : "re") + " + " + std::to_string(l * (4 * (e / 2) + b));
                }));
            add(r.counts);
            code += block(r.body);
        }
        rotate(0, 32, "k % 4 ? 7 + 3 * (k / 4) + k % 4 - 1 : -1");
        const Dag four = pairDftDag(4, true);
        for (int round = 0; round < 8; ++round) {
            // Output k2 of round t is DFT output t + 8 k2; k2 >= 2 lands in the upper half.
            const EmitResult r = emitBody(four, vertical(
                t, [round, l](int i) {
                    return std::string(i < 4 ? "re" : "im") + " + " + std::to_string(l * (4 * round + i % 4));
                },
                [round](int e) {
                    const int k = round + 8 * (e / 2);
                    return splitStore(32, k, e % 2);
                }));
            add(r.counts);
            code += block(r.body);
        }
    } else {
        rotate(1, d, "k - 1");
        const Dag dag = pairDftDag(d, true);
        const EmitResult r = emitBody(dag, vertical(
            t, [d, l](int i) { return std::string(i < d ? "re" : "im") + " + " + std::to_string(l * (i % d)); },
            [d](int e) { return splitStore(d, e / 2, e % 2); }));
        add(r.counts);
        code += indent(indent(r.body));
    }
    code += "        }\n    }\n}\n";
    return code;
}

// ---- Direct DCT-IV of length N, scalar.
Dag directDag(int n) {
    Dag dag(ValueKind::Real, 1);
    Values x(n);
    for (int i = 0; i < n; ++i) x[i] = dag.input(i);
    const Values y = buildDct4(dag, x);
    for (int k = 0; k < n; ++k) dag.output(k, y[k]);
    const std::vector<Real> in = randomReals(n, 7u + n);
    std::vector<Real> want(n);
    for (int k = 0; k < n; ++k)
        for (int i = 0; i < n; ++i) want[k] += in[i] * cosPiRatio(static_cast<long>(2 * i + 1) * (2 * k + 1), 4 * n);
    expectClose(run(dag, in, n), want, "DCT-IV " + std::to_string(n));
    return dag;
}

std::string directKernel(const Target& t, int n, OpCounts& counts) {
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

void generate(SourceSet& out) {
    out.setPreamble(
        "// Generated by kfpg_gen: the DCT-IV compute stages. Do not edit.\n"
        "#include <emmintrin.h>\n#include <xmmintrin.h>\n\n#include \"dct4/codelets.h\"\n");
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

}  // namespace kfpg::gen
