// Spans of single-precision memory moves: every element of the set is moved,
// no element outside it is touched, and neighbours go four at a time.
#include <gtest/gtest.h>

#include <random>
#include <set>

#include "float_lanes.h"

namespace {

using namespace kfpg::gen;

void expectCovers(const std::set<int>& elements) {
    const std::vector<Span> spans = coverWithSpans(elements);
    std::set<int> covered;
    int fours = 0, rest = 0;
    for (const Span& s : spans) {
        ASSERT_TRUE(s.count == 4 || s.count == 2 || s.count == 1);
        (s.count == 4 ? fours : rest)++;
        for (int e = s.first; e < s.first + s.count; ++e) {
            EXPECT_TRUE(elements.count(e)) << "element " << e << " outside the set";
            covered.insert(e);
        }
    }
    EXPECT_EQ(covered, elements);
    // A run of r neighbours takes ceil-ish r/4 wide spans and at most two narrow ones.
    int runs = 0, wide = 0;
    for (auto it = elements.begin(); it != elements.end();) {
        int r = 0;
        for (const int first = *it; it != elements.end() && *it == first + r; ++it) ++r;
        ++runs, wide += r / 4 + (r > 4 && r % 4 == 3);
    }
    EXPECT_EQ(fours, wide);
    EXPECT_LE(rest, 2 * runs);
}

TEST(FloatSpans, CoverEveryRunOfNeighbours) {
    for (int n = 1; n <= 70; ++n) {
        std::set<int> all, ccs;
        for (int e = 0; e < n; ++e) all.insert(e);
        expectCovers(all);
        ccs.insert(0);  // a CCS spectrum without its zero imaginary parts
        for (int e = 2; e <= n; ++e) ccs.insert(e);
        expectCovers(ccs);
    }
}

TEST(FloatSpans, CoverScatteredSets) {
    std::mt19937 rng(5);
    for (int trial = 0; trial < 200; ++trial) {
        std::set<int> s;
        for (int e = 0; e < 40; ++e)
            if (rng() % 3) s.insert(e);
        expectCovers(s);
    }
}

TEST(FloatSpans, CostChoosesWhereTheWideSpansOfARunStart) {
    // Wide spans are cheap only from odd elements: a Pack spectrum's (R_k, I_k) pairs.
    auto cost = [](const Span& s) { return s.count == 4 && s.first % 2 == 0 ? 10 : 1; };
    const std::vector<Span> spans = coverWithSpans({0, 1, 2, 3, 4, 5, 6, 7, 8}, cost);
    ASSERT_EQ(spans.size(), 3u);
    EXPECT_EQ(spans[0].first, 0);
    EXPECT_EQ(spans[0].count, 1);
    EXPECT_EQ(spans[1].first, 1);
    EXPECT_EQ(spans[2].first, 5);
    // Whatever the costs, every element is covered and none outside.
    std::mt19937 rng(9);
    for (int trial = 0; trial < 100; ++trial) {
        std::set<int> s;
        for (int e = 0; e < 30; ++e)
            if (rng() % 4) s.insert(e);
        std::set<int> covered;
        for (const Span& sp : coverWithSpans(s, [&](const Span&) { return static_cast<int>(rng() % 7); }))
            for (int e = sp.first; e < sp.first + sp.count; ++e) {
                EXPECT_TRUE(s.count(e)) << e;
                covered.insert(e);
            }
        EXPECT_EQ(covered, s);
    }
}

// The loads of a packed spectrum whose (R_k, I_k) pairs start at odd
// elements (the Pack layout) start their wide spans there too: every other
// pair is lanes 0 and 1 of its load, the rest one 8-byte load each, and no
// pair needs a shuffle (spans from element 0 would leave no pair in lanes 0
// and 1, and the last element alone in lane 3).
TEST(FloatSpans, InputSpansStartWhereTheLoadedPairsDo) {
    for (int n : {8, 12, 16}) {
        std::set<int> elements;
        std::vector<std::pair<int, int>> pairs{{0, -1}};
        for (int e = 0; e < n; ++e) elements.insert(e);
        for (int k = 1; 2 * k < n; ++k) pairs.push_back({2 * k - 1, 2 * k});
        pairs.push_back({n - 1, -1});
        std::vector<std::string> lines;
        FloatLanes lanes([&](const std::string& l) { lines.push_back(l); }, [](int i) { return "p + " + std::to_string(i); },
                         [](int i) { return "q + " + std::to_string(i); }, "sc");
        lanes.setInputs(elements, pairs);
        for (const auto& [e0, e1] : pairs) lanes.loadPair(e0, e1, false);
        const long widePairs = n / 2 - 1;
        EXPECT_EQ(lanes.shuffles, 0) << "n " << n;
        EXPECT_LE(lanes.loads, n / 4 + 2 + widePairs / 2) << "n " << n;
    }
}

// A 2 x 2 transposition of two values, (a0, b0) and (a1, b1), shares one
// interleave: two shuffles, as in double precision, where (a1, b1) alone
// takes two.
TEST(FloatSpans, TranspositionOfTwoValuesTakesTwoShuffles) {
    FloatLanes lanes([](const std::string&) {}, [](int i) { return "p + " + std::to_string(i); },
                     [](int i) { return "q + " + std::to_string(i); }, "sc");
    lanes.select({"a", 0}, {"b", 0});
    lanes.select({"a", 1}, {"b", 1});
    EXPECT_EQ(lanes.shuffles, 2);
    lanes.select({"b", 1}, {"a", 1});
    EXPECT_EQ(lanes.shuffles, 3);
}

}  // namespace
