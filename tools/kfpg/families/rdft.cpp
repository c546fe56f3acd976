// Forward real DFT: self-check of all 378 kernels and the generic entries,
// and ns per call of every length (CCS) next to FFTW's patient r2c plan
// (new-array execute), with Pack and Perm as ratios to CCS.
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

#define KFPG_TOOL_RDFT(N, L, T) kfpgDFTFwd_RTo##L##_##N##_##T,
#define KFPG_TOOL_CCS32(N) KFPG_TOOL_RDFT(N, CCS, 32f)
#define KFPG_TOOL_PACK32(N) KFPG_TOOL_RDFT(N, Pack, 32f)
#define KFPG_TOOL_PERM32(N) KFPG_TOOL_RDFT(N, Perm, 32f)
#define KFPG_TOOL_CCS64(N) KFPG_TOOL_RDFT(N, CCS, 64f)
#define KFPG_TOOL_PACK64(N) KFPG_TOOL_RDFT(N, Pack, 64f)
#define KFPG_TOOL_PERM64(N) KFPG_TOOL_RDFT(N, Perm, 64f)

template <class T>
struct Traits;

template <>
struct Traits<float> {
    static Sized<float> sized(int n, Layout l) {
        static const Sized<float> ccs[] = {KFPG_FOR_LENGTHS(KFPG_TOOL_CCS32)};
        static const Sized<float> pack[] = {KFPG_FOR_LENGTHS(KFPG_TOOL_PACK32)};
        static const Sized<float> perm[] = {KFPG_FOR_LENGTHS(KFPG_TOOL_PERM32)};
        return (l == Layout::CCS ? ccs : l == Layout::Pack ? pack : perm)[n - 2];
    }
    static Generic<float> generic(Layout l) {
        return l == Layout::CCS ? kfpgDFTFwd_RToCCS_32f : l == Layout::Pack ? kfpgDFTFwd_RToPack_32f : kfpgDFTFwd_RToPerm_32f;
    }
    static constexpr double bound = 4e-7;
};

template <>
struct Traits<double> {
    static Sized<double> sized(int n, Layout l) {
        static const Sized<double> ccs[] = {KFPG_FOR_LENGTHS(KFPG_TOOL_CCS64)};
        static const Sized<double> pack[] = {KFPG_FOR_LENGTHS(KFPG_TOOL_PACK64)};
        static const Sized<double> perm[] = {KFPG_FOR_LENGTHS(KFPG_TOOL_PERM64)};
        return (l == Layout::CCS ? ccs : l == Layout::Pack ? pack : perm)[n - 2];
    }
    static Generic<double> generic(Layout l) {
        return l == Layout::CCS ? kfpgDFTFwd_RToCCS_64f : l == Layout::Pack ? kfpgDFTFwd_RToPack_64f : kfpgDFTFwd_RToPerm_64f;
    }
    static constexpr double bound = 1e-15;
};

template <class T>
double errorOf(const T* got, const T* x, int n, Layout layout, kfpg::ref::Real scale) {
    auto want = kfpg::ref::realDftPacked(std::vector<kfpg::ref::Real>(x, x + n), layout);
    for (auto& v : want) v *= scale;
    return kfpg::ref::relativeL2(got, want);
}

template <class T>
CheckSummary check() {
    CheckSummary s;
    s.bound = Traits<T>::bound;
    const char* names[] = {"CCS", "Pack", "Perm"};
    for (Layout layout : {Layout::CCS, Layout::Pack, Layout::Perm})
        for (int n = 2; n <= 64; ++n) {
            const std::string name = std::string(names[static_cast<int>(layout)]) + " " + std::to_string(n);
            const auto kernel = Traits<T>::sized(n, layout);
            const long count = kfpg::ref::packedLength(n, layout);
            ++s.kernels;
            for (int flag : {ScaleFwdByN, ScaleInvByN, ScaleBySqrtN, ScaleNone})
                for (unsigned seed = 1; seed <= 3; ++seed) {
                    const auto x = kfpg::tool::randomSignal<T>(n, seed * 89u + n);
                    std::vector<T> y(count), z(count);
                    if (kernel(x.data(), y.data(), flag) != StatusOk ||
                        Traits<T>::generic(layout)(x.data(), z.data(), n, flag) != StatusOk ||
                        std::memcmp(y.data(), z.data(), count * sizeof(T)) != 0) {
                        s.failures.push_back(name + ": status or generic entry differs");
                        continue;
                    }
                    const double err = errorOf(y.data(), x.data(), n, layout,
                                               kfpg::ref::scaleFactor(flag, n, kfpg::ref::Direction::Forward));
                    s.worstError = std::max(s.worstError, err);
                    if (!(err < s.bound)) s.failures.push_back(name + ": error " + std::to_string(err));
                }
            std::vector<T> y(count);
            if (kernel(nullptr, y.data(), 0) != StatusNullPointer || kernel(y.data(), y.data(), 3) != StatusFlagError)
                s.failures.push_back(name + ": wrong failure status");
        }
    return s;
}

