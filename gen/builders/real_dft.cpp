#include "real_dft.h"

#include <algorithm>
#include <memory>
#include <stdexcept>

#include "builders/dft_table.h"
#include "builders/real_dft_table.h"
#include "evaluate.h"
#include "transpose.h"

namespace kfpg::gen {

namespace {

// A complex value as two real nodes; a real value has the zero node as its
// imaginary part.
struct Pair {
    NodeId re, im;
};

using Spectrum = std::vector<Pair>;

// Paired direct sums are built in blocks of this many rows (one vector
// per row and block: eight sums in flight, and registers left for the
// operand and the product).
constexpr int kRowsPerBlock = 8;
// Direct lengths of up to this many symmetric pairs (3 and 5) sum exactly
// as they are written out: from x0, left to right.
constexpr int kWrittenOutTerms = 2;

class Builder {
public:
    // n: the whole length (its row may be swapped), or 0 for blocks only.
    Builder(Dag& dag, const RealDftOptions& options, int n = 0)
        : dag_(dag), options_(options), n_(n), row_(n ? realRowBuilt(n, options) : RealRow{}),
          twoChains_(n && !options.forTransposition && builtForAccuracy(n, {.singlePrecision = options.wideProducts})) {}

    // Whole spectrum X[0..n-1] of n real values; X[n-k] is conj(X[k]), free.
    Spectrum real(const std::vector<NodeId>& x) {
        const RealRow& row = rowOf(static_cast<int>(x.size()));
        switch (row.method) {
            case RealMethod::Butterfly: return realButterfly(x);
            case RealMethod::Direct: return realDirect(x);
            case RealMethod::Convolution: return realConvolution(x);
            case RealMethod::CooleyTukey:
            case RealMethod::PrimeFactor: break;
        }
        std::vector<Pair> values;
        for (NodeId v : x) values.push_back({v, zero()});
        return twoStage(row, values);
    }

    // Spectrum of n complex values (a real sequence goes to real()).
    Spectrum complex(const std::vector<Pair>& x) {
        bool realValued = true;
        for (const Pair& p : x) realValued &= p.im == zero();
        if (realValued) {
            std::vector<NodeId> re;
            for (const Pair& p : x) re.push_back(p.re);
            return real(re);
        }
        const RealRow& row = rowOf(static_cast<int>(x.size()));
        switch (row.method) {
            case RealMethod::Butterfly: return complexButterfly(x);
            case RealMethod::Direct:
            case RealMethod::Convolution: return complexDirect(x);
            case RealMethod::CooleyTukey:
            case RealMethod::PrimeFactor: break;
        }
        return twoStage(row, x);
    }

private:
    NodeId zero() { return dag_.zero(); }
    const RealRow& rowOf(int n) const {
        if (n_ && n == n_) return row_;
        return rowFor(n, {options_.wideProducts, options_.forTransposition, true});
    }

    // c * x with a trigonometric constant; in double and rounded once for
    // single-precision kernels.
    NodeId mul(Real c, NodeId x) {
        if (c == 0) return zero();
        if (c == 1) return x;
        if (c == -1) return dag_.neg(x);
        if (!options_.wideProducts) return dag_.scale(c, x);
        NodeId product;
        {
            Dag::WideScope wide(dag_);
            product = dag_.scale(c, x);
        }
        return dag_.narrow(product);
    }

    Pair add(Pair a, Pair b) { return {dag_.add(a.re, b.re), dag_.add(a.im, b.im)}; }
    Pair sub(Pair a, Pair b) { return {dag_.sub(a.re, b.re), dag_.sub(a.im, b.im)}; }
    Pair conj(Pair a) { return {a.re, dag_.neg(a.im)}; }
    // -i a
    Pair mulMinusI(Pair a) { return {a.im, dag_.neg(a.re)}; }

