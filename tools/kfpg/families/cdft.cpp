// Complex DFT: self-check of all 252 kernels and the generic entries, and
// ns per call of every length next to FFTW's patient plan (new-array execute).
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

using kfpg::tool::BenchRow;
using kfpg::tool::CheckSummary;

template <class C>
using Sized = KfpStatus (*)(const C*, C*, int);
template <class C>
using Generic = KfpStatus (*)(const C*, C*, int, int);

#define KFPG_TOOL_FWD32(N) kfpgDFTFwd_CToC_##N##_32fc,
#define KFPG_TOOL_INV32(N) kfpgDFTInv_CToC_##N##_32fc,
#define KFPG_TOOL_FWD64(N) kfpgDFTFwd_CToC_##N##_64fc,
#define KFPG_TOOL_INV64(N) kfpgDFTInv_CToC_##N##_64fc,

template <class C>
struct Traits;

template <>
struct Traits<kfp32fc> {
    using Real = float;
    static Sized<kfp32fc> sized(int n, bool inverse) {
        static const Sized<kfp32fc> fwd[] = {KFPG_FOR_LENGTHS(KFPG_TOOL_FWD32)};
        static const Sized<kfp32fc> inv[] = {KFPG_FOR_LENGTHS(KFPG_TOOL_INV32)};
        return (inverse ? inv : fwd)[n - 2];
    }
    static Generic<kfp32fc> generic(bool inverse) { return inverse ? kfpgDFTInv_CToC_32fc : kfpgDFTFwd_CToC_32fc; }
    static constexpr double bound = 1e-6;
};

template <>
struct Traits<kfp64fc> {
    using Real = double;
    static Sized<kfp64fc> sized(int n, bool inverse) {
        static const Sized<kfp64fc> fwd[] = {KFPG_FOR_LENGTHS(KFPG_TOOL_FWD64)};
        static const Sized<kfp64fc> inv[] = {KFPG_FOR_LENGTHS(KFPG_TOOL_INV64)};
        return (inverse ? inv : fwd)[n - 2];
    }
    static Generic<kfp64fc> generic(bool inverse) { return inverse ? kfpgDFTInv_CToC_64fc : kfpgDFTFwd_CToC_64fc; }
    static constexpr double bound = 5e-15;
};

template <class C>
std::vector<C> randomInput(int n, unsigned seed) {
    const auto r = kfpg::ref::randomReals(2 * static_cast<std::size_t>(n), seed);
    std::vector<C> x(n);
    for (int i = 0; i < n; ++i) x[i] = {static_cast<typename Traits<C>::Real>(r[2 * i]), static_cast<typename Traits<C>::Real>(r[2 * i + 1])};
    return x;
}

template <class C>
std::vector<kfpg::ref::Real> reference(const C* x, int n, bool inverse, kfpg::ref::Real scale) {
    std::vector<kfpg::ref::Complex> cx(n);
    for (int i = 0; i < n; ++i) cx[i] = {x[i].re, x[i].im};
    auto X = kfpg::ref::dft(cx, inverse ? +1 : -1);
    for (auto& v : X) v *= scale;
    return kfpg::ref::interleave(X);
}

template <class C>
double errorOf(const C* got, const C* x, int n, bool inverse, kfpg::ref::Real scale) {
    return kfpg::ref::relativeL2(reinterpret_cast<const typename Traits<C>::Real*>(got), reference(x, n, inverse, scale));
}

template <class C>
CheckSummary check() {
    CheckSummary s;
    s.bound = Traits<C>::bound;
    const char* type = sizeof(C) == 8 ? "32fc" : "64fc";
    for (bool inverse : {false, true})
        for (int n = 2; n <= 64; ++n) {
            const std::string name = std::string(inverse ? "Inv " : "Fwd ") + std::to_string(n) + " " + type;
            const auto kernel = Traits<C>::sized(n, inverse);
            ++s.kernels;
            for (int flag : {ScaleFwdByN, ScaleInvByN, ScaleBySqrtN, ScaleNone})
                for (unsigned seed = 1; seed <= 3; ++seed) {
                    const auto x = randomInput<C>(n, seed * 97u + n);
                    std::vector<C> y(n), z(n);
                    if (kernel(x.data(), y.data(), flag) != StatusOk ||
                        Traits<C>::generic(inverse)(x.data(), z.data(), n, flag) != StatusOk ||
                        std::memcmp(y.data(), z.data(), n * sizeof(C)) != 0) {
                        s.failures.push_back(name + ": status or generic entry differs");
                        continue;
                    }
                    const double err = errorOf(y.data(), x.data(), n, inverse,
                                               kfpg::ref::scaleFactor(flag, n, inverse ? kfpg::ref::Direction::Inverse
                                                                                       : kfpg::ref::Direction::Forward));
                    s.worstError = std::max(s.worstError, err);
                    if (!(err < s.bound)) s.failures.push_back(name + ": error " + std::to_string(err));
                }
            std::vector<C> y(n);
            if (kernel(nullptr, y.data(), 0) != StatusNullPointer || kernel(y.data(), y.data(), 3) != StatusFlagError)
                s.failures.push_back(name + ": wrong failure status");
        }
    return s;
}

