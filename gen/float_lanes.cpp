#include "float_lanes.h"

#include <stdexcept>

namespace kfpg::gen {

namespace {

// Spans for the run first .. end - 1 whose 4-element spans start at
// first + offset: the elements before them go in a 2- and a 1-element span,
// three left at the end in a 4-element span overlapping the one before.
void tileRun(int first, int end, int offset, std::vector<Span>& spans) {
    int at = first;
    if (offset >= 2) spans.push_back({at, 2}), at += 2;
    if (offset % 2) spans.push_back({at, 1}), ++at;
    for (; end - at >= 4; at += 4) spans.push_back({at, 4});
    const int left = end - at;
    if (left == 3 && end - first >= 4) {
        spans.push_back({end - 4, 4});  // rewrites one element with the same value (or rereads it)
        return;
    }
    if (left >= 2) spans.push_back({at, 2}), at += 2;
    if (end - at == 1) spans.push_back({at, 1});
}

template <class F>
void forEachRun(const std::set<int>& elements, F f) {
    for (auto it = elements.begin(); it != elements.end();) {
        const int first = *it;
        int end = first;
        while (it != elements.end() && *it == end) ++it, ++end;
        f(first, end);
    }
}

}  // namespace

// Shuffles that select() needs for lanes la of one value and lb of another.
static int selectCost(int la, int lb) { return (la == 0 && lb <= 1) || (la == 2 && lb == 2) ? 1 : 2; }

std::vector<Span> coverWithSpans(const std::set<int>& elements) {
    std::vector<Span> spans;
    forEachRun(elements, [&](int first, int end) { tileRun(first, end, 0, spans); });
    return spans;
}

std::vector<Span> coverWithSpans(const std::set<int>& elements, const std::function<int(const Span&)>& cost) {
    std::vector<Span> spans;
    forEachRun(elements, [&](int first, int end) {
        std::vector<Span> best;
        int bestCost = 0;
        for (int offset = 0; offset < 4 && offset < end - first; ++offset) {
            std::vector<Span> run;
            tileRun(first, end, offset, run);
            int c = 0;
            for (const Span& sp : run) c += cost(sp);
            if (best.empty() || c < bestCost) best = run, bestCost = c;
        }
        spans.insert(spans.end(), best.begin(), best.end());
    });
    return spans;
}

FloatLanes::FloatLanes(std::function<void(const std::string&)> line, std::function<std::string(int)> load,
                       std::function<std::string(int)> store, std::string scaleVar)
    : line_(std::move(line)), load_(std::move(load)), store_(std::move(store)), scaleVar_(std::move(scaleVar)) {}

void FloatLanes::setInputs(const std::set<int>& elements, const std::vector<std::pair<int, int>>& pairs) {
    // Per run, the spans from which the pairs come with the fewest shuffles
    // and loads (a load counts two), as loadPair takes them: two neighbours
    // are free in lanes 0 and 1 of a span and one 8-byte load elsewhere;
    // another pair is one shuffle within a span, and across two spans two
    // scalar loads and a shuffle; an element alone is free at a span's start
    // and a scalar load elsewhere. A pair counts in the span of its first
    // element.
    inSpans_ = coverWithSpans(elements, [&](const Span& s) {
        auto in = [&](int e) { return e >= s.first && e < s.first + s.count; };
        int cost = 2;
        for (const auto& [e0, e1] : pairs) {
            if (e0 < 0) {
                if (in(e1)) cost += e1 - s.first <= 1 ? 1 : 3;
            } else if (in(e0)) {
                if (e1 < 0)
                    cost += e0 == s.first ? 0 : 2;
                else
                    cost += e1 == e0 + 1 ? (e0 == s.first ? 0 : 2) : !in(e1) ? 5 : 1;
            }
        }
        return cost;
    });
    for (int i = 0; i < static_cast<int>(inSpans_.size()); ++i)
        for (int e = inSpans_[i].first; e < inSpans_[i].first + inSpans_[i].count; ++e) inSpansOf_[e].push_back(i);
}

// Shuffles that gather() needs for four lanes.
static int gatherCost(const std::vector<Lane>& l) {
    if (l[0].var == l[1].var && l[2].var == l[3].var) return 1;
    std::set<std::string> vars;
    for (const Lane& x : l) vars.insert(x.var);
    const bool interleave = l[0].var == l[2].var && l[1].var == l[3].var && l[0].lane == 0 && l[1].lane == 0 && l[2].lane == 1 && l[3].lane == 1;
    if (vars.size() == 2) return interleave ? 1 : 2;
    return 1 + (l[0].var != l[1].var) + (l[2].var != l[3].var);
}

void FloatLanes::setOutputs(const std::map<int, Lane>& sources) {
    std::set<int> elements;
    for (const auto& [e, lane] : sources) elements.insert(e);
    // Per run, the spans needing the fewest shuffles and multiplications
    // (a store counts half of either).
    outSpans_ = coverWithSpans(elements, [&](const Span& s) {
        std::vector<Lane> l;
        for (int e = s.first; e < s.first + s.count; ++e) l.push_back(sources.at(e));
        const int shuffles = s.count == 4 ? gatherCost(l)
                             : s.count == 2 ? (l[0].var == l[1].var ? (l[0].lane == 0 && l[1].lane == 1 ? 0 : 1) : selectCost(l[0].lane, l[1].lane))
                                            : l[0].lane != 0;
        return 2 * (shuffles + 1) + 1;
    });
    done_.assign(outSpans_.size(), 0);
    for (int i = 0; i < static_cast<int>(outSpans_.size()); ++i)
        for (int e = outSpans_[i].first; e < outSpans_[i].first + outSpans_[i].count; ++e) outSpansOf_[e].push_back(i);
}

std::string FloatLanes::spanVar(int i) {
    auto it = loaded_.find(i);
    if (it != loaded_.end()) return it->second;
    const Span& s = inSpans_[i];
    const std::string name = "m" + std::to_string(i), addr = "(" + load_(s.first) + ")";
    ++loads;
    if (s.count == 4)
        line_("const __m128 " + name + " = _mm_loadu_ps" + addr + ";");
    else if (s.count == 2)  // 8 bytes, needing no more than float alignment
        line_("const __m128 " + name + " = _mm_castsi128_ps(_mm_loadl_epi64((const __m128i*)" + addr + "));");
    else
        line_("const __m128 " + name + " = _mm_load_ss" + addr + ";");
    return loaded_[i] = name;
}

// Elements from the loaded spans where that takes no shuffle; two neighbours
// elsewhere by one 8-byte load; other pairs from the spans where that takes
// one shuffle, else by scalar loads: the load ports are idle, while shuffles
// share their execution ports with the arithmetic.
std::string FloatLanes::loadPair(int e0, int e1, bool zeroLane) {
    if (e0 < 0 && e1 < 0) throw std::logic_error("a load reads no element");
    auto scalar = [&](int e) {
        ++loads;
        return "_mm_load_ss(" + load_(e) + ")";
    };
    auto lane = [&](int span, int e) { return Lane{spanVar(span), e - inSpans_[span].first}; };
    if (e1 < 0) {
        if (zeroLane) return scalar(e0);
        for (int s : inSpansOf_.at(e0))
            if (inSpans_[s].first == e0) return spanVar(s);
        return scalar(e0);
    }
    if (e0 < 0) {
        for (int s : inSpansOf_.at(e1))
            if (e1 - inSpans_[s].first <= 1) return select({"_mm_setzero_ps()", 0}, lane(s, e1));
        ++shuffles;
        return "_mm_unpacklo_ps(_mm_setzero_ps(), " + scalar(e1) + ")";
    }
    int best = 3, s0 = -1, s1 = -1;
    for (int a : inSpansOf_.at(e0))
        for (int b : inSpansOf_.at(e1)) {
            const int la = e0 - inSpans_[a].first, lb = e1 - inSpans_[b].first;
            const int cost = a == b ? (la == 0 && lb == 1 ? 0 : 1) : selectCost(la, lb);
            if (cost < best) best = cost, s0 = a, s1 = b;
        }
    if (best > 0 && e1 == e0 + 1) {  // neighbours: one 8-byte load instead of a shuffle
        ++loads;
        return "_mm_castsi128_ps(_mm_loadl_epi64((const __m128i*)(" + load_(e0) + ")))";
    }
    if (best <= 1) return select(lane(s0, e0), lane(s1, e1));
    ++shuffles;
    return "_mm_unpacklo_ps(" + scalar(e0) + ", " + scalar(e1) + ")";
}

std::string FloatLanes::select(const Lane& a, const Lane& b) {
    if (a.var == b.var) {
        if (a.lane == 0 && b.lane == 1) return a.var;
        ++shuffles;
        return permuted(a.var, a.lane | b.lane << 2);
    }
    const bool named = a.var.find('(') == std::string::npos && b.var.find('(') == std::string::npos;
    const bool interleaveMade = unpacked_.count({a.var, b.var}) || unpacked_.count({b.var, a.var});
    if (named && a.lane <= 1 && b.lane <= 1 && (interleaveMade || a.lane != 0 || b.lane != 1)) {
        // Through the interleave (x0, y0, x1, y1) of the two values, made
        // once and shared: a 2 x 2 transposition takes two shuffles.
        const auto [u, even] = interleaved(a.var, b.var);
        const int pa = 2 * a.lane + (a.var != even), pb = 2 * b.lane + (b.var != even);
        if (pa == 0 && pb == 1) return u;
        ++shuffles;
        return permuted(u, pa | pb << 2);
    }
    ++shuffles;
    if (a.lane == 0 && b.lane == 0) return "_mm_unpacklo_ps(" + a.var + ", " + b.var + ")";
    if (a.lane == 2 && b.lane == 2) return "_mm_unpackhi_ps(" + a.var + ", " + b.var + ")";
    if (a.lane == 0 && b.lane == 1) return "_mm_move_ss(" + b.var + ", " + a.var + ")";
    // (a[la], a[la], b[lb], b[lb]), then its lanes 0 and 2.
    ++shuffles;
    const std::string t = "_mm_shuffle_ps(" + a.var + ", " + b.var + ", " + std::to_string(a.lane * 5 | b.lane * 80) + ")";
    return permuted(t, 8);
}

// Lanes of one value in a new order: pshufd writes another register, where
// shufps of a value onto itself needs a copy whenever the value lives on.
std::string FloatLanes::permuted(const std::string& x, int imm) {
    return "_mm_castsi128_ps(_mm_shuffle_epi32(_mm_castps_si128(" + x + "), " + std::to_string(imm) + "))";
}

// (x0, y0, x1, y1) of values p and q, made once per pair (either order):
// its name and x, the value in its even lanes.
std::pair<std::string, std::string> FloatLanes::interleaved(const std::string& p, const std::string& q) {
    for (const auto& [x, y] : {std::pair{p, q}, std::pair{q, p}}) {
        auto it = unpacked_.find({x, y});
        if (it != unpacked_.end()) return {it->second, x};
    }
    const std::string name = "u" + std::to_string(unpacked_.size());
    ++shuffles;
    line_("const __m128 " + name + " = _mm_unpacklo_ps(" + p + ", " + q + ");");
    unpacked_[{p, q}] = name;
    return {name, p};
}

// Four lanes (lanes 0 and 1 of their values) as one value.
std::string FloatLanes::gather(const std::vector<Lane>& l) {
    auto shuffled = [&](const std::string& x, const std::string& y, const int pos[4]) {
        const int imm = pos[0] | pos[1] << 2 | pos[2] << 4 | pos[3] << 6;
        if (x == y && imm == 0xE4) return x;
        ++shuffles;
        if (x == y) return permuted(x, imm);
        return "_mm_shuffle_ps(" + x + ", " + y + ", " + std::to_string(imm) + ")";
    };
    int pos[4] = {l[0].lane, l[1].lane, l[2].lane, l[3].lane};
    if (l[0].var == l[1].var && l[2].var == l[3].var) return shuffled(l[0].var, l[2].var, pos);
    std::set<std::string> vars;
    for (const Lane& x : l) vars.insert(x.var);
    if (vars.size() == 2) {  // one interleave holds all four
        const std::string& other = l[1].var != l[0].var ? l[1].var : l[2].var != l[0].var ? l[2].var : l[3].var;
        const auto [u, even] = interleaved(l[0].var, other);
        for (int i = 0; i < 4; ++i) pos[i] = 2 * l[i].lane + (l[i].var != even);
        return shuffled(u, u, pos);
    }
    // Each half from one value, or from the interleave of two.
    std::string half[2];
    for (int h = 0; h < 2; ++h) {
        const Lane &p = l[2 * h], &q = l[2 * h + 1];
        if (p.var == q.var) {
            half[h] = p.var;
            continue;
        }
        const auto [u, even] = interleaved(p.var, q.var);
        half[h] = u;
        pos[2 * h] = 2 * p.lane + (p.var != even), pos[2 * h + 1] = 2 * q.lane + (q.var != even);
    }
    return shuffled(half[0], half[1], pos);
}

// The factor a span's lanes are multiplied by: the scale, its sign flipped
// in the lanes stored negated (made once per pattern; a negation there is
// free and exact).
std::string FloatLanes::scaleWithSigns(const std::vector<Lane>& lanes) {
    std::string mask;
    bool negated = false;
    for (std::size_t l = 0; l < 4; ++l) {
        const bool flip = l < lanes.size() && lanes[l].negated;
        mask += std::string(l ? ", " : "") + (flip ? "-0.0f" : "0.0f");
        negated |= flip;
    }
    if (!negated) return scaleVar_;
    if (scaleVar_.empty()) throw std::logic_error("a negated output lane needs a scale factor to carry its sign");
    auto it = signedScales_.find(mask);
    if (it != signedScales_.end()) return it->second;
    const std::string name = scaleVar_ + "n" + std::to_string(signedScales_.size());
    ++arithmetic;
    line_("const __m128 " + name + " = _mm_xor_ps(" + scaleVar_ + ", _mm_setr_ps(" + mask + "));");
    return signedScales_[mask] = name;
}

void FloatLanes::store(int e, const Lane& from) {
    sources_[e] = from;
    for (int i : outSpansOf_.at(e)) {
        const Span& s = outSpans_[i];
        if (done_[i]) continue;
        std::vector<Lane> lanes;
        for (int k = s.first; k < s.first + s.count && sources_.count(k); ++k) lanes.push_back(sources_.at(k));
        if (static_cast<int>(lanes.size()) < s.count) continue;
        done_[i] = 1, ++stored_, ++stores;
        std::string v = s.count == 4 ? gather(lanes) : s.count == 2 ? select(lanes[0], lanes[1]) : lanes[0].lane == 0 ? lanes[0].var : select(lanes[0], lanes[0]);
        const std::string scale = scaleWithSigns(lanes);
        if (!scale.empty()) {
            ++arithmetic;
            line_("const __m128 p" + std::to_string(i) + " = _mm_mul_ps(" + v + ", " + scale + ");");
            v = "p" + std::to_string(i);
        }
        const std::string addr = "(" + store_(s.first) + ")";
        if (s.count == 4)
            line_("_mm_storeu_ps(" + addr + ", " + v + ");");
        else if (s.count == 2)
            line_("_mm_storel_epi64((__m128i*)" + addr + ", _mm_castps_si128(" + v + "));");
        else
            line_("_mm_store_ss(" + addr + ", " + v + ");");
    }
}

}  // namespace kfpg::gen