    // w x for a complex constant w: a real or imaginary x, or a w on an axis
    // or a diagonal, takes fewer multiplications.
    Pair twiddle(Complex w, Pair x) {
        const Real wr = w.real(), wi = w.imag();
        if (wi == 0) return {mul(wr, x.re), mul(wr, x.im)};
        if (wr == 0) return {mul(-wi, x.im), mul(wi, x.re)};
        if (x.im == zero()) return {mul(wr, x.re), mul(wi, x.re)};
        if (x.re == zero()) return {mul(-wi, x.im), mul(wr, x.im)};
        if (std::abs(wr) == std::abs(wi)) {
            // w = |wr| (sr + i si): re = |wr| (sr a - si b), im = |wr| (sr b + si a)
            const Real h = std::abs(wr);
            const bool same = (wr > 0) == (wi > 0);
            const NodeId re = same ? dag_.sub(x.re, x.im) : dag_.add(x.re, x.im);
            const NodeId im = same ? dag_.add(x.im, x.re) : dag_.sub(x.im, x.re);
            return {mul(wr > 0 ? h : -h, re), mul(wr > 0 ? h : -h, im)};
        }
        if (!options_.wideProducts || !options_.wideSums)
            return {dag_.sub(mul(wr, x.re), mul(wi, x.im)), dag_.add(mul(wr, x.im), mul(wi, x.re))};
        NodeId re, im;
        {
            Dag::WideScope wide(dag_);
            re = dag_.sub(dag_.scale(wr, x.re), dag_.scale(wi, x.im));
            im = dag_.add(dag_.scale(wr, x.im), dag_.scale(wi, x.re));
        }
        return {dag_.narrow(re), dag_.narrow(im)};
    }

    // Sum from left to right.
    NodeId chain(const std::vector<NodeId>& terms) {
        NodeId s = terms[0];
        for (std::size_t i = 1; i < terms.size(); ++i) s = dag_.add(s, terms[i]);
        return s;
    }

    Spectrum realButterfly(const std::vector<NodeId>& x) {
        if (x.size() == 2) return {{dag_.add(x[0], x[1]), zero()}, {dag_.sub(x[0], x[1]), zero()}};
        const NodeId a = dag_.add(x[0], x[2]), b = dag_.add(x[1], x[3]);
        const Pair x1{dag_.sub(x[0], x[2]), dag_.neg(dag_.sub(x[1], x[3]))};
        return {{dag_.add(a, b), zero()}, x1, {dag_.sub(a, b), zero()}, conj(x1)};
    }

    // Symmetric pairs s_j = x_j + x_{n-j}, d_j = x_j - x_{n-j}:
    // R_k = x0 + sum cos(2 pi jk/n) s_j, I_k = -sum sin(2 pi jk/n) d_j.
    Spectrum realDirect(const std::vector<NodeId>& x) {
        const int n = static_cast<int>(x.size()), m = (n - 1) / 2;
        std::vector<NodeId> s(m + 1), d(m + 1);
        // R_0 = x0 + the odd-indexed pair sums + the even-indexed ones: two
        // chains side by side, as neighbouring pair sums share a vector.
        std::vector<NodeId> total[2] = {{x[0]}, {}};
        for (int j = 1; j <= m; ++j) {
            s[j] = dag_.add(x[j], x[n - j]);
            d[j] = dag_.sub(x[j], x[n - j]);
            total[1 - j % 2].push_back(s[j]);
        }
        Spectrum out(n);
        out[0] = {m == 1 ? chain(total[0]) : dag_.add(chain(total[0]), chain(total[1])), zero()};
        const bool wideSums = options_.wideProducts && options_.wideSums;
        std::vector<NodeId> re, im;
        {
            std::unique_ptr<Dag::WideScope> scope(wideSums ? new Dag::WideScope(dag_) : nullptr);
            auto product = [&](Real c, NodeId v) { return wideSums ? dag_.scale(c, v) : mul(c, v); };
            auto w = [&](int k, int j) { return unitRoot(static_cast<long>(j) * k, n, 1); };
            auto cosine = [&](int k, int j) { return w(k, j).real(); };
            auto sine = [&](int k, int j) { return w(k, j).imag(); };
            if (m <= kWrittenOutTerms) {
                // The lengths written out term by term: left to right from x0.
                for (int k = 1; k <= m; ++k) {
                    NodeId r = x[0], i = zero();
                    for (int j = 1; j <= m; ++j) {
                        r = dag_.add(r, product(cosine(k, j), s[j]));
                        i = dag_.add(i, product(sine(k, j), d[j]));
                    }
                    re.push_back(r), im.push_back(i);
                }
            } else {
                // Blocks of rows: the cosine sums, then the same rows' sine
                // sums, as neighbouring instances, so that lane pairing puts
                // row k of both in one vector and each product takes one
                // (s_j, d_j) operand.
                std::vector<NodeId> cosineSums(m), sineSums(m);
                for (int k0 = 1; k0 <= m; k0 += kRowsPerBlock) {
                    const int k1 = std::min(m + 1, k0 + kRowsPerBlock), group = dag_.newInstanceGroup();
                    auto cosines = [&] { rowSums(k0, k1, m, cosine, s, product, group, cosineSums); };
                    auto sines = [&] { rowSums(k0, k1, m, sine, d, product, group, sineSums); };
                    if (options_.sinesFirst) sines(), cosines();
                    else cosines(), sines();
                }
                for (int k = 1; k <= m; ++k) {
                    const NodeId c = cosineSums[k - 1], si = sineSums[k - 1];
                    re.push_back(cosine(k, 1) < 0 ? dag_.sub(x[0], c) : dag_.add(x[0], c));
                    im.push_back(sine(k, 1) < 0 ? dag_.neg(si) : si);
                }
            }
        }
        for (int k = 1; k <= m; ++k) {
            out[k] = {dag_.narrow(re[k - 1]), dag_.neg(dag_.narrow(im[k - 1]))};
            out[n - k] = conj(out[k]);
        }
        return out;
    }

