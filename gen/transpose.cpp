#include "transpose.h"

#include <map>
#include <memory>
#include <numeric>
#include <stdexcept>

namespace kfpg::gen {

namespace {

// One contribution to a value's adjoint (the sum of everything its consumers
// pass back to it). `wideSum`: part of a wide sum, rounded with the others.
struct Term {
    NodeId value;
    bool wideSum;
};

class Transposer {
public:
    Transposer(Dag& target, const Dag& forward, bool twoChains)
        : t_(target), f_(forward), twoChains_(twoChains), terms_(forward.nodes().size()), narrowSum_(terms_.size(), -1),
          wideSum_(terms_.size(), -1), secondSum_(terms_.size(), -1), received_(terms_.size(), 0), uses_(terms_.size(), 0) {
        if (f_.kind() != ValueKind::Real || f_.lanes() != 1) throw std::logic_error("transposition needs a one-lane real DAG");
        markLive();
        findWideRegions();
        findWideTerms();
    }

    std::vector<NodeId> run(const std::vector<NodeId>& y, int inputCount, const std::vector<NodeId>& partners) {
        for (const Output& o : f_.outputs()) addTerm(o.value, y.at(o.elements[0]), false);
        std::vector<NodeId> x(inputCount, t_.zero());
        if (partners.empty()) {
            InstanceMarks marks(t_, f_);
            for (NodeId id = static_cast<NodeId>(f_.nodes().size()) - 1; id >= 0; --id) {
                marks.enter(id);
                transposeNode(id, x);
                marks.leave(id);
            }
            return x;
        }
        std::map<NodeId, int> groups;  // by the first node of a pair
        for (NodeId id = static_cast<NodeId>(f_.nodes().size()) - 1; id >= 0; --id) {
            const NodeId start = t_.nextId();
            transposeNode(id, x);
            if (partners.at(id) < 0) continue;
            const auto group = groups.emplace(std::min(id, partners[id]), 0);
            if (group.second) group.first->second = t_.newInstanceGroup();
            t_.markInstance(start, group.first->second);
        }
        return x;
    }

private:
    // The transposed run of a builder loop instance is an instance of the
    // transposed loop: the nodes made while the walk is inside its range.
    class InstanceMarks {
    public:
        InstanceMarks(Dag& target, const Dag& forward) : t_(target), instances_(forward.instances()) {
            for (const Dag::Instance& i : instances_)
                if (!groups_.count(i.group)) groups_[i.group] = t_.newInstanceGroup();
            starts_.resize(instances_.size());
        }
        void enter(NodeId id) {
            for (std::size_t i = 0; i < instances_.size(); ++i)
                if (instances_[i].end - 1 == id) starts_[i] = t_.nextId();
        }
        void leave(NodeId id) {
            for (std::size_t i = 0; i < instances_.size(); ++i)
                if (instances_[i].begin == id && instances_[i].end > id) t_.markInstance(starts_[i], groups_[instances_[i].group]);
        }

    private:
        Dag& t_;
        const std::vector<Dag::Instance>& instances_;
        std::map<int, int> groups_;
        std::vector<NodeId> starts_;
    };

    void transposeNode(NodeId id, std::vector<NodeId>& x) {
        const int inputCount = static_cast<int>(x.size());
        if (!live_[id] || (getsWideTerms_[id] ? terms_[id].empty() : narrowSum_[id] < 0)) return;
        const Node& n = f_.node(id);
        std::unique_ptr<Dag::WideScope> scope(n.wide ? new Dag::WideScope(t_) : nullptr);
        const NodeId g = adjoint(id);
        switch (n.op) {
            case Op::Input: {
                const int e = f_.inputElements(n.arg)[0];
                if (e >= inputCount) throw std::logic_error("input element beyond inputCount");
                x[e] = t_.add(x[e], g);
                break;
            }
            case Op::Zero: break;
            case Op::Add: pass(id, n.a, g), pass(id, n.b, g); break;
            case Op::Sub: pass(id, n.a, g), pass(id, n.b, t_.neg(g)); break;
            case Op::Neg: pass(id, n.a, t_.neg(g)); break;
            case Op::Scale: pass(id, n.a, t_.scale(f_.constant(n.arg)[0].real(), g)); break;
            case Op::Narrow: pass(id, n.a, g); break;
            default: throw std::logic_error("transposition of a non-linear or complex operation");
        }
    }

    void markLive() {
        live_.assign(f_.nodes().size(), 0);
        for (const Output& o : f_.outputs()) live_[o.value] = 1;
        for (NodeId id = static_cast<NodeId>(live_.size()) - 1; id >= 0; --id) {
            if (!live_[id]) continue;
            const Node& n = f_.node(id);
            if (n.a >= 0) live_[n.a] = 1, ++uses_[n.a];
            if (n.b >= 0) live_[n.b] = 1, ++uses_[n.b];
        }
        for (const Output& o : f_.outputs()) ++uses_[o.value];
    }