#ifdef KFPG_HAVE_FFTW
template <class T>
using Fftw = kfpg::tool::FftwR2c<T>;
#endif

template <class T>
std::vector<BenchRow> bench() {
    std::vector<BenchRow> rows;
    for (int n = 2; n <= 64; ++n) {
        BenchRow row;
        row.label = "N=" + std::to_string(n) + " CCS";
        const int count = n + 2;
        // Ours and the peer on arrays of their own, 64-byte aligned.
        std::vector<T*> arrays;
        auto array = [&](int elements) {
            void* p = nullptr;
            if (posix_memalign(&p, 64, elements * sizeof(T)) != 0) std::abort();
            arrays.push_back(static_cast<T*>(p));
            return arrays.back();
        };
        T *in = array(n), *out = array(count), *peerIn = array(n), *peerOut = array(count);
        const auto x = kfpg::tool::randomSignal<T>(n, 5u + n);
        std::memcpy(in, x.data(), n * sizeof(T));
        std::vector<kfpg::bench::Body> bodies;
        for (Layout layout : {Layout::CCS, Layout::Pack, Layout::Perm}) {
            const auto kernel = Traits<T>::sized(n, layout);
            bodies.push_back(kfpg::bench::repeated([=] { kernel(in, out, ScaleNone); }, out));
        }
        row.oursError = kfpg::tool::rmsOverInputs([&](unsigned input) {
            const auto xi = kfpg::tool::randomSignal<T>(n, 5u + n + 1000u * input);
            std::vector<T> y(count);
            Traits<T>::sized(n, Layout::CCS)(xi.data(), y.data(), ScaleNone);
            return errorOf(y.data(), xi.data(), n, Layout::CCS, 1);
        });
#ifdef KFPG_HAVE_FFTW
        using F = Fftw<T>;
        auto plan = F::plan(n, peerIn, peerOut);
        row.peerError = kfpg::tool::rmsOverInputs([&](unsigned input) {
            const auto xi = kfpg::tool::randomSignal<T>(n, 5u + n + 1000u * input);
            std::memcpy(peerIn, xi.data(), n * sizeof(T));
            F::execute(plan, peerIn, peerOut);
            return errorOf(peerOut, xi.data(), n, Layout::CCS, 1);
        });
        std::memcpy(peerIn, x.data(), n * sizeof(T));
        bodies.push_back(kfpg::bench::repeated([=] { F::execute(plan, peerIn, peerOut); }, peerOut));
#endif
        const auto ns = kfpg::bench::interleavedMedians(bodies);
        row.oursNs = ns[0];
        row.note = kfpg::tool::packPermNote(ns[0], ns[1], ns[2]);
#ifdef KFPG_HAVE_FFTW
        row.peerNs = ns[3];
        row.peerVector = kfpg::tool::widestVectorCode(Fftw<T>::text(plan));
        F::destroy(plan);
#endif
        for (T* p : arrays) std::free(p);
        rows.push_back(row);
    }
    return rows;
}

const char* const kPeer = "FFTW r2c (patient, new-array execute)";

const bool registered32 = kfpg::tool::addFamily({"rdft", "32f", kPeer, check<float>, bench<float>});
const bool registered64 = kfpg::tool::addFamily({"rdft", "64f", kPeer, check<double>, bench<double>});

}  // namespace
