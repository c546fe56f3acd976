#include "timing.h"

#include <alloca.h>

#include <algorithm>
#include <chrono>

namespace kfpg::bench {

namespace {

double secondsFor(const Body& body, long calls) {
    const auto t0 = std::chrono::steady_clock::now();
    body(calls);
    const auto t1 = std::chrono::steady_clock::now();
    return std::chrono::duration<double>(t1 - t0).count();
}

long calibrate(const Body& body, double batchSeconds) {
    long calls = 1;
    while (calls < (1L << 30) && secondsFor(body, calls) < batchSeconds) calls *= 2;
    return calls;
}

// Rounds run at this many stack depths in turn, this far apart. A kernel that
// spills can run twice as slow when its stack slots fall on the same
// addresses modulo 4 KiB as its arrays (a load then waits on an unrelated
// store); which depth does so moves with the caller and even with the size
// of the environment. The median over the depths is the typical placement.
constexpr int kStackDepths = 4;
constexpr std::size_t kStackStep = 1040;

// Seconds for a batch of calls made `bytes` deeper on the stack.
[[gnu::noinline]] double secondsAtDepth(const Body& body, long calls, std::size_t bytes) {
    char* pad = static_cast<char*>(alloca(bytes + 1));
    asm volatile("" : : "r"(pad) : "memory");
    return secondsFor(body, calls);
}

// Nanoseconds per call of every body in every round.
std::vector<std::vector<double>> interleavedSamples(const std::vector<Body>& bodies, int rounds, double batchSeconds,
                                                    bool warmEachRound) {
    std::vector<long> calls;
    for (const Body& b : bodies) {
        calls.push_back(calibrate(b, batchSeconds));
        b(calls.back());  // warm-up
    }
    std::vector<std::vector<double>> samples(bodies.size());
    for (int r = 0; r < rounds; ++r)
        for (std::size_t i = 0; i < bodies.size(); ++i) {
            if (warmEachRound) bodies[i](1);
            const std::size_t depth = static_cast<std::size_t>(r % kStackDepths) * kStackStep;
            samples[i].push_back(secondsAtDepth(bodies[i], calls[i], depth) * 1e9 / static_cast<double>(calls[i]));
        }
    return samples;
}

}  // namespace

std::vector<double> interleavedMedians(const std::vector<Body>& bodies, int rounds, double batchSeconds) {
    std::vector<double> medians;
    for (auto& s : interleavedSamples(bodies, rounds, batchSeconds, false)) {
        std::nth_element(s.begin(), s.begin() + s.size() / 2, s.end());
        medians.push_back(s[s.size() / 2]);
    }
    return medians;
}

std::vector<double> interleavedFastest(const std::vector<Body>& bodies, int rounds, double batchSeconds) {
    std::vector<double> fastest;
    for (const auto& s : interleavedSamples(bodies, rounds, batchSeconds, true))
        fastest.push_back(*std::min_element(s.begin(), s.end()));
    return fastest;
}

}  // namespace kfpg::bench
