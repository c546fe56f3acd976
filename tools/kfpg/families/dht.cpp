// Hartley transform: self-check of all 126 kernels and the generic entries,
// and ns per call of every length next to FFTW's DHT (r2r, FFTW_DHT, patient
// plan, new-array execute).
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

template <class T>
using Sized = KfpStatus (*)(const T*, T*, int);

#define KFPG_TOOL_DHT32(N) kfpgHartley_##N##_32f,
#define KFPG_TOOL_DHT64(N) kfpgHartley_##N##_64f,

template <class T>
struct Traits;

template <>
struct Traits<float> {
    static Sized<float> sized(int n) {
        static const Sized<float> kernels[] = {KFPG_FOR_LENGTHS(KFPG_TOOL_DHT32)};
        return kernels[n - 2];
    }
    static KfpStatus generic(const float* x, float* y, int n, int flag) { return kfpgHartley_32f(x, y, n, flag); }
    static constexpr double bound = 4e-7;
    static constexpr const char* type = "32f";
};

template <>
struct Traits<double> {
    static Sized<double> sized(int n) {
        static const Sized<double> kernels[] = {KFPG_FOR_LENGTHS(KFPG_TOOL_DHT64)};
        return kernels[n - 2];
    }
    static KfpStatus generic(const double* x, double* y, int n, int flag) { return kfpgHartley_64f(x, y, n, flag); }
    static constexpr double bound = 1e-15;
    static constexpr const char* type = "64f";
};

template <class T>
double errorOf(const T* got, const T* x, int n, kfpg::ref::Real scale) {
    auto h = kfpg::ref::hartley(std::vector<kfpg::ref::Real>(x, x + n));
    for (auto& v : h) v *= scale;
    return kfpg::ref::relativeL2(got, h);
}

template <class T>
CheckSummary check() {
    CheckSummary s;
    s.bound = Traits<T>::bound;
    for (int n = 2; n <= 64; ++n) {
        const std::string name = "Hartley " + std::to_string(n) + " " + Traits<T>::type;
        const auto kernel = Traits<T>::sized(n);
        ++s.kernels;
        for (int flag : {ScaleFwdByN, ScaleInvByN, ScaleBySqrtN, ScaleNone})
            for (unsigned seed = 1; seed <= 3; ++seed) {
                const auto x = kfpg::tool::randomSignal<T>(n, seed * 89u + n);
                std::vector<T> y(n), z(n);
                if (kernel(x.data(), y.data(), flag) != StatusOk || Traits<T>::generic(x.data(), z.data(), n, flag) != StatusOk ||
                    std::memcmp(y.data(), z.data(), n * sizeof(T)) != 0) {
                    s.failures.push_back(name + ": status or generic entry differs");
                    continue;
                }
                const double err = errorOf(y.data(), x.data(), n, kfpg::ref::scaleFactor(flag, n, kfpg::ref::Direction::SelfInverse));
                s.worstError = std::max(s.worstError, err);
                if (!(err < s.bound)) s.failures.push_back(name + ": error " + std::to_string(err));
            }
        std::vector<T> y(n);
        if (kernel(nullptr, y.data(), 0) != StatusNullPointer || kernel(y.data(), y.data(), 3) != StatusFlagError)
            s.failures.push_back(name + ": wrong failure status");
    }
    return s;
}

#ifdef KFPG_HAVE_FFTW
// FFTW's API per precision.
template <class T>
struct Fftw;
template <>
struct Fftw<float> : kfpg::tool::FftwCommon<float> {
    static Plan plan(int n, float* in, float* out) { return fftwf_plan_r2r_1d(n, in, out, FFTW_DHT, FFTW_PATIENT); }
    static void execute(Plan p, float* in, float* out) { fftwf_execute_r2r(p, in, out); }
};
template <>
struct Fftw<double> : kfpg::tool::FftwCommon<double> {
    static Plan plan(int n, double* in, double* out) { return fftw_plan_r2r_1d(n, in, out, FFTW_DHT, FFTW_PATIENT); }
    static void execute(Plan p, double* in, double* out) { fftw_execute_r2r(p, in, out); }
};

#endif

template <class T>
std::vector<BenchRow> bench() {
    std::vector<BenchRow> rows;
    for (int n = 2; n <= 64; ++n) {
        BenchRow row;
        row.label = "N=" + std::to_string(n);
        const auto kernel = Traits<T>::sized(n);
        const auto x = kfpg::tool::randomSignal<T>(n, 7u + n);
        std::vector<kfpg::bench::Body> bodies;
#ifdef KFPG_HAVE_FFTW
        using F = Fftw<T>;
        T* in = static_cast<T*>(F::alloc(n * sizeof(T)));
        T* out = static_cast<T*>(F::alloc(n * sizeof(T)));
        T* peerIn = static_cast<T*>(F::alloc(n * sizeof(T)));
        T* peerOut = static_cast<T*>(F::alloc(n * sizeof(T)));
        auto plan = F::plan(n, peerIn, peerOut);
#else
        std::vector<T> inStore(n), outStore(n);
        T* in = inStore.data();
        T* out = outStore.data();
#endif
        row.oursError = kfpg::tool::rmsOverInputs([&](unsigned input) {
            const auto xi = kfpg::tool::randomSignal<T>(n, 7u + n + 1000u * input);
            std::memcpy(in, xi.data(), n * sizeof(T));
            kernel(in, out, ScaleNone);
            return errorOf(out, xi.data(), n, 1);
        });
#ifdef KFPG_HAVE_FFTW
        row.peerError = kfpg::tool::rmsOverInputs([&](unsigned input) {
            const auto xi = kfpg::tool::randomSignal<T>(n, 7u + n + 1000u * input);
            std::memcpy(peerIn, xi.data(), n * sizeof(T));
            F::execute(plan, peerIn, peerOut);
            return errorOf(peerOut, xi.data(), n, 1);
        });
#endif
        std::memcpy(in, x.data(), n * sizeof(T));
        bodies.push_back(kfpg::bench::repeated([=] { kernel(in, out, ScaleNone); }, out));
#ifdef KFPG_HAVE_FFTW
        std::memcpy(peerIn, x.data(), n * sizeof(T));
        bodies.push_back(kfpg::bench::repeated([=] { F::execute(plan, peerIn, peerOut); }, peerOut));
#endif
        const auto ns = kfpg::bench::interleavedMedians(bodies);
        row.oursNs = ns[0];
#ifdef KFPG_HAVE_FFTW
        row.peerNs = ns[1];
        row.peerVector = kfpg::tool::widestVectorCode(Fftw<T>::text(plan));
        F::destroy(plan);
        for (T* p : {in, out, peerIn, peerOut}) F::release(p);
#endif
        rows.push_back(row);
    }
    return rows;
}

const char* const kPeer = "FFTW DHT (r2r, patient, new-array execute)";

const bool registered32 = kfpg::tool::addFamily({"dht", "32f", kPeer, check<float>, bench<float>});
const bool registered64 = kfpg::tool::addFamily({"dht", "64f", kPeer, check<double>, bench<double>});

}  // namespace
