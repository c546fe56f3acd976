// Expression DAG of the generator. Every node is one *value*: `lanes`
// independent reals or complex numbers. The constructors simplify on the way
// in (hash-consing, constant folding, negation folding), so builders can be
// written naively and still produce minimal code.
#pragma once

#include <complex>
#include <cstdint>
#include <map>
#include <unordered_set>
#include <unordered_map>
#include <vector>

namespace kfpg::gen {

using Real = long double;
using Complex = std::complex<long double>;
using NodeId = int;

enum class ValueKind { Real, Complex };

// Where a DAG keeps its signs. `InConstants`: a negation folds into a
// constant (c·(-x) is (-c)·x) and -(x - y) becomes y - x. `Separate`:
// constants stay positive, a negation stays a node of its own, and add and
// sub absorb it, so a value and its negative share one computation; the
// negations that reach an output are left for the final scaling to absorb.
enum class Signs { InConstants, Separate };

enum class Op : std::uint8_t {
    Input,    // arg: input slot (element index per lane, -1 = zero lane)
    Zero,     // all lanes 0
    Add,
    Sub,
    Neg,
    Scale,    // a times a real constant per lane; arg: constant id
    MulI,     // a times +i (arg 1) or -i (arg -1); complex values only
    CMul,     // a times a complex constant per lane (purely imaginary ones included); arg: constant id
    Shuffle,  // low half of the lanes from a, high half from b; arg: source lane per lane (shuffleSelector)
    Narrow,   // end of a precision-marked region: round a wide value once
};

struct Node {
    Op op;
    NodeId a = -1, b = -1;
    int arg = 0;
    bool wide = false;  // computed in double from widened single-precision operands
};

// Where a transform output goes: element index per lane (-1: lane unused).
struct Output {
    NodeId value;
    std::vector<int> elements;
};

class Dag {
public:
    Dag(ValueKind kind, int lanes, Signs signs = Signs::InConstants);

    ValueKind kind() const { return kind_; }
    Signs signs() const { return signs_; }
    int lanes() const { return lanes_; }
    const std::vector<Node>& nodes() const { return nodes_; }
    const Node& node(NodeId id) const { return nodes_[id]; }
    // Constant id -> lanes reals (Scale) or lanes complex values (CMul).
    const std::vector<Complex>& constant(int id) const { return constants_[id]; }
    const std::vector<int>& inputElements(int slot) const { return inputs_[slot]; }
    const std::vector<Output>& outputs() const { return outputs_; }

    // Element `index` in every lane.
    NodeId input(int index);
    // Element per lane; -1 gives a zero lane.
    NodeId inputLanes(const std::vector<int>& elements);
    NodeId zero();
    NodeId add(NodeId a, NodeId b);
    NodeId sub(NodeId a, NodeId b);
    NodeId neg(NodeId a);
    NodeId scale(Real c, NodeId a);
    NodeId scaleLanes(const std::vector<Real>& c, NodeId a);
    // A product that later constant factors are not folded into: it stays a
    // multiplication of its own (e.g. an exact doubling shared by a sum and
    // a product).
    NodeId keptScale(Real c, NodeId a);
    NodeId mulI(int sign, NodeId a);
    NodeId cmul(Complex w, NodeId a);
    NodeId cmulLanes(const std::vector<Complex>& w, NodeId a);
    // Two-lane values: lane 0 = a's lane `laneA`, lane 1 = b's lane `laneB`.
    NodeId shuffle(NodeId a, int laneA, NodeId b, int laneB);
    // Any even lane count: lane l takes lane from[l] of a for the low half of
    // the lanes and of b for the high half (the form of SSE's shufps/shufpd).
    NodeId shuffleHalves(NodeId a, NodeId b, const std::vector<int>& from);
    NodeId narrow(NodeId a);

    // Instances: the nodes created by one of several runs of the same builder
    // code on different values (the columns of a two-stage transform, say),
    // as id ranges; the runs of one loop share a group. Lane pairing lines
    // up neighbouring instances of a group node by node.
    struct Instance {
        NodeId begin, end;
        int group;
    };
    int newInstanceGroup() { return groups_++; }
    NodeId nextId() const { return static_cast<NodeId>(nodes_.size()); }
    void markInstance(NodeId begin, int group) { instances_.push_back({begin, nextId(), group}); }
    const std::vector<Instance>& instances() const { return instances_; }

    void output(int element, NodeId value);
    void outputLanes(const std::vector<int>& elements, NodeId value);

    // While alive, new arithmetic nodes are marked wide (computed in double),
    // or with `wide` false not.
    class WideScope {
    public:
        explicit WideScope(Dag& dag, bool wide = true) : dag_(dag), saved_(dag.wide_) { dag_.wide_ = wide; }
        ~WideScope() { dag_.wide_ = saved_; }
        WideScope(const WideScope&) = delete;
        WideScope& operator=(const WideScope&) = delete;

    private:
        Dag& dag_;
        bool saved_;
    };

private:
    struct Key {
        Op op;
        NodeId a, b;
        int arg;
        bool wide;
        bool operator==(const Key& o) const {
            return op == o.op && a == o.a && b == o.b && arg == o.arg && wide == o.wide;
        }
    };
    struct KeyHash {
        std::size_t operator()(const Key& k) const {
            std::size_t h = static_cast<std::size_t>(k.op);
            h = h * 1000003u ^ static_cast<std::size_t>(k.a + 1);
            h = h * 1000003u ^ static_cast<std::size_t>(k.b + 1);
            h = h * 1000003u ^ static_cast<std::size_t>(k.arg);
            return h * 2u + k.wide;
        }
    };

    NodeId make(Op op, NodeId a, NodeId b = -1, int arg = 0);
    int intern(const std::vector<Complex>& values);
    bool isNegativeScale(NodeId id) const;

    bool separate() const { return signs_ == Signs::Separate; }
    NodeId existing(Op op, NodeId a, NodeId b) const;

    ValueKind kind_;
    int lanes_;
    Signs signs_;
    bool wide_ = false;
    std::vector<Node> nodes_;
    std::unordered_map<Key, NodeId, KeyHash> index_;
    std::vector<std::vector<Complex>> constants_;
    std::map<std::vector<std::pair<Real, Real>>, int> constantIndex_;
    std::vector<std::vector<int>> inputs_;
    std::map<std::vector<int>, int> inputIndex_;
    std::vector<Output> outputs_;
    std::unordered_set<NodeId> kept_;
    std::vector<Instance> instances_;
    int groups_ = 0;
};

// Source lane of lane l in a Shuffle node's arg: log2(lanes) bits per lane,
// lane 0 lowest (for four lanes the arg is the shufps immediate).
int shuffleSelector(int arg, int lane, int lanes);

// A CMul constant with no real part in any lane (a swap and one multiply).
bool isImaginary(const std::vector<Complex>& constant);

// Real operation counts of a DAG (per lane; a complex add is two real adds).
struct FlopCount {
    long adds = 0;
    long muls = 0;
};
FlopCount countFlops(const Dag& dag);

}  // namespace kfpg::gen