    // Prime p, m = (p - 1) / 2: with a primitive root g, the pair sums
    // S[a] = x[g^a] + x[-g^a] and differences D[a] = x[g^a] - x[-g^a] give
    // Re X[g^b] - x0 = sum_a S[a] cos(2 pi g^(a+b) / p), a cyclic correlation
    // of length m, and -Im X[g^b] = sum_a D[a] sin(2 pi g^(a+b) / p), a
    // negacyclic one (g^m = -1). Each is a fast convolution (see convolve).
    Spectrum realConvolution(const std::vector<NodeId>& x) {
        const int p = static_cast<int>(x.size()), m = (p - 1) / 2;
        const long g = primitiveRoot(p);
        std::vector<NodeId> sums(m), diffs(m);
        std::vector<Real> cosines(m), sines(m);
        std::vector<NodeId> total{x[0]};
        for (int a = 0; a < m; ++a) {
            const long j = powMod(g, a, p);
            sums[a] = dag_.add(x[j], x[p - j]);
            diffs[a] = dag_.sub(x[j], x[p - j]);
            total.push_back(sums[a]);
            const Complex w = unitRoot(j, p, 1);
            cosines[a] = w.real(), sines[a] = w.imag();
        }
        // As convolutions: the cyclic one of S reversed, the negacyclic one of
        // D reversed with the wrapped terms negated.
        std::vector<NodeId> cyclicIn(m), negacyclicIn(m);
        for (int a = 0; a < m; ++a) {
            cyclicIn[a] = sums[(m - a) % m];
            negacyclicIn[a] = a == 0 ? diffs[0] : dag_.neg(diffs[m - a]);
        }
        const std::vector<NodeId> c = convolve(cyclicIn, cosines, false);
        std::vector<NodeId> z;
        if (m % 2) {
            // Odd m: with every odd-indexed term of both operands and of the
            // result negated, the negacyclic convolution is a cyclic one.
            for (int a = 1; a < m; a += 2) negacyclicIn[a] = dag_.neg(negacyclicIn[a]), sines[a] = -sines[a];
            z = convolve(negacyclicIn, sines, false);
            for (int b = 1; b < m; b += 2) z[b] = dag_.neg(z[b]);
        } else {
            z = convolve(negacyclicIn, sines, true);
        }
        Spectrum out(p, Pair{-1, -1});
        out[0] = {chain(total), zero()};
        for (int b = 0; b < m; ++b) {
            const long k = powMod(g, b, p);
            const NodeId re = dag_.add(x[0], c[b]);
            // -Im X[k] = z[b]; X[p - k] is its conjugate.
            out[k] = {re, dag_.neg(z[b])};
            out[p - k] = {re, z[b]};
        }
        return out;
    }

    // The spectrum a fast convolution works in, built on u (length m) in
    // `dag`: the real DFT (cyclic) or the odd-frequency DFT sum u[n]
    // exp(-i pi n (2k + 1) / m) (negacyclic), as output elements 2k (real
    // part) and 2k + 1 (imaginary part) for the bins that determine the
    // rest by symmetry.
    static std::vector<NodeId> convolutionSpectrum(Dag& dag, const RealDftOptions& options, const std::vector<NodeId>& u,
                                                   bool negacyclic) {
        Builder b(dag, options);
        const int m = static_cast<int>(u.size());
        std::vector<NodeId> out;
        if (!negacyclic) {
            const Spectrum X = b.real(u);
            for (int k = 0; k <= m / 2; ++k) out.push_back(X[k].re), out.push_back(X[k].im);
            return out;
        }
        std::vector<Pair> twisted;
        for (int n = 0; n < m; ++n) twisted.push_back(b.twiddle(unitRoot(n, 2L * m, -1), {u[n], dag.zero()}));
        const Spectrum X = b.complex(twisted);
        for (int k = 0; k < (m + 1) / 2; ++k) out.push_back(X[k].re), out.push_back(X[k].im);
        return out;
    }

