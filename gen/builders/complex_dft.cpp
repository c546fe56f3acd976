#include "complex_dft.h"

#include <algorithm>
#include <map>
#include <memory>
#include <stdexcept>

#include "builders/dft_table.h"
#include "evaluate.h"

namespace kfpg::gen {

namespace {

using Signal = std::vector<Slot>;

// `group` (G) is how many slots share one value: 1 when every lane of a
// value is an independent transform, 2 when one transform is spread over
// the two lanes of a two-lane DAG.
class Builder {
public:
    Builder(Dag& dag, const ComplexDftOptions& options) : dag_(dag), options_(options) {}

    Signal transform(int n, const Signal& x, int sign, int group, bool block) {
        const DftRow& row = dftRow(n);
        const DftAlgorithm algo = block ? row.asBlock : row.kernel;
        if (algo == DftAlgorithm::CooleyTukey || algo == DftAlgorithm::PrimeFactor)
            return twoStage(row, algo == DftAlgorithm::CooleyTukey, x, sign, group);
        if (algo == DftAlgorithm::Rader) return rader(n, x, sign, group);
        if (algo == DftAlgorithm::Direct && group == 2) return directPacked(x, sign);
        // Leaves run lane-parallel; a butterfly spread over lanes uses lane 0 only.
        std::vector<NodeId> v;
        for (const Slot& s : x) v.push_back(gather({s}));
        const std::vector<NodeId> out =
            algo == DftAlgorithm::Butterfly ? butterfly(v, sign) : direct(v, sign, !block && options_.wideDirectTerms);
        return wholeValues(out);
    }

    std::vector<NodeId> parallel(int n, const std::vector<NodeId>& x, int sign, bool block) {
        const Signal out = transform(n, wholeValues(x), sign, 1, block);
        std::vector<NodeId> v;
        for (const Slot& s : out) v.push_back(s.value);
        return v;
    }

private:
    static Signal wholeValues(const std::vector<NodeId>& v) {
        Signal s;
        for (NodeId id : v) s.push_back(Slot{id, 0, -1});
        return s;
    }

    NodeId materialise(const Slot& s, int lane) {
        if (s.element >= 0) {
            if (dag_.lanes() == 1) return dag_.input(s.element);
            std::vector<int> e(dag_.lanes(), -1);
            e[lane] = s.element;
            return dag_.inputLanes(e);
        }
        return s.value;
    }

    // One value whose lane l holds group[l] (lanes past the group are don't-care).
    NodeId gather(const Signal& group) {
        if (group.size() == 1 && (dag_.lanes() == 1 || group[0].element < 0)) {
            const Slot& s = group[0];
            if (s.element >= 0) return dag_.input(s.element);
            return s.lane == 0 ? s.value : dag_.shuffle(s.value, s.lane, s.value, s.lane);
        }
        if (group.size() == 1) return dag_.inputLanes({group[0].element, -1});
        const Slot &a = group[0], &b = group[1];
        if (a.element >= 0 && b.element >= 0) return dag_.inputLanes({a.element, b.element});
        const NodeId va = materialise(a, 0), vb = materialise(b, 1);
        return dag_.shuffle(va, a.element >= 0 ? 0 : a.lane, vb, b.element >= 0 ? 1 : b.lane);
    }

    // Per-lane constants for a group: whole values repeat the first.
    std::vector<Complex> laneConstants(const std::vector<Complex>& c, int group) {
        std::vector<Complex> out(dag_.lanes());
        for (int l = 0; l < dag_.lanes(); ++l) out[l] = group == 1 || l >= static_cast<int>(c.size()) ? c[0] : c[l];
        return out;
    }

    std::vector<NodeId> butterfly(const std::vector<NodeId>& x, int sign) {
        if (x.size() == 2) return {dag_.add(x[0], x[1]), dag_.sub(x[0], x[1])};
        const NodeId a0 = dag_.add(x[0], x[2]), d0 = dag_.sub(x[0], x[2]);
        const NodeId a1 = dag_.add(x[1], x[3]), d1 = dag_.sub(x[1], x[3]);
        const NodeId r = dag_.mulI(sign, d1);
        return {dag_.add(a0, a1), dag_.add(d0, r), dag_.sub(a0, a1), dag_.sub(d0, r)};
    }

