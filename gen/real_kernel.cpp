#include "real_kernel.h"

#include <cmath>

namespace kfpg::gen {

EmitResult emitRealKernelBody(const Dag& dag, Precision precision) {
    EmitOptions o;
    o.mode = EmitMode::Scalar;
    o.precision = precision;
    o.load = [](int i) { return "pSrc + " + std::to_string(i); };
    o.store = [](int i) { return "pDst + " + std::to_string(i); };
    o.scaleVar = "factor";
    return emitBody(dag, o);
}

std::string realKernelFunction(const RealKernelText& k) {
    const bool f32 = k.precision == Precision::F32;
    const std::string t = f32 ? "float" : "double", type = f32 ? "kfp32f" : "kfp64f";
    static const char* const directions[] = {"Forward", "Inverse", "SelfInverse"};
    const Real n = k.n;
    std::string s = "extern \"C\" KFPG_API KfpStatus " + k.name + "(const " + type + "* pSrc, " + type + "* pDst, int flag) {\n";
    s += "    if (!pSrc || !pDst) return StatusNullPointer;\n";
    s += "    static constexpr kfpg::FlagFactors<" + t + "> kFactors = kfpg::flagFactors<" + t + ">(kfpg::ScaleDirection::" +
         directions[static_cast<int>(k.direction)] + ", " + literal(1, k.precision) + ", " + literal(1 / n, k.precision) + ", " +
         literal(1 / std::sqrt(n), k.precision) + ");\n";
    s += "    " + t + " factor;\n";
    s += "    if (!kfpg::scaleFactor(flag, kFactors, factor)) return StatusFlagError;\n";
    return s + k.body + k.after + "    return StatusOk;\n}\n";
}

}  // namespace kfpg::gen