    // y = u * h, cyclic or negacyclic, length m: the spectrum of u times the
    // spectrum of h (a constant, with the inverse transform's weights folded
    // in), back by the transposed spectrum network.
    std::vector<NodeId> convolve(const std::vector<NodeId>& u, const std::vector<Real>& h, bool negacyclic) {
        const int m = static_cast<int>(u.size());
        const std::vector<NodeId> spectrum = convolutionSpectrum(dag_, options_, u, negacyclic);
        // The same network on its own, to be transposed.
        Dag alone(ValueKind::Real, 1, dag_.signs());
        std::vector<NodeId> inputs;
        for (int n = 0; n < m; ++n) inputs.push_back(alone.input(n));
        const std::vector<NodeId> parts = convolutionSpectrum(alone, options_, inputs, negacyclic);
        for (std::size_t e = 0; e < parts.size(); ++e)
            if (alone.node(parts[e]).op != Op::Zero) alone.output(static_cast<int>(e), parts[e]);
        std::vector<NodeId> products(parts.size(), dag_.zero());
        for (std::size_t k = 0; k < parts.size() / 2; ++k) {
            // Bin k of h, and the weight of the bin in the inverse: bins that
            // stand for a conjugate pair count twice.
            Complex hk = 0;
            const long angleDen = negacyclic ? 2L * m : m, step = negacyclic ? 2 * static_cast<long>(k) + 1 : static_cast<long>(k);
            for (int n = 0; n < m; ++n) hk += h[n] * unitRoot(step * n, angleDen, -1);
            const bool single = negacyclic ? 2 * static_cast<int>(k) + 1 == m : k == 0 || 2 * static_cast<int>(k) == m;
            hk *= static_cast<Real>(single ? 1 : 2) / m;
            if (single) {
                // Both spectra are real in this bin by symmetry: the imaginary
                // parts (exact zeros, or rounding noise of a real value) drop out.
                products[2 * k] = mul(hk.real(), spectrum[2 * k]);
                continue;
            }
            const Pair y = twiddle(hk, {spectrum[2 * k], spectrum[2 * k + 1]});
            products[2 * k] = y.re, products[2 * k + 1] = y.im;
        }
        return transposeInto(dag_, alone, products, m);
    }

    // Rows k0..k1-1 of the sums sum_j c(k, j) v_j (j = 1..terms), advanced
    // term by term and marked as one instance of `group`. A row whose first
    // constant is negative is summed negated: no partial sum is then a
    // negation, and two sets of rows (cosines and sines) stay additions and
    // subtractions of single products position by position.
    template <class Coefficient, class Product>
    void rowSums(int k0, int k1, int terms, Coefficient c, const std::vector<NodeId>& v, Product product, int group,
                 std::vector<NodeId>& sums) {
        auto term = [&](int k, int j) { return product(c(k, 1) < 0 ? -c(k, j) : c(k, j), v[j]); };
        const NodeId begin = dag_.nextId();
        // One chain over all terms, or two: terms 1..half and the rest.
        const int half = twoChains_ ? (terms + 1) / 2 : terms;
        std::vector<NodeId> second(sums.size());
        for (int j = 1; j <= terms; ++j)
            for (int k = k0; k < k1; ++k) {
                NodeId& sum = j <= half ? sums[k - 1] : second[k - 1];
                sum = j == 1 || j == half + 1 ? term(k, j) : dag_.add(sum, term(k, j));
            }
        if (half < terms)
            for (int k = k0; k < k1; ++k) sums[k - 1] = dag_.add(sums[k - 1], second[k - 1]);
        dag_.markInstance(begin, group);
    }

    Spectrum complexButterfly(const std::vector<Pair>& x) {
        if (x.size() == 2) return {add(x[0], x[1]), sub(x[0], x[1])};
        const Pair a0 = add(x[0], x[2]), d0 = sub(x[0], x[2]);
        const Pair a1 = add(x[1], x[3]), r = mulMinusI(sub(x[1], x[3]));
        return {add(a0, a1), add(d0, r), sub(a0, a1), sub(d0, r)};
    }

