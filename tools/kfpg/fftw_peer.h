// FFTW as the benchmarks' peer: what every family's plan wrapper shares per
// precision (memory, the plan's end and printed form), and the widest
// vector code in a plan.
#pragma once

#include <cstdlib>
#include <string>

#ifdef KFPG_HAVE_FFTW
#include <fftw3.h>
#endif

namespace kfpg::tool {

#ifdef KFPG_HAVE_FFTW
// A family's wrapper derives from this and adds its plan and execute calls.
template <class Real>
struct FftwCommon;
template <>
struct FftwCommon<float> {
    using Plan = fftwf_plan;
    static void* alloc(std::size_t bytes) { return fftwf_malloc(bytes); }
    static void release(void* p) { fftwf_free(p); }
    static void destroy(Plan p) { fftwf_destroy_plan(p); }
    static char* text(Plan p) { return fftwf_sprint_plan(p); }
};
template <>
struct FftwCommon<double> {
    using Plan = fftw_plan;
    static void* alloc(std::size_t bytes) { return fftw_malloc(bytes); }
    static void release(void* p) { fftw_free(p); }
    static void destroy(Plan p) { fftw_destroy_plan(p); }
    static char* text(Plan p) { return fftw_sprint_plan(p); }
};

// FFTW's patient real-to-complex plan per precision (the forward real DFT's
// peer, and the first half of the inverse's round trip).
template <class Real>
struct FftwR2c;
template <>
struct FftwR2c<float> : FftwCommon<float> {
    static Plan plan(int n, float* in, float* out) {
        return fftwf_plan_dft_r2c_1d(n, in, reinterpret_cast<fftwf_complex*>(out), FFTW_PATIENT);
    }
    static void execute(Plan p, float* in, float* out) { fftwf_execute_dft_r2c(p, in, reinterpret_cast<fftwf_complex*>(out)); }
};
template <>
struct FftwR2c<double> : FftwCommon<double> {
    static Plan plan(int n, double* in, double* out) {
        return fftw_plan_dft_r2c_1d(n, in, reinterpret_cast<fftw_complex*>(out), FFTW_PATIENT);
    }
    static void execute(Plan p, double* in, double* out) { fftw_execute_dft_r2c(p, in, reinterpret_cast<fftw_complex*>(out)); }
};
#endif

// The widest vector code in a plan, read from the codelet names in its
// printed form ("n2fv_8_avx", "n1fv_7_sse2", "r2cf_16"): 256-bit codelets
// hold twice the values per vector that our 128-bit kernels do, which a
// ratio column should be read with.
// planText: fftw_sprint_plan's (or fftwf_'s) result, released here.
inline std::string widestVectorCode(char* planText) {
    const std::string plain(planText ? planText : "");
    std::free(planText);
    for (const char* isa : {"avx512", "avx2", "avx", "sse2"})
        if (plain.find(std::string("_") + isa + "\"") != std::string::npos) return isa;
    return "scalar";
}

}  // namespace kfpg::tool
