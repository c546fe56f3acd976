#include "pair_lanes.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <stdexcept>

namespace kfpg::gen {

namespace {

// Candidates searched for a partner, nearest in creation order first.
constexpr int kSearchWindow = 96;
// Two instances pair node by node if at most one position in this many
// holds different operations.
constexpr int kMismatchesPer = 10;

class Pairer {
public:
    Pairer(const Dag& s, Depth depth, Orientation orientation)
        : s_(s), depth_(depth), orientation_(orientation), out_(ValueKind::Real, 2, s.signs()) {
        if (s.kind() != ValueKind::Real || s.lanes() != 1) throw std::logic_error("pairLanes needs a one-lane real DAG");
    }

    std::vector<NodeId> partners() {
        markLive();
        choosePartners();
        return partner_;
    }

    Dag run() {
        markLive();
        choosePartners();
        if (orientation_ == Orientation::LaneZeroCheaper) orientPairs();
        build();
        return std::move(out_);
    }

private:
    struct Place {
        NodeId value = -1;
        int lane = 0;
    };
    struct Carried {
        NodeId value;
        int lane;
        bool negated;
    };

    const Node& node(NodeId id) const { return s_.node(id); }
    bool isInput(NodeId id) const { return node(id).op == Op::Input; }
    int element(NodeId id) const { return s_.inputElements(node(id).arg)[0]; }
    bool paired(NodeId id) const { return partner_[id] >= 0; }

    void markLive() {
        const std::size_t count = s_.nodes().size();
        live_.assign(count, 0);
        level_.assign(count, 0);
        partner_.assign(count, -1);
        for (const Output& o : s_.outputs()) live_[o.value] = 1;
        std::vector<int> uses(count, 0);
        for (NodeId id = static_cast<NodeId>(count) - 1; id >= 0; --id) {
            if (!live_[id]) continue;
            const Node& n = node(id);
            if (n.a >= 0) live_[n.a] = 1, ++uses[n.a];
            if (n.b >= 0) live_[n.b] = 1, ++uses[n.b];
        }
        for (const Output& o : s_.outputs()) ++uses[o.value];
        users_.assign(count, {});
        for (NodeId id = 0; id < static_cast<NodeId>(count); ++id)
            if (live_[id])
                for (NodeId x : {node(id).a, node(id).b == node(id).a ? -1 : node(id).b})
                    if (x >= 0) users_[x].push_back(id);
        output_.assign(count, 0);
        for (const Output& o : s_.outputs()) output_[o.value] = 1;
        // a - c x with c x used nowhere else is a + (-c) x: an addition like
        // its neighbours, so that sums whose terms differ in sign still pair.
        flip_.assign(count, 0);
        asAdd_.assign(count, 0);
        for (NodeId id = 0; id < static_cast<NodeId>(count); ++id) {
            const Node& n = node(id);
            if (!live_[id] || n.op != Op::Sub || uses[n.b] != 1) continue;
            NodeId product = n.b;
            if (node(product).op == Op::Narrow && uses[node(product).a] == 1) product = node(product).a;
            if (node(product).op != Op::Scale) continue;
            flip_[product] = 1;
            asAdd_[id] = 1;
        }
        if (depth_ != Depth::FromOutputs) {
            for (NodeId id = 0; id < static_cast<NodeId>(count); ++id) {
                const Node& n = node(id);
                if (n.a >= 0) level_[id] = std::max(level_[id], level_[n.a] + 1);
                if (n.b >= 0) level_[id] = std::max(level_[id], level_[n.b] + 1);
            }
            return;
        }
        // Negative distance to the furthest output, so that levels still grow along every path.
        for (NodeId id = static_cast<NodeId>(count) - 1; id >= 0; --id) {
            const Node& n = node(id);
            for (NodeId x : {n.a, n.b})
                if (x >= 0) level_[x] = std::min(level_[x], level_[id] - 1);
        }
    }

    // How well operands p (lane 0) and q (lane 1) line up: 2 when they
    // already share a vector in these lanes or are adjacent loads, 1 for a
    // swap, a broadcast or two loads, 0 when a shuffle must combine them.
    int fit(NodeId p, NodeId q) const {
        if (isInput(p) && isInput(q)) return element(q) == element(p) + 1 ? 2 : 1;
        if (p == q) return 1;  // one broadcast, shared by every pair that needs it
        if (partner_[p] == q) return lane0_[p] ? 2 : 1;
        return 0;
    }

