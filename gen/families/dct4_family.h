// Shared pieces of the DCT-IV family's generator files: dct4.cpp (the leaf,
// split and direct stages, registration) and dct4_output.cpp (the root
// output side).
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "dag.h"
#include "emit.h"

namespace kfpg::gen::dct4family {

struct Target {
    Precision precision;
    bool f32() const { return precision == Precision::F32; }
    int lanes() const { return f32() ? 4 : 2; }
    std::string tag() const { return f32() ? "32f" : "64f"; }
    std::string real() const { return f32() ? "float" : "double"; }
    std::string vec() const { return f32() ? "__m128" : "__m128d"; }
    std::string sfx() const { return f32() ? "ps" : "pd"; }
};

// Replaces every "$key" of the table in a text skeleton, in key order: the
// one-letter keys are upper case and the longer ones lower case, so that no
// key is the start of another.
std::string fill(std::string text, const std::map<std::string, std::string>& values);
// The keys of every skeleton: element and vector types, lanes, precision tag,
// size N ($N) and N/2 ($H).
std::map<std::string, std::string> words(const Target& t, int size);
// Every line four spaces further in.
std::string indent(const std::string& body);
inline std::string num(long v) { return std::to_string(v); }
// The generator writes the fixed-size parts of the stage loops out in full.
template <class F>
std::string lines(int count, F line) {
    std::string out;
    for (int i = 0; i < count; ++i) out += line(i);
    return out;
}

std::vector<Real> randomReals(int count, unsigned seed);
// Evaluates a real DAG on real inputs; outputs by element.
std::vector<Real> run(const Dag& dag, const std::vector<Real>& x, int outputs);
// Throws unless got agrees with want to long-double accuracy.
void expectClose(const std::vector<Real>& got, const std::vector<Real>& want, const std::string& what);
// The scalar DAG that `build` makes of n inputs, refused unless its outputs
// are y[k] = sum_i x[i] cos(pi angle(i, k) / den).
Dag checkedCosineDag(int n, const std::function<std::vector<NodeId>(Dag&, const std::vector<NodeId>&)>& build,
                     const std::function<long(long i, long k)>& angle, long den, const std::string& what);
// Vertical emission, element addresses from load and store.
EmitOptions vertical(const Target& t, std::function<std::string(int)> load, std::function<std::string(int)> store);

// DCT-IV of size n on inputs 0..n-1 (dct4.cpp).
Dag directDag(int n);
// The root output side of divisor d (dct4_output.cpp).
std::string outputKernel(const Target& t, int d, OpCounts& counts);

}  // namespace kfpg::gen::dct4family