    // Sum of terms as a balanced tree (short dependency chains); up to three
    // terms it is the left-to-right sum ((t0 + t1) + t2).
    NodeId balancedSum(const std::vector<NodeId>& terms, std::size_t lo, std::size_t hi) {
        if (hi - lo == 1) return terms[lo];
        const std::size_t mid = lo + (hi - lo + 1) / 2;
        return dag_.add(balancedSum(terms, lo, mid), balancedSum(terms, mid, hi));
    }
    NodeId balancedSum(const std::vector<NodeId>& terms) { return balancedSum(terms, 0, terms.size()); }

    // Rows advanced together: their running sums and a temporary fit the
    // sixteen vector registers (12 rows measured slower).
    static constexpr int kRowsPerBlock = 8;

    // Row sums s_r = init(r) + sum_{m=1..terms} term(r, m) (init -1: none):
    // a block of rows advances its running sums together term by term: the
    // sums stay in registers as independent chains, and every term is one
    // multiply by a constant and one add (a balanced tree per row keeps all
    // its products live at once and spills).
    template <class Init, class Term>
    std::vector<NodeId> blockedRowSums(int rows, int terms, Init init, Term term) {
        std::vector<NodeId> sums(rows);
        for (int r0 = 0; r0 < rows; r0 += kRowsPerBlock) {
            const int r1 = std::min(rows, r0 + kRowsPerBlock);
            for (int r = r0; r < r1; ++r) {
                const NodeId start = init(r);
                sums[r] = start < 0 ? term(r, 1) : dag_.add(start, term(r, 1));
            }
            for (int m = 2; m <= terms; ++m)
                for (int r = r0; r < r1; ++r) sums[r] = dag_.add(sums[r], term(r, m));
        }
        return sums;
    }

    // Symmetric pairs: X[k] = t_k + sign i u_k, X[p-k] = t_k - sign i u_k with
    // t_k = x0 + sum cos(2 pi k m / p) a_m, u_k = sum sin(2 pi k m / p) b_m.
    std::vector<NodeId> direct(const std::vector<NodeId>& x, int sign, bool wide) {
        const int p = static_cast<int>(x.size()), h = (p - 1) / 2;
        std::vector<NodeId> a(h + 1), b(h + 1);
        std::vector<NodeId> sumTerms{x[0]};
        for (int m = 1; m <= h; ++m) {
            a[m] = dag_.add(x[m], x[p - m]);
            b[m] = dag_.sub(x[m], x[p - m]);
            sumTerms.push_back(a[m]);
        }
        std::vector<NodeId> out(p);
        out[0] = balancedSum(sumTerms);
        if (!wide && h >= kBlockedDirectFrom) {
            // Row r is t_{r+1} or u_{r+1}. The t and u rows form separate blocks,
            // so that each term step of a block needs only a_m or only b_m.
            auto w = [&](int row, int m) { return unitRoot(static_cast<long>(row + 1) * m, p, 1); };
            const std::vector<NodeId> t = blockedRowSums(h, h, [&](int) { return x[0]; },
                                                         [&](int row, int m) { return dag_.scale(w(row, m).real(), a[m]); });
            const std::vector<NodeId> u = blockedRowSums(h, h, [](int) { return -1; },
                                                         [&](int row, int m) { return dag_.scale(w(row, m).imag(), b[m]); });
            for (int k = 1; k <= h; ++k) {
                const NodeId r = dag_.mulI(sign, u[k - 1]);
                out[k] = dag_.add(t[k - 1], r);
                out[p - k] = dag_.sub(t[k - 1], r);
            }
            return out;
        }
        for (int k = 1; k <= h; ++k) {
            NodeId t, u;
            {
                std::unique_ptr<Dag::WideScope> scope(wide ? new Dag::WideScope(dag_) : nullptr);
                std::vector<NodeId> tTerms{x[0]}, uTerms;
                for (int m = 1; m <= h; ++m) {
                    const Complex w = unitRoot(static_cast<long>(k) * m, p, 1);
                    tTerms.push_back(dag_.scale(w.real(), a[m]));
                    uTerms.push_back(dag_.scale(w.imag(), b[m]));
                }
                t = dag_.narrow(balancedSum(tTerms));
                u = dag_.narrow(balancedSum(uTerms));
            }
            const NodeId r = dag_.mulI(sign, u);
            out[k] = dag_.add(t, r);
            out[p - k] = dag_.sub(t, r);
        }
        return out;
    }