    int score(NodeId u, NodeId v) const {
        const Node &a = node(u), &b = node(v);
        int direct = fit(a.a, b.a) + (a.b >= 0 ? fit(a.b, b.b) : 0);
        if (effectiveOp(u) == Op::Add) direct = std::max(direct, fit(a.a, b.b) + fit(a.b, b.a));
        return direct;
    }

    Op effectiveOp(NodeId id) const { return asAdd_[id] ? Op::Add : node(id).op; }

    bool sameKind(NodeId u, NodeId v) const {
        const Node &a = node(u), &b = node(v);
        return effectiveOp(u) == effectiveOp(v) && a.wide == b.wide && level_[u] == level_[v];
    }

    // ---- Depth::Flexible ----
    // earliest_ / latest_: the range of depths a node may still take.
    void initRanges() {
        const std::size_t count = s_.nodes().size();
        earliest_ = level_;
        int deepest = 0;
        for (NodeId id = 0; id < static_cast<NodeId>(count); ++id)
            if (live_[id]) deepest = std::max(deepest, level_[id]);
        latest_.assign(count, deepest);
        for (NodeId id = static_cast<NodeId>(count) - 1; id >= 0; --id) {
            if (!live_[id]) continue;
            const Node& n = node(id);
            for (NodeId x : {n.a, n.b == n.a ? -1 : n.b})
                if (x >= 0) latest_[x] = std::min(latest_[x], latest_[id] - 1);
        }
        // below_[id]: bit set of the nodes that id depends on.
        const std::size_t words = (count + 63) / 64;
        below_.assign(count, std::vector<std::uint64_t>(words, 0));
        for (NodeId id = 0; id < static_cast<NodeId>(count); ++id) {
            if (!live_[id]) continue;
            const Node& n = node(id);
            for (NodeId x : {n.a, n.b}) {
                if (x < 0) continue;
                below_[id][x / 64] |= std::uint64_t{1} << (x % 64);
                for (std::size_t w = 0; w < words; ++w) below_[id][w] |= below_[x][w];
            }
        }
    }

    bool dependsOn(NodeId u, NodeId v) const { return below_[u][v / 64] >> (v % 64) & 1; }

    void fixDepth(NodeId id, int depth) {
        earliest_[id] = latest_[id] = depth;
        std::vector<NodeId> work{id};
        while (!work.empty()) {
            const NodeId x = work.back();
            work.pop_back();
            for (NodeId y : users_[x])
                if (earliest_[y] < earliest_[x] + 1) earliest_[y] = earliest_[x] + 1, work.push_back(y);
        }
        work.push_back(id);
        while (!work.empty()) {
            const NodeId x = work.back();
            work.pop_back();
            const Node& n = node(x);
            for (NodeId y : {n.a, n.b})
                if (y >= 0 && !isInput(y) && latest_[y] > latest_[x] - 1) latest_[y] = latest_[x] - 1, work.push_back(y);
        }
    }

    // Neighbouring instances of one group whose operations match position by
    // position are paired node by node (see Dag::Instance).
    void pairInstances() {
        std::map<int, std::vector<Dag::Instance>> groups;
        for (const Dag::Instance& i : s_.instances()) groups[i.group].push_back(i);
        for (auto& [group, list] : groups)
            for (std::size_t i = 0; i + 1 < list.size();) {
                if (!pairInstance(list[i], list[i + 1])) {
                    ++i;
                    continue;
                }
                i += 2;
            }
    }

    // The live operations of an instance, in creation order. Negations stay
    // with their values and do not count, nor do nodes the simplifier made
    // on the way and left unused.
    std::vector<NodeId> liveOperations(const Dag::Instance& i) const {
        std::vector<NodeId> ops;
        for (NodeId id = i.begin; id < i.end; ++id)
            if (live_[id] && node(id).op != Op::Input && node(id).op != Op::Zero && node(id).op != Op::Neg) ops.push_back(id);
        return ops;
    }

