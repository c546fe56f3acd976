// Walsh-Hadamard kernels, orders 1..13: check against the long-double
// reference, and time them next to the textbook in-place radix-2 loop.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "buffers.h"
#include "kfpgen.h"
#include "reference.h"
#include "registry.h"
#include "textbook/wht_loop.h"
#include "timing.h"

namespace {

using kfpg::ref::Real;
using kfpg::test::OffsetArray;
using namespace kfpg::tool;

template <class T>
using Kernel = KfpStatus (*)(const T*, T*, int, unsigned char*);

#define KFPG_WHT_ORDERS(X, T) \
    X(1, T), X(2, T), X(3, T), X(4, T), X(5, T), X(6, T), X(7, T), X(8, T), X(9, T), X(10, T), X(11, T), X(12, T), X(13, T)
#define KFPG_WHT_KERNEL(K, T) kfpgWHT_##K##_##T

const Kernel<kfp32f> kKernels32f[] = {KFPG_WHT_ORDERS(KFPG_WHT_KERNEL, 32f)};
const Kernel<kfp64f> kKernels64f[] = {KFPG_WHT_ORDERS(KFPG_WHT_KERNEL, 64f)};

Kernel<kfp32f> kernel(int order, kfp32f*) { return kKernels32f[order - 1]; }
Kernel<kfp64f> kernel(int order, kfp64f*) { return kKernels64f[order - 1]; }
int bufferBytes(int order, kfp32f*) {
    int bytes = 0;
    kfpgWHTGetBufferSize_32f(order, &bytes);
    return bytes;
}
int bufferBytes(int order, kfp64f*) {
    int bytes = 0;
    kfpgWHTGetBufferSize_64f(order, &bytes);
    return bytes;
}

// One order set up for calls: input, output and work buffer.
template <class T>
struct Setup {
    int order;
    long n;
    std::vector<Real> x;
    OffsetArray<T> src, dst;
    OffsetArray<unsigned char> buffer;
    Kernel<T> run;
    explicit Setup(int k, std::size_t offset = 0)
        : order(k), n(1L << k), x(kfpg::ref::randomReals(n, 77u + k)), src(n, offset), dst(n, offset),
          buffer(bufferBytes(k, static_cast<T*>(nullptr)), 0), run(kernel(k, static_cast<T*>(nullptr))) {
        src.assign(x);
        for (long i = 0; i < n; ++i) x[i] = src[i];  // the reference sees the rounded input
    }
};

std::string kernelName(int order, std::size_t elementBytes) {
    return "kfpgWHT_" + std::to_string(order) + (elementBytes == 4 ? "_32f" : "_64f");
}

// Every order and flag against the reference (the bound grows with the
// order), the misaligned path bit for bit against the aligned one, and the
// statuses of a null pointer and a bad flag.
template <class T>
CheckSummary check() {
    CheckSummary s;
    const double eps = std::numeric_limits<T>::epsilon();
    s.bound = 14 * eps;
    for (int order = 1; order <= 13; ++order) {
        Setup<T> aligned(order), shifted(order, 8);
        const auto want = kfpg::ref::walshHadamard(aligned.x);
        const std::string name = kernelName(order, sizeof(T));
        for (int flag : {ScaleNone, ScaleBySqrtN, ScaleFwdByN, ScaleInvByN}) {
            auto scaled = want;
            for (auto& v : scaled) v *= kfpg::ref::scaleFactor(flag, aligned.n, kfpg::ref::Direction::SelfInverse);
            const KfpStatus st = aligned.run(aligned.src.data(), aligned.dst.data(), flag, aligned.buffer.data());
            const double err = kfpg::ref::relativeL2(aligned.dst.data(), scaled);
            s.worstError = std::max(s.worstError, err);
            if (st != StatusOk || !(err <= (order + 1) * eps))
                s.failures.push_back(name + " flag " + std::to_string(flag) + ": status " + std::to_string(st) +
                                     ", error " + std::to_string(err));
            shifted.run(shifted.src.data(), shifted.dst.data(), flag, nullptr);
            if (std::memcmp(shifted.dst.data(), aligned.dst.data(), aligned.n * sizeof(T)) != 0)
                s.failures.push_back(name + " flag " + std::to_string(flag) + ": misaligned call differs");
        }
        if (aligned.run(nullptr, aligned.dst.data(), ScaleNone, nullptr) != StatusNullPointer ||
            aligned.run(aligned.src.data(), aligned.dst.data(), 3, nullptr) != StatusFlagError)
            s.failures.push_back(name + ": wrong status for a null pointer or a bad flag");
        ++s.kernels;
    }
    return s;
}

// Both sides transform one array in place over and over, unscaled (the
// values soon overflow; additions cost the same for every value except
// denormals, which cannot arise here). The error columns come from one
// fresh call each.
template <class T>
std::vector<BenchRow> bench() {
    std::vector<BenchRow> rows;
    for (int order = 1; order <= 13; ++order) {
        Setup<T> ours(order), textbook(order);
        const int n = static_cast<int>(ours.n);
        T* data = ours.dst.data();
        T* loop = textbook.dst.data();
        std::memcpy(data, ours.src.data(), n * sizeof(T));
        std::memcpy(loop, ours.src.data(), n * sizeof(T));
        const auto medians = kfpg::bench::interleavedMedians({
            kfpg::bench::repeated([&] { ours.run(data, data, ScaleNone, ours.buffer.data()); }, data),
            kfpg::bench::repeated([&] { kfpg::textbook::walshHadamardInPlace(loop, n); }, loop),
        });

        const auto want = kfpg::ref::walshHadamard(ours.x);
        ours.run(ours.src.data(), data, ScaleNone, ours.buffer.data());
        std::memcpy(loop, ours.src.data(), n * sizeof(T));
        kfpg::textbook::walshHadamardInPlace(loop, n);

        const double additions = static_cast<double>(order) * n;
        char note[64];
        std::snprintf(note, sizeof note, "%6.2f vs %5.2f add/ns", additions / medians[0], additions / medians[1]);
        BenchRow row;
        row.label = "order " + std::to_string(order);
        row.oursNs = medians[0];
        row.peerNs = medians[1];
        row.oursError = kfpg::ref::relativeL2(data, want);
        row.peerError = kfpg::ref::relativeL2(loop, want);
        row.note = note;
        rows.push_back(row);
    }
    return rows;
}

// Every order at the sweep's placements of source, destination and work
// buffer (orders 1..7 have no buffer).
template <class T>
std::vector<SweepKernel> sweep() {
    std::vector<SweepKernel> kernels;
    for (int order = 1; order <= 13; ++order) {
        const long n = 1L << order;
        const auto run = kernel(order, static_cast<T*>(nullptr));
        const std::size_t bytes = n * sizeof(T);
        std::vector<SweepArray> arrays{{bytes, sizeof(T)}, {bytes, sizeof(T)}};
        if (const int buffer = bufferBytes(order, static_cast<T*>(nullptr))) arrays.push_back({std::size_t(buffer), 0});
        kernels.push_back({"order " + std::to_string(order), arrays, [=](const PlacedCopies& copies) {
                               const auto x = kfpg::ref::randomReals(n, 77u + order);
                               struct Arrays {
                                   T *src, *dst;
                                   unsigned char* buffer;
                               };
                               std::vector<Arrays> setups;
                               for (const auto& at : copies) {
                                   setups.push_back({reinterpret_cast<T*>(at[0]), reinterpret_cast<T*>(at[1]),
                                                     at.size() > 2 ? at[2] : nullptr});
                                   for (long i = 0; i < n; ++i) setups.back().src[i] = static_cast<T>(x[i]);
                               }
                               return onEveryCopy(setups, [=](const Arrays& a) { run(a.src, a.dst, ScaleNone, a.buffer); });
                           }});
    }
    return kernels;
}

const char kPeer[] = "textbook radix-2 loop (-O3, x86-64)";

const bool registered32f = addFamily({"wht", "32f", kPeer, check<kfp32f>, bench<kfp32f>, sweep<kfp32f>});
const bool registered64f = addFamily({"wht", "64f", kPeer, check<kfp64f>, bench<kfp64f>, sweep<kfp64f>});

}  // namespace
