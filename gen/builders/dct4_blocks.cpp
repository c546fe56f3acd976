#include "builders/dct4_blocks.h"

#include <cmath>

namespace kfpg::gen {

namespace {
constexpr Real kPi = 3.14159265358979323846264338327950288L;

// (re + i im) * e^{-i theta}, c = cos theta, s = sin theta.
void rotate(Dag& dag, NodeId& re, NodeId& im, Real c, Real s) {
    const NodeId r = dag.add(dag.scale(c, re), dag.scale(s, im));
    im = dag.sub(dag.scale(c, im), dag.scale(s, re));
    re = r;
}
}  // namespace

Real cosPiRatio(long num, long den) {
    long t = num % (2 * den);
    if (t < 0) t += 2 * den;
    if (t > den) t = 2 * den - t;  // even about pi
    const bool negative = 2 * t > den;
    if (negative) t = den - t;  // cos(pi - a) = -cos(a)
    Real c = 4 * t == den ? std::sqrt(0.5L) : t == 0 ? 1 : 2 * t == den ? 0 : std::cos(kPi * t / den);
    return negative ? -c : c;
}

Real sinPiRatio(long num, long den) { return cosPiRatio(den - 2 * num, 2 * den); }

void buildRodft(Dag& dag, const Values& s, Values& re, Values& im) {
    const int m = static_cast<int>(s.size());
    if (m == 2) {
        re = {s[0]};
        im = {dag.neg(s[1])};
        return;
    }
    Values even, odd, re0, im0, re1, im1;
    for (int n = 0; n < m; n += 2) even.push_back(s[n]), odd.push_back(s[n + 1]);
    buildRodft(dag, even, re0, im0);
    buildRodft(dag, odd, re1, im1);
    re.assign(m / 2, -1);
    im.assign(m / 2, -1);
    for (int g = 0; g < m / 4; ++g) {
        NodeId pr = re1[g], pi = im1[g];
        rotate(dag, pr, pi, cosPiRatio(2 * g + 1, m), sinPiRatio(2 * g + 1, m));
        re[g] = dag.add(re0[g], pr);
        im[g] = dag.add(im0[g], pi);
        re[m / 2 - 1 - g] = dag.sub(re0[g], pr);
        im[m / 2 - 1 - g] = dag.sub(pi, im0[g]);
    }
}

Values buildDct4(Dag& dag, const Values& x) {
    const int k = static_cast<int>(x.size());
    if (k == 1) return {dag.scale(cosPiRatio(1, 4), x[0])};
    Values s(k), re, im, y(k);
    for (int j = 0; j < k / 2; ++j) {
        s[j] = x[2 * j];
        s[k / 2 + j] = dag.neg(x[k - 1 - 2 * j]);
    }
    buildRodft(dag, s, re, im);
    for (int i = 0; i < k / 2; ++i) {
        const Real c = cosPiRatio(2 * i + 1, 4 * k), sn = sinPiRatio(2 * i + 1, 4 * k);
        y[i] = dag.add(dag.scale(c, re[i]), dag.scale(sn, im[i]));
        y[k - 1 - i] = dag.sub(dag.scale(sn, re[i]), dag.scale(c, im[i]));
    }
    return y;
}

Values buildDct2(Dag& dag, const Values& a) {
    const int n = static_cast<int>(a.size());
    if (n == 1) return a;
    Values u(n / 2), v(n / 2), out(n);
    for (int r = 0; r < n / 2; ++r) {
        u[r] = dag.add(a[r], a[n - 1 - r]);
        v[r] = dag.sub(a[r], a[n - 1 - r]);
    }
    const Values even = buildDct2(dag, u), odd = buildDct4(dag, v);
    for (int p = 0; p < n / 2; ++p) out[2 * p] = even[p], out[2 * p + 1] = odd[p];
    return out;
}

void buildPairDft(Dag& dag, Values& re, Values& im) {
    const int n = static_cast<int>(re.size());
    if (n == 1) return;
    Values er, ei, orr, oi;
    for (int k = 0; k < n; k += 2) {
        er.push_back(re[k]), ei.push_back(im[k]);
        orr.push_back(re[k + 1]), oi.push_back(im[k + 1]);
    }
    buildPairDft(dag, er, ei);
    buildPairDft(dag, orr, oi);
    for (int k = 0; k < n / 2; ++k) {
        NodeId tr = orr[k], ti = oi[k];
        if (4 * k == n) {  // times -i
            tr = oi[k];
            ti = dag.neg(orr[k]);
        } else if (k > 0) {
            rotate(dag, tr, ti, cosPiRatio(2 * k, n), sinPiRatio(2 * k, n));
        }
        re[k] = dag.add(er[k], tr);
        im[k] = dag.add(ei[k], ti);
        re[k + n / 2] = dag.sub(er[k], tr);
        im[k + n / 2] = dag.sub(ei[k], ti);
    }
}

}  // namespace kfpg::gen