    // Instances with as many live operations, matching position by position
    // but for a few (a sum whose terms differ in sign, say): the matching
    // positions pair.
    bool pairInstance(const Dag::Instance& a, const Dag::Instance& b) {
        const std::vector<NodeId> x = liveOperations(a), y = liveOperations(b);
        if (x.size() != y.size() || x.empty()) return false;
        std::size_t mismatches = 0;
        for (std::size_t k = 0; k < x.size(); ++k)
            mismatches += effectiveOp(x[k]) != effectiveOp(y[k]) || node(x[k]).wide != node(y[k]).wide;
        if (mismatches * kMismatchesPer > x.size()) return false;
        for (std::size_t k = 0; k < x.size(); ++k) {
            const NodeId u = x[k], v = y[k];
            if (paired(u) || paired(v) || node(u).wide != node(v).wide) continue;
            if (effectiveOp(u) != effectiveOp(v)) continue;
            if (std::max(earliest_[u], earliest_[v]) > std::min(latest_[u], latest_[v])) continue;
            if (dependsOn(u, v) || dependsOn(v, u)) continue;
            const int depth = std::max(earliest_[u], earliest_[v]);
            fixDepth(u, depth);
            fixDepth(v, depth);
            partner_[u] = v, partner_[v] = u;
            lane0_[u] = 1;
        }
        return true;
    }

    // ---- Carries ----
    // An input x plus or minus a paired value b, x alone in b's lane with a
    // zero beside it, leaves b's partner w (negated for a minus) in the other
    // lane: the sum takes w along into its own vector. Where w only leaves
    // the kernel (as it is, negated or rounded), the sum and w are stored
    // from one vector, as an output row (x0 + c_k, s_k) of direct sums is.
    bool onlyLeaves(NodeId w) const {
        if (users_[w].empty()) return output_[w];
        for (NodeId y : users_[w])
            if ((node(y).op != Op::Neg && node(y).op != Op::Narrow) || !onlyLeaves(y)) return false;
        return true;
    }

    // The input and the paired operand of a carrier candidate, or {-1, -1}.
    std::pair<NodeId, NodeId> carriedOperands(NodeId u) const {
        const Node& n = node(u);
        const Op op = effectiveOp(u);
        if (op != Op::Add && op != Op::Sub) return {-1, -1};
        NodeId x = n.a, b = n.b;
        if (op == Op::Add && !isInput(x)) std::swap(x, b);
        if (!isInput(x) || isInput(b) || !paired(b) || !onlyLeaves(partner_[b])) return {-1, -1};
        return {x, b};
    }

    void chooseCarriers() {
        for (NodeId u = 0; u < static_cast<NodeId>(s_.nodes().size()); ++u) {
            if (!live_[u] || paired(u)) continue;
            const Node& n = node(u);
            if (n.op == Op::Narrow) carrier_[u] = carrier_[n.a];
            else carrier_[u] = carriedOperands(u).first >= 0;
        }
    }

    // The vector of carrier u, recording where its carried value sits.
    Place carry(NodeId u) {
        const Node& n = node(u);
        if (n.op == Op::Narrow) {
            const Place at = ensure(n.a);
            const NodeId q = out_.narrow(at.value);
            const auto it = carriedBy_.find(n.a);
            if (it != carriedBy_.end())
                for (NodeId y : users_[it->second])
                    if (node(y).op == Op::Narrow) {
                        carried_[y] = {q, 1 - at.lane, carried_.at(it->second).negated};
                        carriedBy_[u] = y;
                    }
            return {q, at.lane};
        }
        const auto [x, b] = carriedOperands(u);
        const Place at = ensure(b);
        std::vector<int> e{-1, -1};
        e[at.lane] = element(x);
        const NodeId alone = out_.inputLanes(e);
        std::unique_ptr<Dag::WideScope> wide(n.wide ? new Dag::WideScope(out_) : nullptr);
        const bool minus = effectiveOp(u) == Op::Sub;
        const NodeId v = minus ? out_.sub(alone, at.value) : out_.add(alone, at.value);
        carried_[partner_[b]] = {v, 1 - at.lane, minus};
        carriedBy_[u] = partner_[b];
        return {v, at.lane};
    }

