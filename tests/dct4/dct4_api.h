// The exported DCT-IV calls of one precision behind one name, for tests that
// run over both precisions.
#pragma once

#include <cstdint>
#include <vector>

#include "kfpgen.h"

namespace kfpg::test {

template <class Real>
struct Dct4Api;

template <>
struct Dct4Api<float> {
    using Spec = DCT4Spec_32f;
    static constexpr const char* kName = "32f";
    static KfpStatus getSize(int n, int* size) { return kfpgDCT4GetSize_32f(n, size); }
    static KfpStatus init(Spec** spec, int n, unsigned char* mem) { return kfpgDCT4Init_32f(spec, n, mem); }
    static KfpStatus initAlloc(Spec** spec, int n) { return kfpgDCT4InitAlloc_32f(spec, n); }
    static KfpStatus free(Spec* spec) { return kfpgDCT4Free_32f(spec); }
    static KfpStatus run(const float* src, float* dst, const Spec* spec) { return kfpgDCT4_32f(src, dst, spec); }
};

template <>
struct Dct4Api<double> {
    using Spec = DCT4Spec_64f;
    static constexpr const char* kName = "64f";
    static KfpStatus getSize(int n, int* size) { return kfpgDCT4GetSize_64f(n, size); }
    static KfpStatus init(Spec** spec, int n, unsigned char* mem) { return kfpgDCT4Init_64f(spec, n, mem); }
    static KfpStatus initAlloc(Spec** spec, int n) { return kfpgDCT4InitAlloc_64f(spec, n); }
    static KfpStatus free(Spec* spec) { return kfpgDCT4Free_64f(spec); }
    static KfpStatus run(const double* src, double* dst, const Spec* spec) { return kfpgDCT4_64f(src, dst, spec); }
};

// A DCT4Spec built into a block of exactly the reported size.
template <class Real>
class Dct4Plan {
public:
    using Api = Dct4Api<Real>;
    explicit Dct4Plan(int n) {
        int size = 0;
        status_ = Api::getSize(n, &size);
        if (status_ != StatusOk) return;
        block_.assign(static_cast<std::size_t>(size), 0);
        status_ = Api::init(&spec_, n, block_.data());
    }
    KfpStatus status() const { return status_; }
    typename Api::Spec* spec() const { return spec_; }
    KfpStatus run(const Real* src, Real* dst) const { return Api::run(src, dst, spec_); }

private:
    std::vector<unsigned char> block_;
    typename Api::Spec* spec_ = nullptr;
    KfpStatus status_ = StatusSizeError;
};

// The lengths each precision accepts, in increasing order, up to `limit`:
// powers of two from 2, and 2^k + 1 from 33 (32f) or 9 (64f).
template <class Real>
std::vector<int> acceptedLengths(int limit) {
    const int firstOdd = sizeof(Real) == 4 ? 33 : 9;
    std::vector<int> out;
    for (long p = 2; p <= limit; p *= 2) {
        out.push_back(static_cast<int>(p));
        if (p + 1 >= firstOdd && p + 1 <= limit) out.push_back(static_cast<int>(p + 1));
    }
    return out;
}

}  // namespace kfpg::test