    // The same scheme spread over two lanes: outputs k and k+1 side by side,
    // every a_m, b_m broadcast to both lanes, per-lane constants.
    Signal directPacked(const Signal& x, int sign) {
        const int p = static_cast<int>(x.size()), h = (p - 1) / 2;
        std::vector<NodeId> aBoth(h + 1), bBoth(h + 1), pairSums;
        for (int m = 1; m <= h; m += 2) {
            const bool two = m + 1 <= h;
            const NodeId lo = two ? gather({x[m], x[m + 1]}) : zeroUpperLanes(x[m]);
            const NodeId hi = two ? gather({x[p - m], x[p - m - 1]}) : zeroUpperLanes(x[p - m]);
            const NodeId sum = dag_.add(lo, hi), diff = dag_.sub(lo, hi);
            pairSums.push_back(sum);
            for (int l = 0; l < (two ? 2 : 1); ++l) {
                aBoth[m + l] = dag_.shuffle(sum, l, sum, l);
                bBoth[m + l] = dag_.shuffle(diff, l, diff, l);
            }
        }
        const NodeId x0Both = gather({x[0], x[0]});
        const NodeId pairTotal = balancedSum(pairSums);
        const NodeId total = dag_.add(pairTotal, dag_.shuffle(pairTotal, 1, pairTotal, 1));
        Signal out(p);
        out[0] = Slot{dag_.add(x0Both, total), 0, -1};
        // rows 2j and 2j+1: t and u of the outputs k = 2j+1, 2j+2 (k + 1 > h repeats k)
        auto term = [&](int row, int m) {
            const int k = row / 2 * 2 + 1;
            const Complex w0 = unitRoot(static_cast<long>(k) * m, p, 1);
            const Complex w1 = k + 1 <= h ? unitRoot(static_cast<long>(k + 1) * m, p, 1) : w0;
            return row % 2 ? dag_.scaleLanes({w0.imag(), w1.imag()}, bBoth[m]) : dag_.scaleLanes({w0.real(), w1.real()}, aBoth[m]);
        };
        auto init = [&](int row) { return row % 2 ? -1 : x0Both; };
        const int rows = 2 * ((h + 1) / 2);
        std::vector<NodeId> sums;
        if (h >= kBlockedDirectFrom) {
            sums = blockedRowSums(rows, h, init, term);
        } else {
            for (int row = 0; row < rows; ++row) {
                std::vector<NodeId> terms;
                if (init(row) >= 0) terms.push_back(init(row));
                for (int m = 1; m <= h; ++m) terms.push_back(term(row, m));
                sums.push_back(balancedSum(terms));
            }
        }
        for (int k = 1; k <= h; k += 2) {
            const bool two = k + 1 <= h;
            const NodeId t = sums[k - 1], r = dag_.mulI(sign, sums[k]);
            const NodeId plus = dag_.add(t, r), minus = dag_.sub(t, r);
            for (int l = 0; l < (two ? 2 : 1); ++l) {
                out[k + l] = Slot{plus, l, -1};
                out[p - k - l] = Slot{minus, l, -1};
            }
        }
        return out;
    }