    void choosePartnersFlexibly() {
        initRanges();
        if (depth_ == Depth::Instances) pairInstances(), chooseCarriers();
        std::vector<NodeId> order;
        for (NodeId id = 0; id < static_cast<NodeId>(s_.nodes().size()); ++id) {
            const Op op = node(id).op;
            if (live_[id] && op != Op::Input && op != Op::Zero) order.push_back(id);
        }
        std::stable_sort(order.begin(), order.end(), [&](NodeId a, NodeId b) { return level_[a] < level_[b]; });
        for (std::size_t i = 0; i < order.size(); ++i) {
            const NodeId u = order[i];
            if (paired(u) || carrier_[u]) continue;
            NodeId best = -1;
            int bestScore = -1;
            for (std::size_t j = i + 1, seen = 0; j < order.size() && seen < kSearchWindow; ++j) {
                const NodeId v = order[j];
                if (paired(v) || carrier_[v] || effectiveOp(u) != effectiveOp(v) || node(u).wide != node(v).wide) continue;
                if (std::max(earliest_[u], earliest_[v]) > std::min(latest_[u], latest_[v])) continue;
                if (dependsOn(u, v) || dependsOn(v, u)) continue;
                ++seen;
                const int sc = score(u, v);
                if (sc > bestScore) bestScore = sc, best = v;
                if (sc == 4) break;
            }
            if (best < 0) continue;
            const int depth = std::max(earliest_[u], earliest_[best]);
            fixDepth(u, depth);
            fixDepth(best, depth);
            partner_[u] = best, partner_[best] = u;
            lane0_[u] = 1;
        }
    }

    void choosePartners() {
        lane0_.assign(s_.nodes().size(), 0);
        carrier_.assign(s_.nodes().size(), 0);
        if (depth_ == Depth::Flexible || depth_ == Depth::Instances) return choosePartnersFlexibly();
        std::map<int, std::vector<NodeId>> byLevel;
        for (NodeId id = 0; id < static_cast<NodeId>(s_.nodes().size()); ++id) {
            const Op op = node(id).op;
            if (live_[id] && op != Op::Input && op != Op::Zero) byLevel[level_[id]].push_back(id);
        }
        // Within a level, the best-fitting pairs first.
        for (auto& [level, ids] : byLevel) {
            struct Candidate {
                int score;
                std::size_t distance;
                NodeId u, v;
            };
            std::vector<Candidate> candidates;
            for (std::size_t i = 0; i < ids.size(); ++i)
                for (std::size_t j = i + 1, seen = 0; j < ids.size() && seen < kSearchWindow; ++j) {
                    if (!sameKind(ids[i], ids[j])) continue;
                    ++seen;
                    candidates.push_back({score(ids[i], ids[j]), j - i, ids[i], ids[j]});
                }
            std::stable_sort(candidates.begin(), candidates.end(), [](const Candidate& a, const Candidate& b) {
                return a.score != b.score ? a.score > b.score : a.distance < b.distance;
            });
            for (const Candidate& k : candidates) {
                if (paired(k.u) || paired(k.v)) continue;
                partner_[k.u] = k.v, partner_[k.v] = k.u;
                lane0_[k.u] = 1;
            }
        }
    }

    // ---- Orientation::LaneZeroCheaper ----
    int laneOf(NodeId x) const { return paired(x) && !lane0_[x] ? 1 : 0; }
    bool isZero(NodeId x) const { return node(x).op == Op::Zero; }

    // Instructions (modelled) to have p in lane 0 and q in lane 1 of one value.
    int joinCost(NodeId p, NodeId q) const {
        if (isZero(p) && isZero(q)) return 0;
        if (isInput(p) && isInput(q)) return element(q) == element(p) + 1 ? 0 : 1;
        if (p == q) return 1;
        if (partner_[p] == q) return lane0_[p] ? 0 : 1;
        return 1 + (isInput(p) || isZero(p) ? 0 : laneOf(p));
    }

    // Whether the operands of an addition pair crosswise (u.a with v.b).
    bool crosswise(NodeId u, NodeId v) const {
        const Node &a = node(u), &b = node(v);
        if (effectiveOp(u) != Op::Add) return false;
        if (orientation_ == Orientation::Any) return fit(a.a, b.b) + fit(a.b, b.a) > fit(a.a, b.a) + fit(a.b, b.b);
        return joinCost(a.a, b.b) + joinCost(a.b, b.a) < joinCost(a.a, b.a) + joinCost(a.b, b.b);
    }