#ifdef KFPG_HAVE_FFTW
// FFTW's API per precision.
template <class C>
struct Fftw;
template <>
struct Fftw<kfp32fc> : kfpg::tool::FftwCommon<float> {
    static Plan plan(int n, kfp32fc* in, kfp32fc* out, int sign) {
        return fftwf_plan_dft_1d(n, reinterpret_cast<fftwf_complex*>(in), reinterpret_cast<fftwf_complex*>(out), sign,
                                 FFTW_PATIENT);
    }
    static void execute(Plan p, kfp32fc* in, kfp32fc* out) {
        fftwf_execute_dft(p, reinterpret_cast<fftwf_complex*>(in), reinterpret_cast<fftwf_complex*>(out));
    }
};
template <>
struct Fftw<kfp64fc> : kfpg::tool::FftwCommon<double> {
    static Plan plan(int n, kfp64fc* in, kfp64fc* out, int sign) {
        return fftw_plan_dft_1d(n, reinterpret_cast<fftw_complex*>(in), reinterpret_cast<fftw_complex*>(out), sign,
                                FFTW_PATIENT);
    }
    static void execute(Plan p, kfp64fc* in, kfp64fc* out) {
        fftw_execute_dft(p, reinterpret_cast<fftw_complex*>(in), reinterpret_cast<fftw_complex*>(out));
    }
};

#endif

template <class C>
std::vector<BenchRow> bench(bool inverse) {
    std::vector<BenchRow> rows;
    for (int n = 2; n <= 64; ++n) {
        BenchRow row;
        row.label = "N=" + std::to_string(n) + (inverse ? " inv" : " fwd");
        const auto kernel = Traits<C>::sized(n, inverse);
        const auto x = randomInput<C>(n, 5u + n);
        std::vector<kfpg::bench::Body> bodies;
#ifdef KFPG_HAVE_FFTW
        using F = Fftw<C>;
        C* in = static_cast<C*>(F::alloc(n * sizeof(C)));
        C* out = static_cast<C*>(F::alloc(n * sizeof(C)));
        C* peerIn = static_cast<C*>(F::alloc(n * sizeof(C)));
        C* peerOut = static_cast<C*>(F::alloc(n * sizeof(C)));
        auto plan = F::plan(n, peerIn, peerOut, inverse ? FFTW_BACKWARD : FFTW_FORWARD);
#else
        std::vector<C> inStore(n), outStore(n);
        C* in = inStore.data();
        C* out = outStore.data();
#endif
        row.oursError = kfpg::tool::rmsOverInputs([&](unsigned input) {
            const auto xi = randomInput<C>(n, 5u + n + 1000u * input);
            std::memcpy(in, xi.data(), n * sizeof(C));
            kernel(in, out, ScaleNone);
            return errorOf(out, xi.data(), n, inverse, 1);
        });
#ifdef KFPG_HAVE_FFTW
        row.peerError = kfpg::tool::rmsOverInputs([&](unsigned input) {
            const auto xi = randomInput<C>(n, 5u + n + 1000u * input);
            std::memcpy(peerIn, xi.data(), n * sizeof(C));
            F::execute(plan, peerIn, peerOut);
            return errorOf(peerOut, xi.data(), n, inverse, 1);
        });
#endif
        std::memcpy(in, x.data(), n * sizeof(C));
        bodies.push_back(kfpg::bench::repeated([=] { kernel(in, out, ScaleNone); }, out));
#ifdef KFPG_HAVE_FFTW
        std::memcpy(peerIn, x.data(), n * sizeof(C));
        bodies.push_back(kfpg::bench::repeated([=] { F::execute(plan, peerIn, peerOut); }, peerOut));
#endif
        const auto ns = kfpg::bench::interleavedMedians(bodies);
        row.oursNs = ns[0];
#ifdef KFPG_HAVE_FFTW
        row.peerNs = ns[1];
        row.peerVector = kfpg::tool::widestVectorCode(Fftw<C>::text(plan));
        F::destroy(plan);
        for (C* p : {in, out, peerIn, peerOut}) F::release(p);
#endif
        rows.push_back(row);
    }
    return rows;
}

// Every length at the sweep's placements of source and destination.
template <class C>
std::vector<kfpg::tool::SweepKernel> sweep(bool inverse) {
    std::vector<kfpg::tool::SweepKernel> kernels;
    for (int n = 2; n <= 64; ++n) {
        const auto kernel = Traits<C>::sized(n, inverse);
        const std::size_t bytes = n * sizeof(C);
        kernels.push_back({"N=" + std::to_string(n) + (inverse ? " inv" : " fwd"), {{bytes, 8}, {bytes, 8}},
                           [=](const kfpg::tool::PlacedCopies& copies) {
                               const auto x = randomInput<C>(n, 5u + n);
                               std::vector<std::pair<C*, C*>> arrays;
                               for (const auto& at : copies) {
                                   arrays.push_back({reinterpret_cast<C*>(at[0]), reinterpret_cast<C*>(at[1])});
                                   std::memcpy(at[0], x.data(), bytes);
                               }
                               return kfpg::tool::onEveryCopy(arrays, [=](const std::pair<C*, C*>& a) {
                                   kernel(a.first, a.second, ScaleNone);
                               });
                           }});
    }
    return kernels;
}

const char* const kPeer = "FFTW (patient, new-array execute)";

const bool registered32 = kfpg::tool::addFamily({"cdft", "32fc", kPeer, check<kfp32fc>, [] { return bench<kfp32fc>(false); },
                                                 [] { return sweep<kfp32fc>(false); }});
const bool registered64 = kfpg::tool::addFamily({"cdft", "64fc", kPeer, check<kfp64fc>, [] { return bench<kfp64fc>(false); },
                                                 [] { return sweep<kfp64fc>(false); }});
// The inverse kernels, also alone: `kfpg bench cdft-inv`.
const bool registeredInv32 = kfpg::tool::addFamily({"cdft-inv", "32fc", kPeer, nullptr, [] { return bench<kfp32fc>(true); },
                                                    [] { return sweep<kfp32fc>(true); }});
const bool registeredInv64 = kfpg::tool::addFamily({"cdft-inv", "64fc", kPeer, nullptr, [] { return bench<kfp64fc>(true); },
                                                    [] { return sweep<kfp64fc>(true); }});

}  // namespace