    // n = n1 n2: n2 transforms of size n1 over the columns, twiddles (Cooley-
    // Tukey) or none (prime-factor, with index maps), n1 transforms of size n2.
    Signal twoStage(const DftRow& row, bool twiddled, const Signal& x, int sign, int group) {
        const int n = row.n;
        const std::pair<int, int> factors = dftFactors(row, dag_.lanes());
        const int n1 = factors.first, n2 = factors.second;
        auto inIndex = [&](int j1, int j2) { return twiddled ? j1 * n2 + j2 : (j1 * n2 + j2 * n1) % n; };
        const long e1 = twiddled ? 0 : inverseMod(n2 % n1, n1), e2 = twiddled ? 0 : inverseMod(n1 % n2, n2);
        auto outIndex = [&](int k1, int k2) {
            return twiddled ? k1 + n1 * k2 : static_cast<int>((k1 * n2 * e1 + k2 * n1 * e2) % n);
        };
        // y[k1][j2]: where column j2's output k1 lives.
        std::vector<Signal> y(n1, Signal(n2));
        for (int j2 = 0; j2 < n2; j2 += group) {
            const int width = std::min(group, n2 - j2);
            if (width < group && worthSpreading(n1)) {
                // A lone column is spread over the lanes rather than leaving lanes idle.
                Signal in(n1);
                for (int j1 = 0; j1 < n1; ++j1) in[j1] = x[inIndex(j1, j2)];
                Signal col = transform(n1, in, sign, group, true);
                if (twiddled) col = twiddleSlots(col, j2, n, sign);
                for (int k1 = 0; k1 < n1; ++k1) y[k1][j2] = col[k1];
                continue;
            }
            std::vector<NodeId> in(n1);
            for (int j1 = 0; j1 < n1; ++j1) {
                Signal g;
                for (int l = 0; l < width; ++l) g.push_back(x[inIndex(j1, j2 + l)]);
                in[j1] = gather(g);
            }
            std::vector<NodeId> col = parallel(n1, in, sign, true);
            for (int k1 = 0; k1 < n1; ++k1) {
                if (twiddled && k1 > 0) {
                    std::vector<Complex> w;
                    for (int l = 0; l < width; ++l) w.push_back(unitRoot(static_cast<long>(j2 + l) * k1, n, sign));
                    col[k1] = dag_.cmulLanes(laneConstants(w, group), col[k1]);
                }
                for (int l = 0; l < width; ++l) y[k1][j2 + l] = Slot{col[k1], l, -1};
            }
        }
        Signal out(n);
        for (int k1 = 0; k1 < n1; k1 += group) {
            const int width = std::min(group, n1 - k1);
            if (width < group && worthSpreading(n2)) {
                const Signal z = transform(n2, y[k1], sign, group, true);
                for (int k2 = 0; k2 < n2; ++k2) out[outIndex(k1, k2)] = z[k2];
                continue;
            }
            std::vector<NodeId> in(n2);
            for (int j2 = 0; j2 < n2; ++j2) {
                Signal g;
                for (int l = 0; l < width; ++l) g.push_back(y[k1 + l][j2]);
                in[j2] = gather(g);
            }
            const std::vector<NodeId> z = parallel(n2, in, sign, true);
            for (int k2 = 0; k2 < n2; ++k2)
                for (int l = 0; l < width; ++l) out[outIndex(k1 + l, k2)] = Slot{z[k2], group == 1 ? 0 : l, -1};
        }
        return out;
    }

    // Spreading one block over the lanes pays for the large prime blocks; the
    // shuffles it needs cost more than they save in the small ones.
    static bool worthSpreading(int n) {
        const DftAlgorithm a = dftRow(n).asBlock;
        return a == DftAlgorithm::Rader || (a == DftAlgorithm::Direct && n >= 7);
    }

    // Twiddles w^(j2 k1) on the outputs k1 of one column spread over lanes.
    Signal twiddleSlots(const Signal& col, int j2, int n, int sign) {
        std::map<NodeId, std::vector<Complex>> constants;
        for (int k1 = 0; k1 < static_cast<int>(col.size()); ++k1) {
            auto& w = constants.emplace(col[k1].value, std::vector<Complex>(dag_.lanes(), Complex(1))).first->second;
            w[col[k1].lane] = unitRoot(static_cast<long>(j2) * k1, n, sign);
        }
        std::map<NodeId, NodeId> twiddled;
        for (const auto& [value, w] : constants) twiddled[value] = dag_.cmulLanes(w, value);
        Signal out = col;
        for (Slot& s : out) s.value = twiddled[s.value];
        return out;
    }