    // Modelled shuffles feeding the vector operation of node n (and its partner).
    int operationCost(NodeId n) const {
        if (!paired(n)) {
            const Node& a = node(n);
            int cost = 0;
            for (NodeId x : {a.a, a.b == a.a ? -1 : a.b})
                if (x >= 0 && !isInput(x) && !isZero(x)) cost += laneOf(x);
            return cost;
        }
        const NodeId u = lane0_[n] ? n : partner_[n], v = partner_[u];
        const Node &a = node(u), &b = node(v);
        const bool cross = crosswise(u, v);
        const NodeId bx = cross ? b.b : b.a, by = cross ? b.a : b.b;
        return joinCost(a.a, bx) + (a.b >= 0 ? joinCost(a.b, by) : 0);
    }

    // Local search: a pair is turned when that lowers the modelled shuffles
    // of its own operation and of its users, and the stores of neighbouring
    // output elements.
    void orientPairs() {
        const std::size_t count = s_.nodes().size();
        std::vector<int> outputElement(count, -1);
        for (const Output& o : s_.outputs()) outputElement[o.value] = o.elements[0];
        auto localCost = [&](NodeId u, NodeId v) {
            std::vector<NodeId> ops{std::min(u, v)};
            for (NodeId x : {u, v})
                for (NodeId y : users_[x]) ops.push_back(paired(y) ? std::min(y, partner_[y]) : y);
            std::sort(ops.begin(), ops.end());
            ops.erase(std::unique(ops.begin(), ops.end()), ops.end());
            int cost = 0;
            for (NodeId op : ops) cost += operationCost(op);
            const NodeId first = lane0_[u] ? u : v, second = partner_[first];
            if (outputElement[first] >= 0 && outputElement[second] >= 0)
                cost += outputElement[second] != outputElement[first] + 1;
            return cost;
        };
        for (int pass = 0; pass < 4; ++pass) {
            bool turned = false;
            for (NodeId u = 0; u < static_cast<NodeId>(count); ++u) {
                const NodeId v = partner_[u];
                if (v < u) continue;
                const int before = localCost(u, v);
                std::swap(lane0_[u], lane0_[v]);
                if (localCost(u, v) < before)
                    turned = true;
                else
                    std::swap(lane0_[u], lane0_[v]);
            }
            if (!turned) break;
        }
    }

    // Where output value x is taken from: a carried copy of it (or of the
    // value it negates) where there is one.
    Carried outputSource(NodeId x) {
        if (isInput(x) || node(x).op == Op::Zero) return {alone(x), 0, false};
        const bool negation = node(x).op == Op::Neg;
        const auto it = carried_.find(negation ? node(x).a : x);
        if (it != carried_.end()) return {it->second.value, it->second.lane, it->second.negated != negation};
        const Place at = ensure(x);
        return {at.value, at.lane, false};
    }

    // Operand p's value with p in lane 0 and anything in lane 1.
    NodeId alone(NodeId p) {
        if (isInput(p)) return out_.inputLanes({element(p), -1});
        if (node(p).op == Op::Zero) return out_.zero();
        const Place at = ensure(p);
        return at.lane == 0 ? at.value : out_.shuffle(at.value, 1, at.value, 1);
    }

    // A value holding p in lane 0 and q in lane 1.
    NodeId both(NodeId p, NodeId q) {
        if (isInput(p) && isInput(q)) return out_.inputLanes({element(p), element(q)});
        const bool zp = node(p).op == Op::Zero, zq = node(q).op == Op::Zero;
        if (zp && zq) return out_.zero();
        auto source = [&](NodeId x, int wantLane) -> Place {
            if (node(x).op == Op::Zero) return {out_.zero(), 0};
            if (isInput(x)) {
                std::vector<int> e{-1, -1};
                e[wantLane] = element(x);
                return {out_.inputLanes(e), wantLane};
            }
            return ensure(x);
        };
        const Place a = source(p, 0), b = source(q, 1);
        if (a.value == b.value && a.lane == 0 && b.lane == 1) return a.value;
        return out_.shuffle(a.value, a.lane, b.value, b.lane);
    }

