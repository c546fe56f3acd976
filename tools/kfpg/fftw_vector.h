// The widest vector code in an FFTW plan, read from the codelet names in its
// printed form ("n2fv_8_avx", "n1fv_7_sse2", "r2cf_16"): 256-bit codelets
// hold twice the values per vector that our 128-bit kernels do, which a
// ratio column should be read with.
#pragma once

#include <cstdlib>
#include <string>

namespace kfpg::tool {

// planText: fftw_sprint_plan's (or fftwf_'s) result, released here.
inline std::string widestVectorCode(char* planText) {
    const std::string plain(planText ? planText : "");
    std::free(planText);
    for (const char* isa : {"avx512", "avx2", "avx", "sse2"})
        if (plain.find(std::string("_") + isa + "\"") != std::string::npos) return isa;
    return "scalar";
}

}  // namespace kfpg::tool
