// Interleaved timing for side-by-side comparisons on a noisy machine.
#pragma once

#include <functional>
#include <vector>

namespace kfpg::bench {

// Runs the timed operation `calls` times back to back.
using Body = std::function<void(long calls)>;

// Times every body in interleaved rounds (body 0, body 1, ..., then again),
// so that a slow spell of the machine hits all of them alike, and returns each
// body's median nanoseconds per call. Each body is first calibrated to a batch
// of about `batchSeconds` and warmed up so that its data sits in L1.
std::vector<double> interleavedMedians(const std::vector<Body>& bodies, int rounds = 41,
                                       double batchSeconds = 1e-4);

// As interleavedMedians, but returns each body's fastest batch, and every
// timed batch follows an untimed call of its own: for many bodies whose data
// evict one another's, compared on a machine whose other work only ever
// adds time.
std::vector<double> interleavedFastest(const std::vector<Body>& bodies, int rounds = 41, double batchSeconds = 1e-4);

// Keeps the compiler from discarding a computed value.
template <class T>
inline void keep(T const& value) {
    asm volatile("" : : "g"(&value) : "memory");
}

// A body that makes `call()` the requested number of times, then keeps the
// first result element so the calls cannot be optimised away.
template <class Call, class T>
Body repeated(Call call, const T* result) {
    return [call, result](long calls) {
        for (long i = 0; i < calls; ++i) call();
        keep(*result);
    };
}

}  // namespace kfpg::bench
