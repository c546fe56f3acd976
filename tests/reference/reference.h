// Naive long-double reference transforms and error measures, shared by the
// unit tests and the kfpg self-check. Every twiddle angle is reduced exactly
// in integers before the one call to the long-double cosine or sine.
#pragma once

#include <complex>
#include <cstddef>
#include <vector>

namespace kfpg::ref {

using Real = long double;
using Complex = std::complex<long double>;

enum class Direction { Forward, Inverse, SelfInverse };
enum class Layout { CCS, Pack, Perm };

// The factor a scaling flag selects for a transform of length n; 0 for a bad flag.
Real scaleFactor(int flag, long n, Direction dir);

// cos(2*pi*j/n) and sin(2*pi*j/n) with j reduced modulo n first.
Real cosTurn(long j, long n);
Real sinTurn(long j, long n);

// X[k] = sum x[n] exp(sign * 2 pi i n k / N), sign -1 forward, +1 inverse.
std::vector<Complex> dft(const std::vector<Complex>& x, int sign);
// Forward real DFT packed in a layout (N+2 / N+1 elements for CCS, N otherwise).
std::vector<Real> realDftPacked(const std::vector<Real>& x, Layout layout);
// Inverse of realDftPacked (unscaled): x[n] = R0 + 2 sum (Rk cos - Ik sin) + (-1)^n R_{N/2}.
std::vector<Real> realDftUnpack(const std::vector<Real>& packed, long n, Layout layout);
// Number of elements a layout holds for length n.
long packedLength(long n, Layout layout);
// H[k] = sum x[n] (cos + sin)(2 pi n k / N).
std::vector<Real> hartley(const std::vector<Real>& x);
// y[k] = sum x[n] (-1)^popcount(k & n), natural order; x.size() a power of two.
std::vector<Real> walshHadamard(const std::vector<Real>& x);
// y[k] = sum x[n] cos(pi (2n+1)(2k+1) / (4N)).
std::vector<Real> dct4(const std::vector<Real>& x);
// The outputs y[k] of dct4 for the indices in `which` only (for long inputs).
std::vector<Real> dct4At(const std::vector<Real>& x, const std::vector<long>& which);

// Relative L2 error ||got - want|| / ||want|| (absolute when want is zero).
template <class T>
double relativeL2(const T* got, const std::vector<Real>& want);
double relativeL2(const std::vector<Complex>& got, const std::vector<Complex>& want);

// Widening/narrowing between the library's element arrays and reference vectors.
template <class T>
std::vector<Real> widen(const T* x, std::size_t count);
std::vector<Complex> widenComplex(const std::vector<Real>& interleaved);
std::vector<Real> interleave(const std::vector<Complex>& x);

// Uniform random reals in [-1, 1), reproducible from the seed.
std::vector<Real> randomReals(std::size_t count, unsigned seed);

}  // namespace kfpg::ref
