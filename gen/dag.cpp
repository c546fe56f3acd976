#include "dag.h"

#include <cassert>
#include <cmath>
#include <stdexcept>

namespace kfpg::gen {

Dag::Dag(ValueKind kind, int lanes, Signs signs) : kind_(kind), lanes_(lanes), signs_(signs) {}

NodeId Dag::existing(Op op, NodeId a, NodeId b) const {
    auto it = index_.find(Key{op, a, b, 0, wide_});
    return it == index_.end() ? -1 : it->second;
}

NodeId Dag::make(Op op, NodeId a, NodeId b, int arg) {
    // A negation or a lane move is exact: it keeps its operands' precision
    // (a lane move of a wide and a narrow value is wide).
    const bool wide = op == Op::Neg       ? nodes_[a].wide
                      : op == Op::Shuffle ? nodes_[a].wide || nodes_[b].wide
                                          : wide_ && op != Op::Input && op != Op::Zero && op != Op::Narrow;
    const Key key{op, a, b, arg, wide};
    auto it = index_.find(key);
    if (it != index_.end()) return it->second;
    nodes_.push_back(Node{op, a, b, arg, wide});
    const NodeId id = static_cast<NodeId>(nodes_.size() - 1);
    index_.emplace(key, id);
    return id;
}

int Dag::intern(const std::vector<Complex>& values) {
    std::vector<std::pair<Real, Real>> key;
    for (const Complex& v : values) key.emplace_back(v.real() + 0.0L, v.imag() + 0.0L);  // -0 == +0
    auto it = constantIndex_.find(key);
    if (it != constantIndex_.end()) return it->second;
    constants_.push_back(values);
    const int id = static_cast<int>(constants_.size() - 1);
    constantIndex_.emplace(key, id);
    return id;
}

NodeId Dag::input(int index) { return inputLanes(std::vector<int>(lanes_, index)); }

NodeId Dag::inputLanes(const std::vector<int>& elements) {
    assert(static_cast<int>(elements.size()) == lanes_);
    bool any = false;
    for (int e : elements) any |= e >= 0;
    if (!any) return zero();
    auto it = inputIndex_.find(elements);
    int slot;
    if (it != inputIndex_.end()) {
        slot = it->second;
    } else {
        inputs_.push_back(elements);
        slot = static_cast<int>(inputs_.size() - 1);
        inputIndex_.emplace(elements, slot);
    }
    return make(Op::Input, -1, -1, slot);
}

NodeId Dag::zero() { return make(Op::Zero, -1); }

bool Dag::isNegativeScale(NodeId id) const {
    const Node& n = nodes_[id];
    if (n.op != Op::Scale || n.wide != wide_) return false;
    for (const Complex& c : constants_[n.arg])
        if (!(c.real() < 0)) return false;
    return true;
}

NodeId Dag::add(NodeId a, NodeId b) {
    const Node& na = nodes_[a];
    const Node& nb = nodes_[b];
    if (na.op == Op::Zero) return b;
    if (nb.op == Op::Zero) return a;
    if (separate() && na.op == Op::Neg && nb.op == Op::Neg) return neg(add(na.a, nb.a));
    if (nb.op == Op::Neg) return sub(a, nb.a);
    if (na.op == Op::Neg) return sub(b, na.a);
    if (isNegativeScale(b)) return sub(a, neg(b));
    if (isNegativeScale(a)) return sub(b, neg(a));
    return make(Op::Add, std::min(a, b), std::max(a, b));
}

NodeId Dag::sub(NodeId a, NodeId b) {
    const Node& na = nodes_[a];
    const Node& nb = nodes_[b];
    if (nb.op == Op::Zero) return a;
    if (na.op == Op::Zero) return neg(b);
    if (nb.op == Op::Neg) return add(a, nb.a);
    if (separate()) {
        if (na.op == Op::Neg) return neg(add(na.a, b));
        // b - a already computed: a - b is its negation.
        const NodeId opposite = existing(Op::Sub, b, a);
        if (opposite >= 0 && existing(Op::Sub, a, b) < 0) return neg(opposite);
    }
    if (isNegativeScale(b)) return add(a, neg(b));
    return make(Op::Sub, a, b);
}

NodeId Dag::neg(NodeId a) {
    const Node n = nodes_[a];
    const bool sameMode = n.wide == wide_;
    if (separate()) {
        if (n.op == Op::Zero) return a;
        if (n.op == Op::Neg) return n.a;
        return make(Op::Neg, a);
    }
    switch (n.op) {
        case Op::Zero: return a;
        case Op::Neg: return n.a;
        case Op::Sub: if (sameMode) return sub(n.b, n.a); break;
        case Op::MulI: if (sameMode) return mulI(-n.arg, n.a); break;
        case Op::Scale:
        case Op::CMul: {
            if (!sameMode) break;
            std::vector<Complex> c = constants_[n.arg];
            for (Complex& v : c) v = -v;
            return make(n.op, n.a, -1, intern(c));
        }
        default: break;
    }
    return make(Op::Neg, a);
}

NodeId Dag::scale(Real c, NodeId a) { return scaleLanes(std::vector<Real>(lanes_, c), a); }

NodeId Dag::scaleLanes(const std::vector<Real>& c, NodeId a) {
    bool allOne = true, allMinusOne = true, allZero = true;
    for (Real v : c) allOne &= v == 1, allMinusOne &= v == -1, allZero &= v == 0;
    if (allZero) return zero();
    if (allOne) return a;
    if (allMinusOne) return neg(a);
    const Node n = nodes_[a];
    if (n.op == Op::Zero) return a;
    std::vector<Complex> k(c.begin(), c.end());
    if (separate()) {
        if (n.op == Op::Neg) return neg(scaleLanes(c, n.a));
        bool allNegative = true;
        for (Real v : c) allNegative &= v < 0;
        if (allNegative) {
            std::vector<Real> positive(c);
            for (Real& v : positive) v = -v;
            return neg(scaleLanes(positive, a));
        }
    }
    if (n.op == Op::Neg) {
        for (Complex& v : k) v = -v;
        return make(Op::Scale, n.a, -1, intern(k));
    }
    if (n.op == Op::Scale && n.wide == wide_ && !kept_.count(a)) {
        // The folded constant may be 1, -1 or 0: simplified like any other.
        std::vector<Real> folded(c);
        for (int l = 0; l < lanes_; ++l) folded[l] *= constants_[n.arg][l].real();
        return scaleLanes(folded, n.a);
    }
    return make(Op::Scale, a, -1, intern(k));
}

NodeId Dag::keptScale(Real c, NodeId a) {
    const NodeId id = scale(c, a);
    if (nodes_[id].op == Op::Scale) kept_.insert(id);
    return id;
}

NodeId Dag::mulI(int sign, NodeId a) {
    if (kind_ != ValueKind::Complex) throw std::logic_error("mulI on a real DAG");
    const Node n = nodes_[a];
    if (n.op == Op::Zero) return a;
    if (n.op == Op::Neg) return mulI(-sign, n.a);
    if (n.op == Op::MulI) return sign == n.arg ? neg(n.a) : n.a;
    // i (w x) = (i w) x: the constant absorbs the rotation (a swap and one multiply).
    if ((n.op == Op::Scale || n.op == Op::CMul) && n.wide == wide_) {
        std::vector<Complex> w = constants_[n.arg];
        for (Complex& v : w) v *= Complex(0, static_cast<Real>(sign));
        return cmulLanes(w, n.a);
    }
    return make(Op::MulI, a, -1, sign);
}

NodeId Dag::cmul(Complex w, NodeId a) { return cmulLanes(std::vector<Complex>(lanes_, w), a); }

NodeId Dag::cmulLanes(const std::vector<Complex>& w, NodeId a) {
    if (kind_ != ValueKind::Complex) throw std::logic_error("cmul on a real DAG");
    bool real = true, imag = true, uniform = true;
    for (const Complex& v : w) real &= v.imag() == 0, imag &= v.real() == 0, uniform &= v == w[0];
    std::vector<Real> part(lanes_);
    if (real) {
        for (int l = 0; l < lanes_; ++l) part[l] = w[l].real();
        return scaleLanes(part, a);
    }
    const Node n = nodes_[a];
    if (n.op == Op::Neg) {
        std::vector<Complex> k(w);
        for (Complex& v : k) v = -v;
        return cmulLanes(k, n.a);
    }
    if (imag && uniform && std::fabs(w[0].imag()) == 1) return mulI(w[0].imag() > 0 ? 1 : -1, a);
    if (imag) return make(Op::CMul, a, -1, intern(w));  // a swap and one multiply
    // w = r (1 + sigma i) with |re| == |im|: two adds and two multiplications.
    if (uniform && std::fabs(w[0].real()) == std::fabs(w[0].imag())) {
        const int sigma = (w[0].imag() > 0) == (w[0].real() > 0) ? 1 : -1;
        return scale(w[0].real(), add(a, mulI(sigma, a)));
    }
    return make(Op::CMul, a, -1, intern(w));
}

NodeId Dag::shuffle(NodeId a, int laneA, NodeId b, int laneB) {
    if (lanes_ != 2) throw std::logic_error("shuffle needs two lanes");
    return shuffleHalves(a, b, {laneA, laneB});
}

namespace {
int laneBits(int lanes) {
    int bits = 0;
    while ((1 << bits) < lanes) ++bits;
    return bits;
}
}  // namespace

int shuffleSelector(int arg, int lane, int lanes) {
    const int bits = laneBits(lanes);
    return (arg >> (bits * lane)) & ((1 << bits) - 1);
}

NodeId Dag::shuffleHalves(NodeId a, NodeId b, const std::vector<int>& from) {
    if (lanes_ < 2 || (lanes_ & (lanes_ - 1)) || static_cast<int>(from.size()) != lanes_)
        throw std::logic_error("shuffle needs a power-of-two lane count of at least two");
    bool identity = a == b;
    int arg = 0;
    for (int l = 0; l < lanes_; ++l) {
        if (from[l] < 0 || from[l] >= lanes_) throw std::logic_error("shuffle lane out of range");
        identity &= from[l] == l;
        arg |= from[l] << (laneBits(lanes_) * l);
    }
    if (identity) return a;
    return make(Op::Shuffle, a, b, arg);
}

NodeId Dag::narrow(NodeId a) {
    if (separate() && nodes_[a].op == Op::Neg) return neg(narrow(nodes_[a].a));
    const Node n = nodes_[a];
    if (!n.wide) return a;
    // A product of a narrow value by powers of two (as the kernel holds its
    // constants, in double) is exact in double and rounds once either way:
    // it is the same product in the narrow type, without the widening and
    // the rounding.
    if (n.op == Op::Scale && !nodes_[n.a].wide) {
        std::vector<Real> c;
        for (const Complex& k : constants_[n.arg]) {
            int exponent;
            const double held = static_cast<double>(k.real());
            if (k.imag() != 0 || std::fabs(std::frexp(held, &exponent)) != 0.5) return make(Op::Narrow, a);
            c.push_back(held);
        }
        WideScope narrowProduct(*this, false);
        return scaleLanes(c, n.a);
    }
    return make(Op::Narrow, a);
}

void Dag::output(int element, NodeId value) { outputLanes(std::vector<int>(lanes_, element), value); }

void Dag::outputLanes(const std::vector<int>& elements, NodeId value) { outputs_.push_back({value, elements}); }

bool isImaginary(const std::vector<Complex>& constant) {
    for (const Complex& c : constant)
        if (c.real() != 0) return false;
    return true;
}

FlopCount countFlops(const Dag& dag) {
    // Only nodes that some output depends on count.
    std::vector<char> live(dag.nodes().size(), 0);
    for (const Output& o : dag.outputs()) live[o.value] = 1;
    for (NodeId id = static_cast<NodeId>(live.size()) - 1; id >= 0; --id) {
        if (!live[id]) continue;
        const Node& n = dag.node(id);
        if (n.a >= 0) live[n.a] = 1;
        if (n.b >= 0) live[n.b] = 1;
    }
    const int parts = dag.kind() == ValueKind::Complex ? 2 : 1;
    FlopCount f;
    for (NodeId id = 0; id < static_cast<NodeId>(live.size()); ++id) {
        if (!live[id]) continue;
        switch (dag.node(id).op) {
            case Op::Add:
            case Op::Sub: f.adds += parts; break;
            case Op::Scale: f.muls += parts; break;
            case Op::CMul:
                if (isImaginary(dag.constant(dag.node(id).arg)))
                    f.muls += 2;
                else
                    f.adds += 2, f.muls += 4;
                break;
            default: break;
        }
    }
    return f;
}

}  // namespace kfpg::gen
