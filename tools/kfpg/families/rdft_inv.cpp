// Inverse real DFT: self-check of all 378 kernels and the six generic
// entries, and ns per call of every length, CCSToR next to FFTW's c2r
// (patient, input preserved as ours is, new-array execute), with PackToR
// and PermToR as ratios to CCSToR, and the round-trip error (forward, then
// inverse scaled by 1/N) of ours and of FFTW's r2c and c2r.
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#ifdef KFPG_HAVE_FFTW
#include <fftw3.h>
#endif

#include "kfpgen.h"
#include "reference.h"
#include "fftw_peer.h"
#include "registry.h"
#include "timing.h"

namespace {

using kfpg::ref::Layout;
using kfpg::tool::BenchRow;
using kfpg::tool::CheckSummary;

template <class T>
using Sized = KfpStatus (*)(const T*, T*, int);
template <class T>
using Generic = KfpStatus (*)(const T*, T*, int, int);

#define KFPG_TOOL_INV32(N) kfpgDFTInv_CCSToR_##N##_32f, kfpgDFTInv_PackToR_##N##_32f, kfpgDFTInv_PermToR_##N##_32f,
#define KFPG_TOOL_INV64(N) kfpgDFTInv_CCSToR_##N##_64f, kfpgDFTInv_PackToR_##N##_64f, kfpgDFTInv_PermToR_##N##_64f,

template <class T>
struct Traits;

template <>
struct Traits<float> {
    static Sized<float> sized(int n, Layout layout) {
        static const Sized<float> table[] = {KFPG_FOR_LENGTHS(KFPG_TOOL_INV32)};
        return table[3 * (n - 2) + static_cast<int>(layout)];
    }
    static Generic<float> generic(Layout layout) {
        static const Generic<float> entries[] = {kfpgDFTInv_CCSToR_32f, kfpgDFTInv_PackToR_32f, kfpgDFTInv_PermToR_32f};
        return entries[static_cast<int>(layout)];
    }
    static constexpr Generic<float> forward = kfpgDFTFwd_RToCCS_32f;
    static constexpr double bound = 1e-6;
};

template <>
struct Traits<double> {
    static Sized<double> sized(int n, Layout layout) {
        static const Sized<double> table[] = {KFPG_FOR_LENGTHS(KFPG_TOOL_INV64)};
        return table[3 * (n - 2) + static_cast<int>(layout)];
    }
    static Generic<double> generic(Layout layout) {
        static const Generic<double> entries[] = {kfpgDFTInv_CCSToR_64f, kfpgDFTInv_PackToR_64f, kfpgDFTInv_PermToR_64f};
        return entries[static_cast<int>(layout)];
    }
    static constexpr Generic<double> forward = kfpgDFTFwd_RToCCS_64f;
    static constexpr double bound = 5e-15;
};

constexpr Layout kLayouts[] = {Layout::CCS, Layout::Pack, Layout::Perm};

// A random CCS half spectrum (Im X[0] and Im X[n/2] zero) and the same
// values in another layout.
template <class T>
std::vector<T> randomCcs(int n, unsigned seed) {
    const auto r = kfpg::ref::randomReals(static_cast<std::size_t>(n + 2), seed);
    std::vector<T> s(r.begin(), r.begin() + kfpg::ref::packedLength(n, Layout::CCS));
    s[1] = 0;
    if (n % 2 == 0) s[n + 1] = 0;
    return s;
}

template <class T>
std::vector<T> inLayout(const std::vector<T>& ccs, int n, Layout layout) {
    if (layout == Layout::CCS) return ccs;
    std::vector<T> packed{ccs[0]};
    for (int e = 2; e < n + 1; ++e) packed.push_back(ccs[e]);
    if (layout == Layout::Perm && n % 2 == 0) {
        packed.insert(packed.begin() + 1, packed.back());
        packed.pop_back();
    }
    return packed;
}

template <class T>
double errorOf(const T* got, const std::vector<T>& ccs, int n, kfpg::ref::Real scale) {
    auto want = kfpg::ref::realDftUnpack(std::vector<kfpg::ref::Real>(ccs.begin(), ccs.end()), n, Layout::CCS);
    for (auto& v : want) v *= scale;
    return kfpg::ref::relativeL2(got, want);
}

template <class T>
CheckSummary check() {
    CheckSummary s;
    s.bound = Traits<T>::bound;
    static const char* const names[] = {"CCSToR", "PackToR", "PermToR"};
    for (Layout layout : kLayouts)
        for (int n = 2; n <= 64; ++n) {
            const std::string name = std::string(names[static_cast<int>(layout)]) + " " + std::to_string(n) + (sizeof(T) == 4 ? " 32f" : " 64f");
            const auto kernel = Traits<T>::sized(n, layout);
            ++s.kernels;
            for (int flag : {ScaleFwdByN, ScaleInvByN, ScaleBySqrtN, ScaleNone})
                for (unsigned seed = 1; seed <= 3; ++seed) {
                    const auto ccs = randomCcs<T>(n, seed * 89u + n);
                    const auto src = inLayout(ccs, n, layout);
                    std::vector<T> y(n), z(n);
                    if (kernel(src.data(), y.data(), flag) != StatusOk ||
                        Traits<T>::generic(layout)(src.data(), z.data(), n, flag) != StatusOk ||
                        std::memcmp(y.data(), z.data(), n * sizeof(T)) != 0) {
                        s.failures.push_back(name + ": status or generic entry differs");
                        continue;
                    }
                    const double err = errorOf(y.data(), ccs, n, kfpg::ref::scaleFactor(flag, n, kfpg::ref::Direction::Inverse));
                    s.worstError = std::max(s.worstError, err);
                    if (!(err < s.bound)) s.failures.push_back(name + ": error " + std::to_string(err));
                }
            std::vector<T> y(n + 2);
            if (kernel(nullptr, y.data(), 0) != StatusNullPointer || kernel(y.data(), y.data(), 3) != StatusFlagError ||
                Traits<T>::generic(layout)(nullptr, nullptr, 65, 0) != StatusSizeError)
                s.failures.push_back(name + ": wrong failure status");
        }
    return s;
}

#ifdef KFPG_HAVE_FFTW
// FFTW's complex-to-real API per precision.
template <class T>
struct Fftw;
template <>
struct Fftw<float> : kfpg::tool::FftwCommon<float> {
    static Plan plan(int n, float* in, float* out) {
        return fftwf_plan_dft_c2r_1d(n, reinterpret_cast<fftwf_complex*>(in), out, FFTW_PATIENT | FFTW_PRESERVE_INPUT);
    }
    static void execute(Plan p, float* in, float* out) { fftwf_execute_dft_c2r(p, reinterpret_cast<fftwf_complex*>(in), out); }
};
template <>
struct Fftw<double> : kfpg::tool::FftwCommon<double> {
    static Plan plan(int n, double* in, double* out) {
        return fftw_plan_dft_c2r_1d(n, reinterpret_cast<fftw_complex*>(in), out, FFTW_PATIENT | FFTW_PRESERVE_INPUT);
    }
    static void execute(Plan p, double* in, double* out) { fftw_execute_dft_c2r(p, reinterpret_cast<fftw_complex*>(in), out); }
};

#endif

// The round-trip error (n random reals, forward unscaled, inverse scaled
// by 1/N) of ours and, next to it, of FFTW's r2c and c2r.
template <class T>
std::string roundTripNote(int n) {
    auto signal = [&](unsigned input) { return kfpg::tool::randomSignal<T>(n, 5u + n + 1000u * input); };
    auto error = [](const T* got, const std::vector<T>& x) {
        return kfpg::ref::relativeL2(got, std::vector<kfpg::ref::Real>(x.begin(), x.end()));
    };
    std::string note = "round trip " + kfpg::tool::shortNumber(kfpg::tool::rmsOverInputs([&](unsigned input) {
        const auto x = signal(input);
        std::vector<T> spectrum(n + 2), y(n);
        Traits<T>::forward(x.data(), spectrum.data(), n, ScaleNone);
        Traits<T>::generic(Layout::CCS)(spectrum.data(), y.data(), n, ScaleInvByN);
        return error(y.data(), x);
    }));
#ifdef KFPG_HAVE_FFTW
    using F = Fftw<T>;
    using R2c = kfpg::tool::FftwR2c<T>;
    T* real = static_cast<T*>(F::alloc(n * sizeof(T)));
    T* spectrum = static_cast<T*>(F::alloc((n + 2) * sizeof(T)));
    auto forward = R2c::plan(n, real, spectrum), inverse = F::plan(n, spectrum, real);
    const T scale = T(1) / T(n);  // one multiplication per output, as ours
    note += ", FFTW " + kfpg::tool::shortNumber(kfpg::tool::rmsOverInputs([&](unsigned input) {
        const auto x = signal(input);
        std::memcpy(real, x.data(), n * sizeof(T));
        R2c::execute(forward, real, spectrum);
        F::execute(inverse, spectrum, real);
        for (int i = 0; i < n; ++i) real[i] *= scale;
        return error(real, x);
    }));
    F::destroy(forward);
    F::destroy(inverse);
    F::release(real);
    F::release(spectrum);
#endif
    return note;
}

template <class T>
std::vector<BenchRow> bench() {
    std::vector<BenchRow> rows;
    for (int n = 2; n <= 64; ++n) {
        BenchRow row;
        row.label = "N=" + std::to_string(n) + " CCSToR";
        const int ccsCount = static_cast<int>(kfpg::ref::packedLength(n, Layout::CCS));
        // One source per layout, one destination each; all kept apart.
        std::vector<std::vector<T>> src(3), dst(3, std::vector<T>(n));
        const auto ccs = randomCcs<T>(n, 7u + n);
        for (Layout layout : kLayouts) src[static_cast<int>(layout)] = inLayout(ccs, n, layout);
        row.oursError = kfpg::tool::rmsOverInputs([&](unsigned input) {
            const auto xi = randomCcs<T>(n, 7u + n + 1000u * input);
            std::vector<T> out(n);
            Traits<T>::sized(n, Layout::CCS)(xi.data(), out.data(), ScaleNone);
            return errorOf(out.data(), xi, n, 1);
        });
#ifdef KFPG_HAVE_FFTW
        using F = Fftw<T>;
        T* peerIn = static_cast<T*>(F::alloc(ccsCount * sizeof(T)));
        T* peerOut = static_cast<T*>(F::alloc(n * sizeof(T)));
        auto plan = F::plan(n, peerIn, peerOut);
        row.peerError = kfpg::tool::rmsOverInputs([&](unsigned input) {
            const auto xi = randomCcs<T>(n, 7u + n + 1000u * input);
            std::memcpy(peerIn, xi.data(), ccsCount * sizeof(T));
            F::execute(plan, peerIn, peerOut);
            return errorOf(peerOut, xi, n, 1);
        });
#endif
        std::vector<kfpg::bench::Body> bodies;
        for (Layout layout : kLayouts) {
            const auto kernel = Traits<T>::sized(n, layout);
            const T* in = src[static_cast<int>(layout)].data();
            T* out = dst[static_cast<int>(layout)].data();
            bodies.push_back(kfpg::bench::repeated([=] { kernel(in, out, ScaleNone); }, out));
        }
#ifdef KFPG_HAVE_FFTW
        std::memcpy(peerIn, ccs.data(), ccsCount * sizeof(T));
        bodies.push_back(kfpg::bench::repeated([=] { F::execute(plan, peerIn, peerOut); }, peerOut));
#endif
        const auto ns = kfpg::bench::interleavedMedians(bodies);
        row.oursNs = ns[0];
        row.note = kfpg::tool::packPermNote(ns[0], ns[1], ns[2]);
#ifdef KFPG_HAVE_FFTW
        row.peerNs = ns[3];
        row.peerVector = kfpg::tool::widestVectorCode(Fftw<T>::text(plan));
        F::destroy(plan);
        F::release(peerIn);
        F::release(peerOut);
#endif
        row.note += "; " + roundTripNote<T>(n);
        rows.push_back(row);
    }
    return rows;
}

const char* const kPeer = "FFTW c2r (patient, input preserved, new-array execute)";

const bool registered32 = kfpg::tool::addFamily({"rdft-inv", "32f", kPeer, check<float>, bench<float>});
const bool registered64 = kfpg::tool::addFamily({"rdft-inv", "64f", kPeer, check<double>, bench<double>});

}  // namespace
