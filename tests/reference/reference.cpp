#include "reference.h"

#include <cmath>
#include <random>

namespace kfpg::ref {

namespace {
const Real kPi = 3.141592653589793238462643383279502884L;

long mod(long a, long n) {
    long r = a % n;
    return r < 0 ? r + n : r;
}
}  // namespace

Real scaleFactor(int flag, long n, Direction dir) {
    const Real byN = 1.0L / n;
    switch (flag) {
        case 1: return dir == Direction::Inverse ? 1.0L : byN;
        case 2: return dir == Direction::Forward ? 1.0L : byN;
        case 4: return 1.0L / std::sqrt(static_cast<Real>(n));
        case 8: return 1.0L;
        default: return 0.0L;
    }
}

Real cosTurn(long j, long n) { return std::cos(2 * kPi * mod(j, n) / n); }
Real sinTurn(long j, long n) { return std::sin(2 * kPi * mod(j, n) / n); }

namespace {
// cos and sin of the n turns j/n, each computed once: the sums below take
// (t k mod n) from these instead of two long-double calls per term.
struct Turns {
    std::vector<Real> cos, sin;
    explicit Turns(long n) : cos(n), sin(n) {
        for (long j = 0; j < n; ++j) cos[j] = cosTurn(j, n), sin[j] = sinTurn(j, n);
    }
};
}  // namespace

std::vector<Complex> dft(const std::vector<Complex>& x, int sign) {
    const long n = static_cast<long>(x.size());
    const Turns w(n);
    std::vector<Complex> out(n);
    for (long k = 0; k < n; ++k) {
        Complex acc = 0;
        for (long t = 0; t < n; ++t) acc += x[t] * Complex(w.cos[t * k % n], sign * w.sin[t * k % n]);
        out[k] = acc;
    }
    return out;
}

long packedLength(long n, Layout layout) { return layout == Layout::CCS ? 2 * (n / 2) + 2 : n; }

std::vector<Real> realDftPacked(const std::vector<Real>& x, Layout layout) {
    const long n = static_cast<long>(x.size());
    std::vector<Complex> cx(x.begin(), x.end());
    const std::vector<Complex> X = dft(cx, -1);
    const long h = n / 2, m = (n + 1) / 2 - 1;
    std::vector<Real> out;
    out.push_back(X[0].real());
    if (layout == Layout::CCS) out.push_back(0);
    if (layout == Layout::Perm && n % 2 == 0) out.push_back(X[h].real());
    for (long k = 1; k <= m; ++k) {
        out.push_back(X[k].real());
        out.push_back(X[k].imag());
    }
    if (n % 2 == 0 && layout != Layout::Perm) out.push_back(X[h].real());
    if (n % 2 == 0 && layout == Layout::CCS) out.push_back(0);
    return out;
}

std::vector<Real> realDftUnpack(const std::vector<Real>& p, long n, Layout layout) {
    const long m = (n + 1) / 2 - 1;
    const bool even = n % 2 == 0;
    // Position of R_k (k >= 1) in the packed array; I_k follows it.
    auto at = [&](long k) { return layout == Layout::CCS ? 2 * k : (layout == Layout::Perm && even ? 2 * k : 2 * k - 1); };
    Real nyquist = 0;
    if (even) nyquist = layout == Layout::CCS ? p[n] : (layout == Layout::Perm ? p[1] : p[n - 1]);
    const Turns w(n);
    std::vector<Real> x(n);
    for (long t = 0; t < n; ++t) {
        Real acc = p[0];
        for (long k = 1; k <= m; ++k) acc += 2 * (p[at(k)] * w.cos[k * t % n] - p[at(k) + 1] * w.sin[k * t % n]);
        if (even) acc += (t % 2 ? -nyquist : nyquist);
        x[t] = acc;
    }
    return x;
}

std::vector<Real> hartley(const std::vector<Real>& x) {
    const long n = static_cast<long>(x.size());
    const Turns w(n);
    std::vector<Real> out(n);
    for (long k = 0; k < n; ++k) {
        Real acc = 0;
        for (long t = 0; t < n; ++t) acc += x[t] * (w.cos[t * k % n] + w.sin[t * k % n]);
        out[k] = acc;
    }
    return out;
}

std::vector<Real> walshHadamard(const std::vector<Real>& x) {
    const std::size_t n = x.size();
    std::vector<Real> out(n);
    for (std::size_t k = 0; k < n; ++k) {
        Real acc = 0;
        for (std::size_t t = 0; t < n; ++t) acc += __builtin_popcountl(k & t) % 2 ? -x[t] : x[t];
        out[k] = acc;
    }
    return out;
}

std::vector<Real> dct4At(const std::vector<Real>& x, const std::vector<long>& which) {
    const long n = static_cast<long>(x.size());
    // cos(pi t / (4N)) for t = (2a+1)(2k+1) reduced modulo 8N.
    std::vector<Real> table(8 * n);
    for (long t = 0; t < 8 * n; ++t) table[t] = std::cos(kPi * t / (4 * n));
    std::vector<Real> out;
    out.reserve(which.size());
    for (long k : which) {
        Real acc = 0;
        for (long a = 0; a < n; ++a) acc += x[a] * table[((2 * a + 1) * (2 * k + 1)) % (8 * n)];
        out.push_back(acc);
    }
    return out;
}

std::vector<Real> dct4(const std::vector<Real>& x) {
    std::vector<long> all(x.size());
    for (std::size_t k = 0; k < all.size(); ++k) all[k] = static_cast<long>(k);
    return dct4At(x, all);
}

template <class T>
double relativeL2(const T* got, const std::vector<Real>& want) {
    Real err = 0, norm = 0;
    for (std::size_t i = 0; i < want.size(); ++i) {
        const Real d = static_cast<Real>(got[i]) - want[i];
        err += d * d;
        norm += want[i] * want[i];
    }
    return static_cast<double>(norm > 0 ? std::sqrt(err / norm) : std::sqrt(err));
}
template double relativeL2<float>(const float*, const std::vector<Real>&);
template double relativeL2<double>(const double*, const std::vector<Real>&);

double relativeL2(const std::vector<Complex>& got, const std::vector<Complex>& want) {
    return relativeL2(interleave(got).data(), interleave(want));
}

template <class T>
std::vector<Real> widen(const T* x, std::size_t count) {
    return std::vector<Real>(x, x + count);
}
template std::vector<Real> widen<float>(const float*, std::size_t);
template std::vector<Real> widen<double>(const double*, std::size_t);

std::vector<Complex> widenComplex(const std::vector<Real>& v) {
    std::vector<Complex> out(v.size() / 2);
    for (std::size_t i = 0; i < out.size(); ++i) out[i] = Complex(v[2 * i], v[2 * i + 1]);
    return out;
}

std::vector<Real> interleave(const std::vector<Complex>& x) {
    std::vector<Real> out;
    out.reserve(2 * x.size());
    for (const Complex& c : x) {
        out.push_back(c.real());
        out.push_back(c.imag());
    }
    return out;
}

std::vector<Real> randomReals(std::size_t count, unsigned seed) {
    std::mt19937_64 gen(seed);
    std::uniform_real_distribution<double> dist(-1.0, 1.0);
    std::vector<Real> out(count);
    for (Real& v : out) v = dist(gen);
    return out;
}

}  // namespace kfpg::ref
