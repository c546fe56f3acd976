#include "evaluate.h"

#include <cmath>
#include <limits>
#include <stdexcept>
#include <string>
#include <utility>

namespace kfpg::gen {

Complex unitRoot(long k, long n, int sign) {
    k %= n;
    if (k < 0) k += n;
    // The angle folded into the first octant, in units of a full turn / 8n:
    // angles of equal cosine or sine magnitude get the same long double bits,
    // so the simplifier shares their products. The axes, diagonals and the
    // multiples of 30 degrees are exact.
    long a = 8 * k;
    Real cosSign = 1, sinSign = 1;
    if (a > 4 * n) a = 8 * n - a, sinSign = -1;
    if (a > 2 * n) a = 4 * n - a, cosSign = -1;
    const bool swapped = a > n;
    if (swapped) a = 2 * n - a;
    Real c, s;
    if (a == 0) {
        c = 1, s = 0;
    } else if (a == n) {
        c = s = std::sqrt(0.5L);
    } else if (3 * a == 2 * n) {  // 30 degrees
        c = std::sqrt(3.0L) / 2, s = 0.5L;
    } else {
        const Real angle = 2 * 3.14159265358979323846264338327950288L * static_cast<Real>(a) / static_cast<Real>(8 * n);
        c = std::cos(angle), s = std::sin(angle);
    }
    if (swapped) std::swap(c, s);
    return {cosSign * c + 0, sign * sinSign * s + 0};  // + 0: no negative zeros
}

std::vector<Complex> naiveDft(const std::vector<Complex>& x, int sign) {
    const long n = static_cast<long>(x.size());
    std::vector<Complex> out(n);
    for (long k = 0; k < n; ++k) {
        Complex sum = 0;
        for (long j = 0; j < n; ++j) sum += x[j] * unitRoot(j * k, n, sign);
        out[k] = sum;
    }
    return out;
}

std::vector<Complex> evaluate(const Dag& dag, const std::vector<Complex>& x, int outputCount) {
    const int lanes = dag.lanes();
    std::vector<std::vector<Complex>> v(dag.nodes().size(), std::vector<Complex>(lanes));
    for (NodeId id = 0; id < static_cast<NodeId>(dag.nodes().size()); ++id) {
        const Node& n = dag.node(id);
        for (int l = 0; l < lanes; ++l) {
            Complex& r = v[id][l];
            switch (n.op) {
                case Op::Input: {
                    const int e = dag.inputElements(n.arg)[l];
                    r = e < 0 ? Complex(0) : x.at(e);
                    break;
                }
                case Op::Zero: r = 0; break;
                case Op::Add: r = v[n.a][l] + v[n.b][l]; break;
                case Op::Sub: r = v[n.a][l] - v[n.b][l]; break;
                case Op::Neg: r = -v[n.a][l]; break;
                case Op::Scale: r = v[n.a][l] * dag.constant(n.arg)[l].real(); break;
                case Op::MulI: r = v[n.a][l] * Complex(0, static_cast<Real>(n.arg)); break;
                case Op::CMul: r = v[n.a][l] * dag.constant(n.arg)[l]; break;
                case Op::Shuffle: {
                    const int from = shuffleSelector(n.arg, l, lanes);
                    r = 2 * l < lanes ? v[n.a][from] : v[n.b][from];
                    break;
                }
                case Op::Narrow: r = v[n.a][l]; break;
            }
        }
    }
    const Real nan = std::numeric_limits<Real>::quiet_NaN();
    std::vector<Complex> out(outputCount, Complex(nan, nan));
    std::vector<char> written(outputCount, 0);
    for (const Output& o : dag.outputs()) {
        for (int l = 0; l < lanes; ++l) {
            const int e = o.elements[l];
            if (e < 0) continue;
            const Complex value = v[o.value][l];
            if (written[e] && std::abs(out[e] - value) > 1e-12L * (1 + std::abs(value)))
                throw std::runtime_error("output element " + std::to_string(e) + " written twice");
            out[e] = value;
            written[e] = 1;
        }
    }
    return out;
}

}  // namespace kfpg::gen
