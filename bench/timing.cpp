#include "timing.h"

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
            samples[i].push_back(secondsFor(bodies[i], calls[i]) * 1e9 / static_cast<double>(calls[i]));
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
