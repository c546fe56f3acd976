// Single-precision pair code (EmitMode::RealPairs with floats) keeps two
// values in the low half of an __m128. This moves elements between memory
// and such values sixteen bytes at a time where four neighbouring elements
// are all read (or all written): a run of neighbours is covered by 4-element
// spans (the last one overlapping the one before when three are left), then
// one 2-element span and one 1-element span, so no element outside the given
// set is ever touched. Lanes are gathered with as few shuffles as SSE allows.
#pragma once

#include <functional>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace kfpg::gen {

struct Span {
    int first, count;  // elements first .. first + count - 1; count 4, 2 or 1
};

// Spans covering the elements (each run of neighbours on its own), the
// 4-element spans of a run starting at its first element.
std::vector<Span> coverWithSpans(const std::set<int>& elements);
// The same, where each run's 4-element spans start at whichever of its first
// four elements gives the lowest total cost.
std::vector<Span> coverWithSpans(const std::set<int>& elements, const std::function<int(const Span&)>& cost);

// One lane of a named __m128 value (an output lane may be stored negated).
struct Lane {
    std::string var;
    int lane;
    bool negated = false;
};

class FloatLanes {
public:
    // `line` receives each statement; `load`/`store` give element i's address.
    FloatLanes(std::function<void(const std::string&)> line, std::function<std::string(int)> load,
               std::function<std::string(int)> store, std::string scaleVar);

    // Input side: the elements every load reads, and the pairs (e0, e1) the
    // kernel will ask for (set before the first load).
    void setInputs(const std::set<int>& elements, const std::vector<std::pair<int, int>>& pairs);
    // Expression of elements e0, e1 in lanes 0 and 1 (-1: that lane unused,
    // or zero where `zeroLane` asks for it).
    std::string loadPair(int e0, int e1, bool zeroLane);

    // Output side: every element the kernel writes and the lane it comes
    // from (set before the first store).
    void setOutputs(const std::map<int, Lane>& sources);
    // Element e is lane `from`; every span now complete is scaled and stored.
    void store(int e, const Lane& from);
    bool allStored() const { return stored_ == static_cast<int>(outSpans_.size()); }

    // Expression of lanes a and b in lanes 0 and 1 of one value.
    std::string select(const Lane& a, const Lane& b);

    long shuffles = 0, arithmetic = 0, loads = 0, stores = 0;

private:
    std::string spanVar(int spanIndex);
    std::string scaleWithSigns(const std::vector<Lane>& lanes);
    std::string gather(const std::vector<Lane>& lanes);
    static std::string permuted(const std::string& x, int imm);
    std::pair<std::string, std::string> interleaved(const std::string& p, const std::string& q);

    std::function<void(const std::string&)> line_;
    std::function<std::string(int)> load_, store_;
    std::string scaleVar_;
    std::vector<Span> inSpans_, outSpans_;
    std::map<int, std::vector<int>> inSpansOf_, outSpansOf_;  // element -> spans containing it
    std::map<int, std::string> loaded_;                        // input span -> its variable
    std::map<int, Lane> sources_;                              // output element -> its lane
    std::vector<char> done_;
    int stored_ = 0;
    std::map<std::pair<std::string, std::string>, std::string> unpacked_;
    std::map<std::string, std::string> signedScales_;  // sign mask -> the scale factor with those signs
};

}  // namespace kfpg::gen