    // X[k] = t_k - i u_k, X[n-k] = t_k + i u_k with t_k = x0 + sum cos a_m,
    // u_k = sum sin b_m over the pairs a_m = x_m + x_{n-m}, b_m = x_m - x_{n-m}.
    Spectrum complexDirect(const std::vector<Pair>& x) {
        const int n = static_cast<int>(x.size()), m = (n - 1) / 2;
        std::vector<Pair> a(m + 1), b(m + 1);
        std::vector<NodeId> totalRe{x[0].re}, totalIm{x[0].im};
        for (int j = 1; j <= m; ++j) {
            a[j] = add(x[j], x[n - j]);
            b[j] = sub(x[j], x[n - j]);
            totalRe.push_back(a[j].re);
            totalIm.push_back(a[j].im);
        }
        Spectrum out(n);
        out[0] = {chain(totalRe), chain(totalIm)};
        for (int k = 1; k <= m; ++k) {
            std::vector<NodeId> tRe{x[0].re}, tIm{x[0].im}, uRe, uIm;
            for (int j = 1; j <= m; ++j) {
                const Complex w = unitRoot(static_cast<long>(j) * k, n, 1);
                tRe.push_back(mul(w.real(), a[j].re));
                tIm.push_back(mul(w.real(), a[j].im));
                uRe.push_back(mul(w.imag(), b[j].re));
                uIm.push_back(mul(w.imag(), b[j].im));
            }
            const Pair t{chain(tRe), chain(tIm)}, iu = mulMinusI({chain(uRe), chain(uIm)});
            out[k] = add(t, iu);
            out[n - k] = sub(t, iu);
        }
        return out;
    }

    // n = n1 n2: transforms of size n1 over the n2 columns, twiddles
    // (Cooley-Tukey) or index maps (prime-factor), transforms of size n2 over
    // the rows. On a real sequence the columns are real transforms, row n1 - k1
    // is the conjugate of row k1, and only rows 0..n1/2 are computed.
    Spectrum twoStage(const RealRow& row, const std::vector<Pair>& x) {
        const int n = row.n, n1 = row.n1, n2 = row.n2;
        const bool twiddled = row.method == RealMethod::CooleyTukey;
        bool realValued = true;
        for (const Pair& p : x) realValued &= p.im == zero();
        auto inIndex = [&](int j1, int j2) { return twiddled ? j1 * n2 + j2 : (j1 * n2 + j2 * n1) % n; };
        const long e1 = twiddled ? 0 : inverseMod(n2 % n1, n1), e2 = twiddled ? 0 : inverseMod(n1 % n2, n2);
        auto outIndex = [&](int k1, int k2) {
            return twiddled ? k1 + n1 * k2 : static_cast<int>((k1 * n2 * e1 + k2 * n1 * e2) % n);
        };
        std::vector<Spectrum> columns(n2);
        const int columnGroup = dag_.newInstanceGroup();
        for (int j2 = 0; j2 < n2; ++j2) {
            std::vector<Pair> in(n1);
            for (int j1 = 0; j1 < n1; ++j1) in[j1] = x[inIndex(j1, j2)];
            const NodeId begin = dag_.nextId();
            columns[j2] = complex(in);
            dag_.markInstance(begin, columnGroup);
        }
        Spectrum out(n, Pair{-1, -1});
        const int rows = realValued ? n1 / 2 + 1 : n1;
        const int rowGroup = dag_.newInstanceGroup();
        for (int k1 = 0; k1 < rows; ++k1) {
            std::vector<Pair> in(n2);
            for (int j2 = 0; j2 < n2; ++j2)
                in[j2] = twiddled ? twiddle(unitRoot(static_cast<long>(j2) * k1, n, -1), columns[j2][k1]) : columns[j2][k1];
            const NodeId begin = dag_.nextId();
            const Spectrum z = complex(in);
            dag_.markInstance(begin, rowGroup);
            for (int k2 = 0; k2 < n2; ++k2) out[outIndex(k1, k2)] = z[k2];
        }
        for (int k = 1; k < n; ++k)
            if (out[k].re < 0) out[k] = conj(out[n - k]);
        return out;
    }

    Dag& dag_;
    RealDftOptions options_;
    int n_;        // the whole length
    RealRow row_;  // and its row
    bool twoChains_;  // its direct sums as two chains (builtForAccuracy)
};

}  // namespace

RealRow realRowBuilt(int n, const RealDftOptions& options) {
    const RealRow& row = rowFor(n, {options.wideProducts, options.forTransposition, false});
    return options.swapFactors && factorsMaySwap(row) ? swappedFactors(row) : row;
}

HalfSpectrum buildRealDft(Dag& dag, const std::vector<NodeId>& x, const RealDftOptions& options) {
    Builder builder(dag, options, static_cast<int>(x.size()));
    const Spectrum X = builder.real(x);
    HalfSpectrum half;
    for (std::size_t k = 0; k <= x.size() / 2; ++k) {
        half.re.push_back(X[k].re);
        half.im.push_back(X[k].im);
    }
    return half;
}

}  // namespace kfpg::gen