    // Rader: X[0] = sum x; X[g^-k] = x[0] + (a * b)[k], a[m] = x[g^m], b[j] = w^(g^-j),
    // the cyclic convolution done as DFT, product with the precomputed
    // spectrum (holding 1/(p-1)), inverse DFT. x[0] enters the product's
    // element 0, which adds it to every convolution output.
    Signal rader(int p, const Signal& x, int sign, int group) {
        const int m = p - 1;
        const long g = primitiveRoot(p), gInv = inverseMod(g, p);
        Signal a(m);
        for (int j = 0; j < m; ++j) a[j] = x[powMod(g, j, p)];
        const std::vector<Complex> spectrum = raderSpectrum(p, static_cast<int>(g), sign);

        const Signal A = transform(m, a, sign, group, false);
        // The product is taken on A's values where they are, lane by lane:
        // the inverse transform gathers its inputs from any lanes anyway, so
        // regrouping A into natural order first would only add shuffles.
        // With group 1 every lane is a transform of its own and takes the
        // same constant.
        std::map<NodeId, std::vector<Complex>> constants;
        for (int j = 0; j < m; ++j) {
            auto& w = constants.emplace(A[j].value, std::vector<Complex>(dag_.lanes(), spectrum[j])).first->second;
            w[A[j].lane] = spectrum[j];
        }
        const NodeId v0 = A[0].value;
        const NodeId x0 = group == 1 ? gather({x[0]}) : laneOnly(x[0], A[0].lane);
        std::map<NodeId, NodeId> product;
        for (const auto& [value, w] : constants) {
            const NodeId y = dag_.cmulLanes(w, value);
            product[value] = value == v0 ? dag_.add(y, x0) : y;
        }
        Signal products = A;
        for (Slot& s : products) s.value = product[s.value];
        const Signal C = transform(m, products, -sign, group, false);
        Signal out(p);
        out[0] = Slot{dag_.add(v0, x0), A[0].lane, -1};
        for (int k = 0; k < m; ++k) out[powMod(gInv, k, p)] = C[k];
        return out;
    }

    // A value holding the slot in lane 0 and zero in the other lane.
    NodeId zeroUpperLanes(const Slot& s) { return laneOnly(s, 0); }

    // A value holding the slot in lane `lane` and zero in the other lanes.
    NodeId laneOnly(const Slot& s, int lane) {
        if (dag_.lanes() == 1) return gather({s});
        if (s.element >= 0) {
            std::vector<int> e(dag_.lanes(), -1);
            e[lane] = s.element;
            return dag_.inputLanes(e);
        }
        return lane == 0 ? dag_.shuffle(s.value, s.lane, dag_.zero(), 0) : dag_.shuffle(dag_.zero(), 0, s.value, s.lane);
    }

    Dag& dag_;
    ComplexDftOptions options_;
};

}  // namespace

bool blockedDirectSums(int n) { return dftRow(n).kernel == DftAlgorithm::Direct && (n - 1) / 2 >= kBlockedDirectFrom; }

std::vector<Complex> raderSpectrum(int p, int g, int sign) {
    const int m = p - 1;
    const long gInv = inverseMod(g, p);
    std::vector<Complex> b(m);
    for (int j = 0; j < m; ++j) b[j] = unitRoot(powMod(gInv, j, p), p, sign);
    std::vector<Complex> spectrum = naiveDft(b, sign);
    for (Complex& v : spectrum) v /= static_cast<Real>(m);
    // b[j + m/2] = conj(b[j]), so element 0 is real and element m/2 is
    // imaginary (m/2 odd) or real (m/2 even). Their other parts come out of
    // the sum as rounding noise; zero makes them products by a real or an
    // imaginary constant.
    const int h = m / 2;
    spectrum[0].imag(0);
    if (h % 2)
        spectrum[h].real(0);
    else
        spectrum[h].imag(0);
    return spectrum;
}

void buildComplexDft(Dag& dag, int n, const ComplexDftOptions& options) {
    Builder builder(dag, options);
    Signal x(n);
    for (int i = 0; i < n; ++i) x[i].element = i;
    const Signal out = builder.transform(n, x, options.sign, dag.lanes(), false);
    // One output record per value, with the element each lane goes to.
    std::vector<NodeId> order;
    std::map<NodeId, std::vector<int>> lanes;
    for (int k = 0; k < n; ++k) {
        auto it = lanes.find(out[k].value);
        if (it == lanes.end()) {
            order.push_back(out[k].value);
            it = lanes.emplace(out[k].value, std::vector<int>(dag.lanes(), -1)).first;
        }
        it->second[out[k].lane] = k;
    }
    for (NodeId v : order) dag.outputLanes(lanes[v], v);
}

std::vector<NodeId> parallelComplexDft(Dag& dag, int n, int sign, const std::vector<NodeId>& x, bool block) {
    Builder builder(dag, ComplexDftOptions{sign, false});
    return builder.parallel(n, x, sign, block);
}

}  // namespace kfpg::gen
