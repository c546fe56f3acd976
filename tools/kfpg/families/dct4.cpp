// DCT-IV in kfpg: `check` runs every accepted power of two up to 2^16 and
// the odd lengths up to 2^10 + 1 against the long-double definition;
// `bench` times N = 2 .. 65536 next to FFTW's REDFT11 (planned with
// FFTW_PATIENT), which computes twice the DCT-IV: times are compared, and
// the accuracy columns divide FFTW's result by 2.
#include <cmath>
#include <string>
#include <vector>

#ifdef KFPG_HAVE_FFTW
#include <fftw3.h>
#endif

#include "kfpcore.h"
#include "kfpgen.h"
#include "reference.h"
#include "registry.h"
#include "timing.h"

namespace {

using kfpg::ref::Real;
using kfpg::tool::BenchRow;
using kfpg::tool::CheckSummary;

template <class T>
struct Api;
template <>
struct Api<float> {
    using Spec = DCT4Spec_32f;
    static KfpStatus getSize(int n, int* bytes) { return kfpgDCT4GetSize_32f(n, bytes); }
    static KfpStatus init(Spec** s, int n, unsigned char* block) { return kfpgDCT4Init_32f(s, n, block); }
    static KfpStatus initAlloc(Spec** s, int n) { return kfpgDCT4InitAlloc_32f(s, n); }
    static KfpStatus run(const float* x, float* y, const Spec* s) { return kfpgDCT4_32f(x, y, s); }
    static KfpStatus release(Spec* s) { return kfpgDCT4Free_32f(s); }
};
template <>
struct Api<double> {
    using Spec = DCT4Spec_64f;
    static KfpStatus getSize(int n, int* bytes) { return kfpgDCT4GetSize_64f(n, bytes); }
    static KfpStatus init(Spec** s, int n, unsigned char* block) { return kfpgDCT4Init_64f(s, n, block); }
    static KfpStatus initAlloc(Spec** s, int n) { return kfpgDCT4InitAlloc_64f(s, n); }
    static KfpStatus run(const double* x, double* y, const Spec* s) { return kfpgDCT4_64f(x, y, s); }
    static KfpStatus release(Spec* s) { return kfpgDCT4Free_64f(s); }
};

// Reference outputs: all of them up to 4096, an irregular sample beyond.
struct Reference {
    std::vector<Real> input;
    std::vector<long> which;
    std::vector<Real> want;
    explicit Reference(int n, unsigned seed = 0) {
        input = kfpg::ref::randomReals(static_cast<std::size_t>(n), 77u + static_cast<unsigned>(n) + 1000u * seed);
        for (auto& v : input) v = static_cast<float>(v);
        if (n <= 4096)
            for (long k = 0; k < n; ++k) which.push_back(k);
        else
            for (long i = 0; i < 1024; ++i) which.push_back((i * 104729L + i * i) % n);
        want = kfpg::ref::dct4At(input, which);
    }
    template <class T>
    double error(const T* y, double scale = 1) const {
        long double err = 0, norm = 0;
        for (std::size_t i = 0; i < which.size(); ++i) {
            const long double d = static_cast<long double>(y[which[i]]) * scale - want[i];
            err += d * d;
            norm += want[i] * want[i];
        }
        return static_cast<double>(std::sqrt(err / norm));
    }
};

double bound(int n, bool single) {
    const double base = single ? 2e-7 : 1e-15;
    return n <= 4096 ? base : base * std::log2(static_cast<double>(n)) / 12.0;
}

template <class T>
CheckSummary check() {
    CheckSummary s;
    s.bound = bound(65536, sizeof(T) == 4);
    const int firstOdd = sizeof(T) == 4 ? 33 : 9;
    std::vector<int> lengths;
    for (int p = 2; p <= 65536; p *= 2) {
        lengths.push_back(p);
        if (p + 1 >= firstOdd && p + 1 <= 1025) lengths.push_back(p + 1);
    }
    for (int n : lengths) {
        const Reference ref(n);
        typename Api<T>::Spec* spec = nullptr;
        const std::string name = "DCT4 N=" + std::to_string(n);
        if (Api<T>::initAlloc(&spec, n) != StatusOk) {
            s.failures.push_back(name + ": InitAlloc failed");
            continue;
        }
        std::vector<T> x(ref.input.begin(), ref.input.end()), y(n);
        const KfpStatus status = Api<T>::run(x.data(), y.data(), spec);
        Api<T>::release(spec);
        ++s.kernels;
        const double err = ref.error(y.data());
        s.worstError = std::max(s.worstError, err / bound(n, sizeof(T) == 4) * s.bound);
        if (status != StatusOk || !(err <= bound(n, sizeof(T) == 4)))
            s.failures.push_back(name + ": error " + std::to_string(err));
    }
    return s;
}

#ifdef KFPG_HAVE_FFTW
// FFTW's REDFT11 of one precision.
template <class T>
struct Peer;
template <>
struct Peer<float> {
    fftwf_plan plan;
    Peer(int n, float* in, float* out) { plan = fftwf_plan_r2r_1d(n, in, out, FFTW_REDFT11, FFTW_PATIENT); }
    ~Peer() { fftwf_destroy_plan(plan); }
    void run() const { fftwf_execute(plan); }
};
template <>
struct Peer<double> {
    fftw_plan plan;
    Peer(int n, double* in, double* out) { plan = fftw_plan_r2r_1d(n, in, out, FFTW_REDFT11, FFTW_PATIENT); }
    ~Peer() { fftw_destroy_plan(plan); }
    void run() const { fftw_execute(plan); }
};
#endif

template <class T>
std::vector<BenchRow> bench() {
    std::vector<BenchRow> rows;
    for (int n = 2; n <= 65536; n *= 2) {
        const Reference ref(n);
        BenchRow row;
        row.label = "N=" + std::to_string(n);
        typename Api<T>::Spec* spec = nullptr;
        Api<T>::initAlloc(&spec, n);
        auto* x = static_cast<T*>(kfpMalloc(n * static_cast<int>(sizeof(T))));
        auto* y = static_cast<T*>(kfpMalloc(n * static_cast<int>(sizeof(T))));
#ifdef KFPG_HAVE_FFTW
        auto* px = static_cast<T*>(kfpMalloc(n * static_cast<int>(sizeof(T))));
        auto* py = static_cast<T*>(kfpMalloc(n * static_cast<int>(sizeof(T))));
        const Peer<T> peer(n, px, py);  // planning may overwrite the arrays
#endif
        // Beyond 1024 one input already averages over a thousand outputs.
        const unsigned inputs = n <= 1024 ? kfpg::tool::kAccuracyInputs : 1;
        double oursSquares = 0;
        [[maybe_unused]] double peerSquares = 0;
        for (unsigned input = 0; input < inputs; ++input) {
            const Reference sample = input == 0 ? ref : Reference(n, input);
            for (int i = 0; i < n; ++i) x[i] = static_cast<T>(sample.input[i]);
            Api<T>::run(x, y, spec);
            oursSquares += std::pow(sample.error(y), 2);
#ifdef KFPG_HAVE_FFTW
            for (int i = 0; i < n; ++i) px[i] = static_cast<T>(sample.input[i]);
            peer.run();
            peerSquares += std::pow(sample.error(py, 0.5), 2);
#endif
        }
        row.oursError = std::sqrt(oursSquares / inputs);
        for (int i = 0; i < n; ++i) x[i] = static_cast<T>(ref.input[i]);
        std::vector<kfpg::bench::Body> bodies{kfpg::bench::repeated([&] { Api<T>::run(x, y, spec); }, y)};
#ifdef KFPG_HAVE_FFTW
        row.peerError = std::sqrt(peerSquares / inputs);
        for (int i = 0; i < n; ++i) px[i] = static_cast<T>(ref.input[i]);
        bodies.push_back(kfpg::bench::repeated([&] { peer.run(); }, py));
#endif
        const auto ns = kfpg::bench::interleavedMedians(bodies);
        row.oursNs = ns[0];
#ifdef KFPG_HAVE_FFTW
        row.peerNs = ns[1];
        kfpFree(px);
        kfpFree(py);
#endif
        rows.push_back(row);
        kfpFree(x);
        kfpFree(y);
        Api<T>::release(spec);
    }
    return rows;
}

// Every power of two at the sweep's placements of source, destination and
// the plan's block (which holds the work array between the two stages).
template <class T>
std::vector<kfpg::tool::SweepKernel> sweep() {
    std::vector<kfpg::tool::SweepKernel> kernels;
    for (int n = 2; n <= 65536; n *= 2) {
        int blockBytes = 0;
        Api<T>::getSize(n, &blockBytes);
        const std::size_t bytes = n * sizeof(T);
        kernels.push_back({"N=" + std::to_string(n), {{bytes, sizeof(T)}, {bytes, sizeof(T)}, {std::size_t(blockBytes), 0}},
                           [=](const kfpg::tool::PlacedCopies& copies) {
                               const auto x = kfpg::ref::randomReals(n, 77u + n);
                               struct Arrays {
                                   T *src, *dst;
                                   typename Api<T>::Spec* spec;
                               };
                               std::vector<Arrays> setups;
                               for (const auto& at : copies) {
                                   setups.push_back({reinterpret_cast<T*>(at[0]), reinterpret_cast<T*>(at[1]), nullptr});
                                   Api<T>::init(&setups.back().spec, n, at[2]);
                                   for (int i = 0; i < n; ++i) setups.back().src[i] = static_cast<T>(x[i]);
                               }
                               return kfpg::tool::onEveryCopy(setups, [](const Arrays& a) { Api<T>::run(a.src, a.dst, a.spec); });
                           }});
    }
    return kernels;
}

const char* kPeer = "FFTW REDFT11 patient";
const bool registered32 = kfpg::tool::addFamily({"dct4", "32f", kPeer, check<float>, bench<float>, sweep<float>});
const bool registered64 = kfpg::tool::addFamily({"dct4", "64f", kPeer, check<double>, bench<double>, sweep<double>});

}  // namespace