    // Connected wide nodes form a region; a region with an addition is a sum
    // region, one without is a product (with its negations).
    void findWideRegions() {
        region_.resize(f_.nodes().size());
        std::iota(region_.begin(), region_.end(), 0);
        for (NodeId id = 0; id < static_cast<NodeId>(f_.nodes().size()); ++id) {
            const Node& n = f_.node(id);
            if (!live_[id] || !n.wide) continue;
            for (NodeId operand : {n.a, n.b})
                if (operand >= 0 && f_.node(operand).wide) region_[root(id)] = root(operand);
        }
        sumRegion_.assign(f_.nodes().size(), 0);
        for (NodeId id = 0; id < static_cast<NodeId>(f_.nodes().size()); ++id) {
            const Node& n = f_.node(id);
            if (live_[id] && n.wide && (n.op == Op::Add || n.op == Op::Sub)) sumRegion_[root(id)] = 1;
        }
    }

    // Which nodes will be passed a share of a wide sum region (see pass).
    void findWideTerms() {
        getsWideTerms_.assign(f_.nodes().size(), 0);
        for (NodeId id = 0; id < static_cast<NodeId>(f_.nodes().size()); ++id) {
            const Node& n = f_.node(id);
            if (!live_[id] || !n.wide || !sumRegion_[root(id)] || n.op == Op::Input) continue;
            for (NodeId operand : {n.a, n.b})
                if (operand >= 0 && !f_.node(operand).wide) getsWideTerms_[operand] = 1;
        }
    }

    NodeId root(NodeId id) {
        while (region_[id] != id) id = region_[id] = region_[region_[id]];
        return id;
    }

    // Hands `value` (made by consumer `from`) back to operand `to`. Leaving a
    // wide region for a single-precision value, a product is rounded at once
    // and a sum region's share waits to be summed with the others.
    void pass(NodeId from, NodeId to, NodeId value) {
        const bool leavesWide = f_.node(from).wide && !f_.node(to).wide;
        if (leavesWide && !sumRegion_[root(from)]) value = t_.narrow(value);
        addTerm(to, value, leavesWide && sumRegion_[root(from)]);
    }

    // Adds a contribution to its value's sum where it is made, so that a
    // transposed block of sums runs block by block, as the forward one did.
    // A wide share joins the wide sum; the others join the plain sum, but
    // for a value that also gets wide shares: those are kept in order for
    // adjoint() to place the wide sum among them. With two chains, the
    // plain sum of three or more contributions takes the first half of them
    // and a second sum the rest.
    void addTerm(NodeId to, NodeId value, bool wideSum) {
        if (getsWideTerms_[to]) terms_[to].push_back({value, wideSum});
        if (!wideSum && getsWideTerms_[to]) return;
        const bool second = twoChains_ && !getsWideTerms_[to] && uses_[to] >= 3 && 2 * received_[to]++ >= uses_[to];
        NodeId& sum = second ? secondSum_[to] : wideSum ? wideSum_[to] : narrowSum_[to];
        Dag::WideScope scope(t_, wideSum || f_.node(to).wide);
        sum = sum < 0 ? value : t_.add(sum, value);
    }

    // The sum of a node's contributions in the order they came; the shares of
    // wide sum regions are summed in double where the first of them stood.
    NodeId adjoint(NodeId id) {
        if (!getsWideTerms_[id]) {
            if (secondSum_[id] < 0) return narrowSum_[id];
            Dag::WideScope scope(t_, f_.node(id).wide);
            return t_.add(narrowSum_[id], secondSum_[id]);
        }
        const NodeId wide = wideSum_[id] < 0 ? -1 : t_.narrow(wideSum_[id]);
        const std::vector<Term>& terms = terms_[id];
        NodeId sum = -1;
        bool wideTaken = false;
        for (const Term& term : terms) {
            if (term.wideSum && wideTaken) continue;
            const NodeId value = term.wideSum ? wide : term.value;
            wideTaken |= term.wideSum;
            sum = sum < 0 ? value : t_.add(sum, value);
        }
        return sum;
    }

    Dag& t_;
    const Dag& f_;
    const bool twoChains_;
    std::vector<std::vector<Term>> terms_;     // of the values that get wide shares
    std::vector<NodeId> narrowSum_, wideSum_;  // sums built term by term (addTerm)
    std::vector<NodeId> secondSum_;            // the second chains
    std::vector<int> received_, uses_;         // contributions so far, and in all (consumers and outputs)
    std::vector<char> live_, getsWideTerms_;
    std::vector<NodeId> region_;
    std::vector<char> sumRegion_;
};

}  // namespace

std::vector<NodeId> transposeInto(Dag& target, const Dag& forward, const std::vector<NodeId>& y, int inputCount,
                                  const std::vector<NodeId>& partners, bool twoChainSums) {
    return Transposer(target, forward, twoChainSums).run(y, inputCount, partners);
}

}  // namespace kfpg::gen