    // Creates the vector operation for u (lane 0) and v (lane 1, or -1: u alone).
    NodeId vectorOp(NodeId u, NodeId v) {
        const Node& a = node(u);
        NodeId x, y = -1;
        if (v < 0) {
            x = alone(a.a);
            if (a.b >= 0) y = a.b == a.a ? x : alone(a.b);
        } else {
            const Node& b = node(v);
            NodeId bx = b.a, by = b.b;
            if (crosswise(u, v)) std::swap(bx, by);
            x = both(a.a, bx);
            if (a.b >= 0) y = both(a.b, by);
        }
        std::unique_ptr<Dag::WideScope> wide(a.wide && a.op != Op::Neg ? new Dag::WideScope(out_) : nullptr);
        switch (effectiveOp(u)) {
            case Op::Add: return out_.add(x, y);
            case Op::Sub: return out_.sub(x, y);
            case Op::Neg: return out_.neg(x);
            case Op::Narrow: wide.reset(); return out_.narrow(x);
            case Op::Scale: {
                const Real cu = (flip_[u] ? -1 : 1) * s_.constant(a.arg)[0].real();
                const Real cv = v < 0 ? cu : (flip_[v] ? -1 : 1) * s_.constant(node(v).arg)[0].real();
                return out_.scaleLanes({cu, cv}, x);
            }
            default: throw std::logic_error("pairLanes: operation not supported");
        }
    }

    // Where node id's value is, building its vector (and, first, the
    // vectors of its operands) on first demand: the vector DAG follows the
    // scalar creation order as closely as the pairs allow.
    Place ensure(NodeId id) {
        if (place_[id].value >= 0) return place_[id];
        if (carrier_[id]) return place_[id] = carry(id);
        const NodeId other = partner_[id];
        if (other < 0) return place_[id] = {vectorOp(id, -1), 0};
        const NodeId first = lane0_[id] ? id : other, second = lane0_[id] ? other : id;
        const NodeId v = vectorOp(first, second);
        place_[first] = {v, 0};
        place_[second] = {v, 1};
        return place_[id];
    }

    void build() {
        place_.assign(s_.nodes().size(), Place{});
        for (NodeId id = 0; id < static_cast<NodeId>(s_.nodes().size()); ++id) {
            const Op op = node(id).op;
            if (live_[id] && op != Op::Input && op != Op::Zero) ensure(id);
        }
        // Outputs: the lanes of one vector go out together (a lane's sign
        // flipped on the way where a carried value leaves negated).
        struct Lanes {
            std::vector<int> elements{-1, -1};
            std::vector<Real> signs{1, 1};
        };
        std::map<NodeId, Lanes> lanes;
        std::vector<NodeId> order;
        for (const Output& o : s_.outputs()) {
            const Carried at = outputSource(o.value);
            auto it = lanes.find(at.value);
            if (it == lanes.end()) {
                it = lanes.emplace(at.value, Lanes{}).first;
                order.push_back(at.value);
            }
            it->second.elements[at.lane] = o.elements[0];
            it->second.signs[at.lane] = at.negated ? -1 : 1;
        }
        for (NodeId v : order) out_.outputLanes(lanes[v].elements, out_.scaleLanes(lanes[v].signs, v));
    }

    const Dag& s_;
    Depth depth_;
    Orientation orientation_;
    Dag out_;
    std::vector<char> live_, lane0_;
    std::vector<char> output_;
    std::vector<char> carrier_;                // computed alone, carrying a value in its other lane
    std::map<NodeId, Carried> carried_;        // a value's copy in a carrier's vector
    std::map<NodeId, NodeId> carriedBy_;       // carrier -> the value it carries
    std::vector<char> flip_;   // a Scale taken with its constant negated
    std::vector<char> asAdd_;  // a Sub taken as the addition of its flipped product
    std::vector<int> level_;
    std::vector<int> earliest_, latest_;
    std::vector<std::vector<NodeId>> users_;  // the live nodes that use each node
    std::vector<std::vector<std::uint64_t>> below_;
    std::vector<NodeId> partner_;
    std::vector<Place> place_;
};

}  // namespace

Dag pairLanes(const Dag& scalar, Depth depth, Orientation orientation) { return Pairer(scalar, depth, orientation).run(); }

std::vector<NodeId> lanePartners(const Dag& scalar, Depth depth) { return Pairer(scalar, depth, Orientation::Any).partners(); }

}  // namespace kfpg::gen
