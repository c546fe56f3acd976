// Emitter: schedules a DAG and prints it as C++ with SSE2 intrinsics (or
// plain scalar code), counting the instructions it writes.
#pragma once

#include <functional>
#include <string>

#include "dag.h"

namespace kfpg::gen {

enum class EmitMode {
    Scalar,         // one float/double variable per real component
    ComplexVector,  // complex DAG: __m128d = one complex (64f); __m128 = `lanes` (1 or 2) complex (32f)
    Vertical,       // real DAG: __m128 / __m128d, every lane an independent transform
    // two-lane real DAG (see pair_lanes.h), each lane one value of a single
    // transform: __m128d, or the low half of an __m128 in single precision
    // (wide values there are __m128d); loads and stores take any two
    // elements of the src/dst pointers (`load`/`store` give element i's address)
    RealPairs,
};

enum class Precision { F32, F64 };

// Order of the emitted statements (all loads stay before the first store).
enum class Schedule {
    Creation,    // the order the builders created the nodes: stage by stage, block by block
    DepthFirst,  // depth-first from each output in turn
    // Creation order as the priority of a list scheduler that models operation
    // latencies, two adders and two multipliers: cycle by cycle it takes, among
    // the next `lookahead` nodes, the first ones whose operands are ready;
    // at most `aheadLive` values taken ahead of the creation order may be
    // live at once (more of them spill).
    Latency,
    // Creation order, except that a product with one use is computed right
    // before that use: a transposed network creates its products long before
    // the sums that take them.
    CreationNearUse,
};

struct EmitOptions {
    EmitMode mode = EmitMode::ComplexVector;
    Precision precision = Precision::F64;
    // Aligned loads/stores where the address allows (the array bases are then
    // taken to be 16-byte aligned); false: unaligned forms only.
    bool aligned = true;
    // Vertical mode: the loads or the stores alone may also be made
    // unaligned (a caller's array on one side, an aligned work buffer on the
    // other).
    bool alignedLoads = true, alignedStores = true;
    // Complex modes: element pointers (kfp32fc* / kfp64fc*).
    std::string src = "pSrc", dst = "pDst";
    // Vertical mode (and real Scalar mode): pointer expression of element i.
    std::function<std::string(int)> load, store;
    Schedule schedule = Schedule::Creation;
    int lookahead = 16;  // Schedule::Latency only
    int aheadLive = 8;   // Schedule::Latency only
    // Variable multiplied into every output as the last step; empty: none.
    std::string scaleVar;
};

struct OpCounts {
    long arithmetic = 0;  // add, sub, mul, xor (vector or scalar instructions)
    long shuffles = 0;
    long loads = 0;
    long stores = 0;
    long oneLane = 0;     // arithmetic of two-lane values where only one lane is used
    long total() const { return arithmetic + shuffles + loads + stores; }
};

struct EmitResult {
    std::string body;  // statements, indented by four spaces
    OpCounts counts;
};

// All loads come before the first store, so the code is safe in place.
EmitResult emitBody(const Dag& dag, const EmitOptions& options);

// Exact C++ literal of c rounded to the precision (hex float).
std::string literal(Real c, Precision precision);

}  // namespace kfpg::gen
