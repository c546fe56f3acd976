#include "emit.h"

#include "float_lanes.h"

#include <cmath>
#include <cstdio>
#include <algorithm>
#include <map>
#include <memory>
#include <set>
#include <stdexcept>
#include <vector>

namespace kfpg::gen {

std::string literal(Real c, Precision precision) {
    char buf[64];
    if (precision == Precision::F32)
        std::snprintf(buf, sizeof buf, "%af", static_cast<double>(static_cast<float>(c)));
    else
        std::snprintf(buf, sizeof buf, "%a", static_cast<double>(c));
    return buf;
}

namespace {

class Emitter {
public:
    Emitter(const Dag& dag, const EmitOptions& options) : dag_(dag), o_(options) {
        if (o_.mode == EmitMode::Vertical && dag_.kind() != ValueKind::Real)
            throw std::logic_error("vertical mode needs a real DAG");
        if (o_.mode == EmitMode::Vertical && dag_.lanes() != 1 && dag_.lanes() != width())
            throw std::logic_error("vertical mode needs one lane (constants broadcast) or one per vector element");
    }

    EmitResult run() {
        std::vector<char> visited(dag_.nodes().size(), 0);
        std::vector<NodeId> order;
        for (const Output& out : dag_.outputs()) visit(out.value, visited, order);
        if (o_.schedule != Schedule::DepthFirst) std::sort(order.begin(), order.end());
        if (o_.schedule == Schedule::Latency) order = latencyOrder(order);
        if (o_.schedule == Schedule::CreationNearUse) order = productsNearUse(order);
        markUsedLanes(order);
        markSignsAtStores(order);
        if (o_.mode == EmitMode::RealPairs) markProductRuns(order), markLaneMovesInDouble(order);
        if (o_.mode == EmitMode::RealPairs && !f64()) startFloatLanes();

        std::map<NodeId, std::vector<int>> outputsOf;
        for (int i = 0; i < static_cast<int>(dag_.outputs().size()); ++i) outputsOf[dag_.outputs()[i].value].push_back(i);
        int loadsLeft = 0;
        for (NodeId id : order) loadsLeft += dag_.node(id).op == Op::Input;
        std::vector<int> pending;
        for (NodeId id : order) {
            emitNode(id);
            if (dag_.node(id).op == Op::Input && --loadsLeft == 0) {
                for (int i : pending) emitStore(dag_.outputs()[i]);
                pending.clear();
            }
            auto it = outputsOf.find(id);
            if (it == outputsOf.end()) continue;
            for (int i : it->second) {
                if (loadsLeft == 0)
                    emitStore(dag_.outputs()[i]);
                else
                    pending.push_back(i);
            }
        }
        for (int i : pending) emitStore(dag_.outputs()[i]);
        if (floatLanes_) {
            if (!floatLanes_->allStored()) throw std::logic_error("RealPairs: an output span was never complete");
            counts_.shuffles += floatLanes_->shuffles, counts_.arithmetic += floatLanes_->arithmetic;
            counts_.loads += floatLanes_->loads, counts_.stores += floatLanes_->stores;
        }
        return EmitResult{constants_ + code_, counts_};
    }

private:
    bool vector() const { return o_.mode != EmitMode::Scalar; }
    bool f64() const { return o_.precision == Precision::F64; }
    bool complexValues() const { return dag_.kind() == ValueKind::Complex; }
    std::string vtype() const { return f64() ? "__m128d" : "__m128"; }
    std::string sfx() const { return f64() ? "pd" : "ps"; }
    int width() const { return f64() ? 2 : 4; }

    // Cycles until a node's value is ready and the unit it occupies.
    enum class Unit { None, Add, Mul };
    struct Timing {
        int latency;
        Unit unit;
    };
    Timing timing(const Node& n) const {
        switch (n.op) {
            case Op::Input: return {5, Unit::None};
            case Op::Add:
            case Op::Sub: return {3, Unit::Add};
            case Op::Scale: return {3, Unit::Mul};
            case Op::CMul: return {isImaginary(dag_.constant(n.arg)) ? 4 : 7, Unit::Mul};
            case Op::MulI: return {2, Unit::None};
            default: return {1, Unit::None};
        }
    }

    // How many nodes of the order use each value (a node using it twice once).
    std::vector<int> usesIn(const std::vector<NodeId>& order) const {
        std::vector<int> uses(dag_.nodes().size(), 0);
        for (NodeId id : order) {
            const Node& n = dag_.node(id);
            if (n.a >= 0) ++uses[n.a];
            if (n.b >= 0 && n.b != n.a) ++uses[n.b];
        }
        return uses;
    }

    // List scheduling over the creation order (see Schedule::Latency).
    std::vector<NodeId> latencyOrder(const std::vector<NodeId>& order) const {
        const std::size_t count = dag_.nodes().size();
        std::vector<int> readyAt(count, 0), uses = usesIn(order);
        std::vector<char> done(count, 1), early(count, 0);
        for (NodeId id : order) done[id] = 0;
        std::vector<NodeId> pending = order, out;
        int cycle = 0, earlyLive = 0;  // values taken ahead of the creation order and still needed
        while (!pending.empty()) {
            int adds = 0, muls = 0, issued = 0;
            for (std::size_t i = 0; i < pending.size() && i < static_cast<std::size_t>(o_.lookahead) && issued < 4;) {
                const NodeId id = pending[i];
                const Node& n = dag_.node(id);
                const Timing t = timing(n);
                auto ready = [&](NodeId x) { return x < 0 || (done[x] && readyAt[x] <= cycle); };
                const bool unitFree = t.unit == Unit::Add ? adds < 2 : t.unit == Unit::Mul ? muls < 2 : true;
                const bool fits = i == 0 || uses[id] == 0 || earlyLive < o_.aheadLive;
                if (!ready(n.a) || !ready(n.b) || !unitFree || !fits) {
                    ++i;
                    continue;
                }
                adds += t.unit == Unit::Add, muls += t.unit == Unit::Mul, ++issued;
                done[id] = 1, readyAt[id] = cycle + t.latency;
                if (i > 0 && uses[id] > 0) early[id] = 1, ++earlyLive;
                for (NodeId x : {n.a, n.b == n.a ? -1 : n.b})
                    if (x >= 0 && --uses[x] == 0 && early[x]) --earlyLive;
                out.push_back(id);
                pending.erase(pending.begin() + static_cast<long>(i));
            }
            ++cycle;
        }
        return out;
    }

    // See Schedule::CreationNearUse.
    std::vector<NodeId> productsNearUse(const std::vector<NodeId>& order) const {
        std::vector<int> uses = usesIn(order);
        for (const Output& out : dag_.outputs()) ++uses[out.value];
        std::vector<char> output(uses.size(), 0);
        for (const Output& out : dag_.outputs()) output[out.value] = 1;
        // A product that is an output has no use to move to.
        auto moves = [&](NodeId id) { return id >= 0 && dag_.node(id).op == Op::Scale && uses[id] == 1 && !output[id]; };
        std::vector<NodeId> out;
        for (NodeId id : order) {
            if (moves(id)) continue;
            const Node& n = dag_.node(id);
            for (NodeId x : {n.a, n.b == n.a ? -1 : n.b})
                if (moves(x)) out.push_back(x);
            out.push_back(id);
        }
        return out;
    }

    // RealPairs outputs that only change the signs of lanes (a negation, a
    // scale by +-1 per lane) and feed nothing else: the sign goes into the
    // output's scale factor instead (the same bits, one instruction fewer).
    void markSignsAtStores(const std::vector<NodeId>& order) {
        signAtStore_.assign(dag_.nodes().size(), 0);
        if (o_.mode != EmitMode::RealPairs || o_.scaleVar.empty()) return;
        const std::vector<int> uses = usesIn(order);
        for (NodeId id : order) signAtStore_[id] = uses[id] == 0 && !laneSigns(id).empty();
    }
    // Whether each lane of node id is its operand negated, for a node that
    // only changes signs; empty otherwise.
    std::vector<bool> laneSigns(NodeId id) const {
        const Node& n = dag_.node(id);
        if (n.op == Op::Neg) return std::vector<bool>(dag_.lanes(), true);
        if (n.op != Op::Scale) return {};
        std::vector<bool> negated;
        for (const Complex& c : dag_.constant(n.arg)) {
            if (std::fabs(c.real()) != 1 || c.imag() != 0) return {};
            negated.push_back(c.real() < 0);
        }
        return negated;
    }
    // Lane l of output value x as it is stored: the operand of a sign change
    // folded into the store, with that lane's sign.
    Lane storedLane(NodeId x, int l) const {
        if (!signAtStore_[x]) return {var(x), l};
        return {var(dag_.node(x).a), l, laneSigns(x)[l]};
    }

    // RealPairs: an operand that runs of products take far apart from each
    // other (the pair sums of blocked direct sums: one run per block of
    // rows) gets a fresh copy for each run, behind an empty asm statement.
    // The compiler then keeps the copy in a register for its run instead of
    // reloading the spilled operand for every product (forward real DFT at
    // 47..61: 12-28% faster in single precision, 59 and 61 8-11% in double;
    // a few kernels lose up to 8%). Runs of fewer products than a block of
    // direct sums measured no gain.
    static constexpr int kRunGap = 24;      // emitted nodes between two runs of one operand
    static constexpr int kRunProducts = 8;  // products in a run worth a copy (a block of rows)
    void markProductRuns(const std::vector<NodeId>& order) {
        std::map<NodeId, std::vector<std::pair<int, NodeId>>> uses;  // operand -> (position, product)
        for (int i = 0; i < static_cast<int>(order.size()); ++i) {
            const Node& n = dag_.node(order[i]);
            if (n.op == Op::Scale && !signAtStore_[order[i]]) uses[n.a].push_back({i, order[i]});
        }
        for (const auto& [operand, list] : uses) {
            std::vector<std::vector<NodeId>> runs{{}};
            for (std::size_t u = 0; u < list.size(); ++u) {
                if (u > 0 && list[u].first - list[u - 1].first > kRunGap) runs.push_back({});
                runs.back().push_back(list[u].second);
            }
            if (runs.size() < 2) continue;
            for (std::size_t r = 0; r < runs.size(); ++r) {
                if (static_cast<int>(runs[r].size()) < kRunProducts) continue;
                const std::string name = "r" + std::to_string(operand) + "_" + std::to_string(r);
                runStart_[runs[r].front()] = name;
                for (NodeId product : runs[r]) runCopy_[product] = name;
            }
        }
    }
    // The operand of product id: its run's copy, made at the run's first product.
    std::string productOperand(NodeId id, bool wide) {
        const std::string operand = pairOperand(dag_.node(id).a, wide);
        const auto copy = runCopy_.find(id);
        if (copy == runCopy_.end()) return operand;
        if (runStart_.count(id))
            line(pairType(wide) + " " + copy->second + " = " + operand + "; __asm__(\"\" : \"+x\"(" + copy->second + "));");
        return copy->second;
    }

    // Single-precision RealPairs: lane moves that save conversions by moving
    // double-precision values. A move of two single-use roundings is one
    // rounding of the move of their double-precision values (one conversion
    // fewer); the widened copy of a move of two values that are widened
    // anyway is the move of their widened copies (a shuffle instead of a
    // conversion), and the single-precision move is then made only if some
    // single-precision operation takes it.
    void markLaneMovesInDouble(const std::vector<NodeId>& order) {
        const std::size_t count = dag_.nodes().size();
        std::vector<int> uses = usesIn(order);
        std::vector<char> wideUse(count, 0), narrowUse(count, 0);
        for (const Output& out : dag_.outputs()) ++uses[out.value], narrowUse[out.value] = 1;
        for (NodeId id : order) {
            const Node& n = dag_.node(id);
            const bool wide = wideNode(id) && n.op != Op::Neg;
            for (NodeId x : {n.a, n.b})
                if (x >= 0) (wide && !wideNode(x) ? wideUse : narrowUse)[x] = 1;
        }
        auto roundedOnce = [&](NodeId x) { return dag_.node(x).op == Op::Narrow && uses[x] == 1 && !signAtStore_[x]; };
        roundingOfMove_.assign(count, 0), movedRounding_.assign(count, 0), movedWide_.assign(count, 0), wideOnlyMove_.assign(count, 0);
        if (f64()) return;
        for (NodeId id : order) {
            const Node& n = dag_.node(id);
            if (n.op != Op::Shuffle || wideNode(id)) continue;
            if (n.a != n.b && roundedOnce(n.a) && roundedOnce(n.b)) {
                roundingOfMove_[id] = movedRounding_[n.a] = movedRounding_[n.b] = 1;
                continue;
            }
            if (wideUse[id] && wideUse[n.a] && wideUse[n.b]) movedWide_[id] = 1, wideOnlyMove_[id] = !narrowUse[id];
        }
    }
    static std::string wideLaneMove(const std::string& a, const std::string& b, int arg) {
        return "_mm_shuffle_pd(" + a + ", " + b + ", " + std::to_string((arg & 1) | ((arg >> 1) & 1) << 1) + ")";
    }

    // Which lanes of each value some output needs (bit l = lane l).
    void markUsedLanes(const std::vector<NodeId>& order) {
        usedLanes_.assign(dag_.nodes().size(), 0);
        for (const Output& out : dag_.outputs())
            for (int l = 0; l < static_cast<int>(out.elements.size()); ++l)
                if (out.elements[l] >= 0) usedLanes_[out.value] |= 1 << l;
        for (auto it = order.rbegin(); it != order.rend(); ++it) {
            const Node& n = dag_.node(*it);
            const int used = usedLanes_[*it];
            if (n.op == Op::Shuffle) {
                const int lanes = dag_.lanes();
                for (int l = 0; l < lanes; ++l)
                    if (used & (1 << l)) usedLanes_[2 * l < lanes ? n.a : n.b] |= 1 << shuffleSelector(n.arg, l, lanes);
                continue;
            }
            if (n.a >= 0) usedLanes_[n.a] |= used;
            if (n.b >= 0) usedLanes_[n.b] |= used;
        }
    }

    // Depth-first from the outputs: values are computed close to their use.
    void visit(NodeId id, std::vector<char>& visited, std::vector<NodeId>& order) const {
        if (visited[id]) return;
        visited[id] = 1;
        const Node& n = dag_.node(id);
        if (n.a >= 0) visit(n.a, visited, order);
        if (n.b >= 0) visit(n.b, visited, order);
        order.push_back(id);
    }

    // Lane and component of vector slot s.
    int laneOf(int s) const {
        if (o_.mode == EmitMode::Vertical) return dag_.lanes() == 1 ? 0 : s;
        return std::min(s / 2, dag_.lanes() - 1);
    }

    std::string vectorConstant(const std::vector<Real>& v) {
        std::string text = "_mm_setr_" + sfx() + "(";
        for (std::size_t i = 0; i < v.size(); ++i) text += (i ? ", " : "") + literal(v[i], o_.precision);
        text += ")";
        auto it = constantNames_.find(text);
        if (it != constantNames_.end()) return it->second;
        const std::string name = "k" + std::to_string(constantNames_.size());
        constants_ += "    const " + vtype() + " " + name + " = " + text + ";\n";
        constantNames_.emplace(text, name);
        return name;
    }

    template <class F>
    std::string constantFrom(F value) {
        std::vector<Real> v(width());
        for (int s = 0; s < width(); ++s) v[s] = value(laneOf(s), o_.mode == EmitMode::Vertical ? 0 : s % 2);
        return vectorConstant(v);
    }

    std::string var(NodeId id) const { return "v" + std::to_string(id); }
    void line(const std::string& s) { code_ += "    " + s + "\n"; }
    std::string call(const std::string& f, const std::string& a, const std::string& b = "") {
        return "_mm_" + f + "_" + sfx() + "(" + a + (b.empty() ? "" : ", " + b) + ")";
    }
    std::string swapped(const std::string& a) {
        ++counts_.shuffles;
        return f64() ? "_mm_shuffle_pd(" + a + ", " + a + ", 1)" : "_mm_shuffle_ps(" + a + ", " + a + ", 0xB1)";
    }

    std::string srcElement(int e) const { return "(" + o_.src + " + " + std::to_string(e) + ")"; }
    std::string dstElement(int e) const { return "(" + o_.dst + " + " + std::to_string(e) + ")"; }

    std::string vectorLoad(const Node& n) {
        const std::vector<int>& e = dag_.inputElements(n.arg);
        if (o_.mode == EmitMode::Vertical) {
            ++counts_.loads;
            return call(o_.aligned && o_.alignedLoads ? "load" : "loadu", "(const " + std::string(f64() ? "double" : "float") + "*)(" + o_.load(e[0]) + ")");
        }
        if (f64()) {
            ++counts_.loads;
            return call(o_.aligned ? "load" : "loadu", "(const double*)" + srcElement(e[0]));
        }
        const int e0 = e[0], e1 = e.size() > 1 ? e[1] : -1;
        if (e0 >= 0 && e1 == e0 + 1) {
            ++counts_.loads;
            return call(o_.aligned && e0 % 2 == 0 ? "load" : "loadu", "(const float*)" + srcElement(e0));
        }
        std::string v = "_mm_setzero_ps()";
        if (e0 >= 0) ++counts_.loads, v = "_mm_castsi128_ps(_mm_loadl_epi64((const __m128i*)" + srcElement(e0) + "))";
        if (e1 >= 0) ++counts_.loads, v = "_mm_loadh_pi(" + v + ", (const __m64*)" + srcElement(e1) + ")";
        return v;
    }

    void emitVectorNode(NodeId id) {
        const Node& n = dag_.node(id);
        const std::string a = n.a >= 0 ? var(n.a) : "", b = n.b >= 0 ? var(n.b) : "";
        std::string expr;
        switch (n.op) {
            case Op::Input: expr = vectorLoad(n); break;
            case Op::Zero: expr = "_mm_setzero_" + sfx() + "()"; break;
            case Op::Add: ++counts_.arithmetic, expr = call("add", a, b); break;
            case Op::Sub: ++counts_.arithmetic, expr = call("sub", a, b); break;
            case Op::Neg:
                ++counts_.arithmetic;
                expr = call("xor", a, constantFrom([](int, int) { return -0.0L; }));
                break;
            case Op::Scale: {
                const auto& c = dag_.constant(n.arg);
                ++counts_.arithmetic;
                bool signsOnly = true;
                for (const Complex& v : c) signsOnly &= v.real() == 1 || v.real() == -1;
                if (signsOnly)  // per-lane sign flips: exact, and no multiplier needed
                    expr = call("xor", a, constantFrom([&](int l, int) { return c[l].real() < 0 ? -0.0L : 0.0L; }));
                else
                    expr = call("mul", a, constantFrom([&](int l, int) { return c[l].real(); }));
                break;
            }
            case Op::MulI: {
                // i a = (-im, re): swap, then flip the sign of the real part (-i: of the imaginary part).
                const int negPart = n.arg > 0 ? 0 : 1;
                ++counts_.arithmetic;
                expr = call("xor", swapped(a), constantFrom([&](int, int p) { return p == negPart ? -0.0L : 0.0L; }));
                break;
            }
            case Op::CMul: {
                const auto& c = dag_.constant(n.arg);
                const std::string im = constantFrom([&](int l, int p) { return p == 0 ? -c[l].imag() : c[l].imag(); });
                if (isImaginary(c)) {
                    ++counts_.arithmetic;
                    expr = call("mul", swapped(a), im);
                    break;
                }
                const std::string re = constantFrom([&](int l, int) { return c[l].real(); });
                counts_.arithmetic += 3;
                expr = call("add", call("mul", a, re), call("mul", swapped(a), im));
                break;
            }
            case Op::Shuffle: {
                if (o_.mode == EmitMode::Vertical) {
                    // One element per lane: the arg is the shufps/shufpd immediate.
                    if (dag_.lanes() != width()) throw std::logic_error("vertical shuffles need one element per lane");
                    ++counts_.shuffles;
                    expr = "_mm_shuffle_" + sfx() + "(" + a + ", " + b + ", " + std::to_string(n.arg) + ")";
                    break;
                }
                const int la = n.arg & 1, lb = n.arg >> 1;
                const int imm = (2 * la) | ((2 * la + 1) << 2) | ((2 * lb) << 4) | ((2 * lb + 1) << 6);
                ++counts_.shuffles;
                expr = "_mm_shuffle_ps(" + a + ", " + b + ", " + std::to_string(imm) + ")";
                break;
            }
            case Op::Narrow: throw std::logic_error("precision marks need scalar mode");
        }
        line("const " + vtype() + " " + var(id) + " = " + expr + ";");
    }

    // Scalar mode: component p (0 re, 1 im) of node id, widened when wanted.
    std::string ref(NodeId id, int p, bool wide) const {
        std::string name = var(id) + (complexValues() ? (p ? "i" : "r") : "");
        return wide && !dag_.node(id).wide ? "(double)" + name : name;
    }

    void emitScalarNode(NodeId id) {
        const Node& n = dag_.node(id);
        const bool w = n.wide;
        const Precision prec = w ? Precision::F64 : o_.precision;
        const std::string type = w || f64() ? "double" : "float";
        const int parts = complexValues() ? 2 : 1;
        std::string expr[2];
        for (int p = 0; p < parts; ++p) {
            auto A = [&](int q) { return ref(n.a, q, w); };
            auto B = [&](int q) { return ref(n.b, q, w); };
            switch (n.op) {
                case Op::Input: {
                    const int e = dag_.inputElements(n.arg)[0];
                    expr[p] = complexValues() ? o_.src + "[" + std::to_string(e) + "]." + (p ? "im" : "re") : "*(" + o_.load(e) + ")";
                    ++counts_.loads;
                    break;
                }
                case Op::Zero: expr[p] = literal(0, prec); break;
                case Op::Add: ++counts_.arithmetic, expr[p] = A(p) + " + " + B(p); break;
                case Op::Sub: ++counts_.arithmetic, expr[p] = A(p) + " - " + B(p); break;
                case Op::Neg: ++counts_.arithmetic, expr[p] = "-" + A(p); break;
                case Op::Scale:
                    ++counts_.arithmetic;
                    expr[p] = literal(dag_.constant(n.arg)[0].real(), prec) + " * " + A(p);
                    break;
                case Op::MulI: expr[p] = (p == 0) == (n.arg > 0) ? "-" + A(1 - p) : A(1 - p); break;
                case Op::CMul: {
                    const Complex c = dag_.constant(n.arg)[0];
                    if (c.real() == 0) {
                        ++counts_.arithmetic;
                        expr[p] = p == 0 ? literal(-c.imag(), prec) + " * " + A(1) : literal(c.imag(), prec) + " * " + A(0);
                        break;
                    }
                    counts_.arithmetic += 3;
                    expr[p] = p == 0 ? literal(c.real(), prec) + " * " + A(0) + " - " + literal(c.imag(), prec) + " * " + A(1)
                                     : literal(c.real(), prec) + " * " + A(1) + " + " + literal(c.imag(), prec) + " * " + A(0);
                    break;
                }
                case Op::Narrow: ++counts_.arithmetic, expr[p] = "(float)" + A(p); break;
                case Op::Shuffle: throw std::logic_error("shuffle needs vector mode");
            }
        }
        if (n.op == Op::Narrow) {
            line("const float " + ref(id, 0, false) + " = " + expr[0] + (parts > 1 ? ", " + ref(id, 1, false) + " = " + expr[1] : "") + ";");
            return;
        }
        line("const " + type + " " + ref(id, 0, false) + " = " + expr[0] +
             (parts > 1 ? ", " + ref(id, 1, false) + " = " + expr[1] : "") + ";");
    }

    // ---- RealPairs mode ----
    bool wideNode(NodeId id) const { return f64() || dag_.node(id).wide; }
    std::string pairType(bool wide) const { return wide ? "__m128d" : "__m128"; }
    std::string pairCall(const std::string& f, bool wide, const std::string& a, const std::string& b = "") const {
        return "_mm_" + f + "_" + (wide ? "pd" : "ps") + "(" + a + (b.empty() ? "" : ", " + b) + ")";
    }
    std::string pairConstant(Real c0, Real c1, bool wide) {
        const Precision p = wide ? Precision::F64 : Precision::F32;
        const std::string text = wide ? "_mm_setr_pd(" + literal(c0, p) + ", " + literal(c1, p) + ")"
                                      : "_mm_setr_ps(" + literal(c0, p) + ", " + literal(c1, p) + ", 0.0f, 0.0f)";
        auto it = constantNames_.find(text);
        if (it != constantNames_.end()) return it->second;
        const std::string name = "k" + std::to_string(constantNames_.size());
        constants_ += "    const " + pairType(wide) + " " + name + " = " + text + ";\n";
        constantNames_.emplace(text, name);
        return name;
    }
    // Operand x as a value of the wanted width: single-precision values are
    // widened once (cvtps2pd) and the widened copy is reused.
    std::string pairOperand(NodeId x, bool wide) {
        if (!wide || wideNode(x)) return var(x);
        const std::string w = "w" + std::to_string(x);
        if (!widened_.count(x)) {
            widened_.insert(x);
            if (movedWide_[x]) {
                const Node& n = dag_.node(x);
                ++counts_.shuffles;
                line("const __m128d " + w + " = " + wideLaneMove(pairOperand(n.a, true), pairOperand(n.b, true), n.arg) + ";");
                return w;
            }
            ++counts_.arithmetic;
            line("const __m128d " + w + " = _mm_cvtps_pd(" + var(x) + ");");
        }
        return w;
    }
    // Elements e in lanes 0 and 1; a lane without an element that some
    // output needs (bit l of `usedLanes`) holds zero.
    std::string pairLoad(const std::vector<int>& e, int usedLanes) {
        const int e0 = e[0], e1 = e[1];
        if (floatLanes_) return floatLanes_->loadPair(e0, e1, e1 < 0 && (usedLanes & 2));
        auto addr = [&](int i) { return "(" + o_.load(i) + ")"; };
        counts_.loads += (e0 >= 0) + (e1 >= 0 && e1 != e0 + 1);
        if (e0 >= 0 && e1 == e0 + 1) return "_mm_loadu_pd(" + addr(e0) + ")";
        if (e1 < 0) return "_mm_load_sd(" + addr(e0) + ")";
        return "_mm_loadh_pd(" + std::string(e0 >= 0 ? "_mm_load_sd(" + addr(e0) + ")" : "_mm_setzero_pd()") + ", " + addr(e1) + ")";
    }
    void startFloatLanes() {
        std::set<int> in;
        std::vector<std::pair<int, int>> pairs;
        std::map<int, Lane> out;
        for (const Node& n : dag_.nodes())
            if (n.op == Op::Input) {
                const std::vector<int>& e = dag_.inputElements(n.arg);
                pairs.push_back({e[0], e[1]});
                for (int x : e)
                    if (x >= 0) in.insert(x);
            }
        for (const Output& o : dag_.outputs())
            for (int l = 0; l < static_cast<int>(o.elements.size()); ++l)
                if (o.elements[l] >= 0) out[o.elements[l]] = storedLane(o.value, l);
        floatLanes_ = std::make_unique<FloatLanes>([this](const std::string& s) { line(s); }, o_.load, o_.store, o_.scaleVar);
        floatLanes_->setInputs(in, pairs);
        floatLanes_->setOutputs(out);
    }
    void emitPairNode(NodeId id) {
        const Node& n = dag_.node(id);
        const bool wide = wideNode(id);
        std::string expr;
        switch (n.op) {
            case Op::Input: expr = pairLoad(dag_.inputElements(n.arg), usedLanes_[id]); break;
            case Op::Zero: expr = pairCall("setzero", wide, ""); break;
            case Op::Add: ++counts_.arithmetic, expr = pairCall("add", wide, pairOperand(n.a, wide), pairOperand(n.b, wide)); break;
            case Op::Sub: ++counts_.arithmetic, expr = pairCall("sub", wide, pairOperand(n.a, wide), pairOperand(n.b, wide)); break;
            case Op::Neg: ++counts_.arithmetic, expr = pairCall("xor", wide, var(n.a), pairConstant(-0.0L, -0.0L, wide)); break;
            case Op::Scale: {
                const auto& k = dag_.constant(n.arg);
                const Real c0 = k[0].real(), c1 = k[1].real();
                ++counts_.arithmetic;
                if (std::fabs(c0) == 1 && std::fabs(c1) == 1)
                    expr = pairCall("xor", wide, productOperand(id, wide), pairConstant(c0 < 0 ? -0.0L : 0.0L, c1 < 0 ? -0.0L : 0.0L, wide));
                else
                    expr = pairCall("mul", wide, productOperand(id, wide), pairConstant(c0, c1, wide));
                break;
            }
            case Op::Narrow:
                if (movedRounding_[id]) return;
                ++counts_.arithmetic, expr = "_mm_cvtpd_ps(" + var(n.a) + ")";
                break;
            case Op::Shuffle: {
                const int la = n.arg & 1, lb = (n.arg >> 1) & 1;
                if (roundingOfMove_[id]) {
                    ++counts_.arithmetic, ++counts_.shuffles;
                    expr = "_mm_cvtpd_ps(" + wideLaneMove(var(dag_.node(n.a).a), var(dag_.node(n.b).a), n.arg) + ")";
                    break;
                }
                if (wideOnlyMove_[id]) return;
                if (!wide) {  // shuffles counted by floatLanes_
                    expr = floatLanes_->select({var(n.a), la}, {var(n.b), lb});
                    break;
                }
                ++counts_.shuffles;
                expr = wideLaneMove(pairOperand(n.a, true), pairOperand(n.b, true), n.arg);
                break;
            }
            default: throw std::logic_error("RealPairs: unsupported operation");
        }
        line("const " + pairType(wide) + " " + var(id) + " = " + expr + ";");
    }
    void emitPairStore(const Output& out) {
        if (floatLanes_) {  // scaled and stored four neighbours at a time
            for (int l = 0; l < 2; ++l)
                if (out.elements[l] >= 0) floatLanes_->store(out.elements[l], storedLane(out.value, l));
            return;
        }
        std::string v = var(out.value), scale = o_.scaleVar;
        if (signAtStore_[out.value]) {
            v = var(dag_.node(out.value).a);
            const std::vector<bool> negated = laneSigns(out.value);
            scale = signedScale(negated[0], negated[1]);
        }
        if (!scale.empty()) {
            ++counts_.arithmetic;
            const std::string scaled = "o" + std::to_string(out.value);
            line("const __m128d " + scaled + " = _mm_mul_pd(" + v + ", " + scale + ");");
            v = scaled;
        }
        const int e0 = out.elements[0], e1 = out.elements[1];
        auto addr = [&](int i) { return "(" + o_.store(i) + ")"; };
        if (e0 >= 0 && e1 == e0 + 1) return ++counts_.stores, line("_mm_storeu_pd(" + addr(e0) + ", " + v + ");");
        if (e0 >= 0) ++counts_.stores, line("_mm_store_sd(" + addr(e0) + ", " + v + ");");
        if (e1 >= 0) ++counts_.stores, line("_mm_storeh_pd(" + addr(e1) + ", " + v + ");");
    }

    // The double-precision scale factor with the given lanes negated, made once.
    std::string signedScale(bool negate0, bool negate1) {
        const std::string name = o_.scaleVar + "n" + std::to_string(negate0 | negate1 << 1);
        if (signedScales_.insert(name).second) {
            ++counts_.arithmetic;
            line("const __m128d " + name + " = _mm_xor_pd(" + o_.scaleVar + ", " + pairConstant(negate0 ? -0.0L : 0.0L, negate1 ? -0.0L : 0.0L, true) + ");");
        }
        return name;
    }

    void emitNode(NodeId id) {
        if (signAtStore_[id]) return;
        const long before = counts_.arithmetic;
        if (o_.mode == EmitMode::RealPairs) return emitPairNode(id);
        vector() ? emitVectorNode(id) : emitScalarNode(id);
        if (dag_.lanes() == 2 && o_.mode == EmitMode::ComplexVector && usedLanes_[id] != 3)
            counts_.oneLane += counts_.arithmetic - before;
    }

    void emitStore(const Output& out) {
        if (o_.mode == EmitMode::RealPairs) return emitPairStore(out);
        if (!vector()) {
            const int e = out.elements[0];
            const std::string s = o_.scaleVar.empty() ? "" : " * " + o_.scaleVar;
            if (complexValues()) {
                line(o_.dst + "[" + std::to_string(e) + "].re = " + ref(out.value, 0, false) + s + ";");
                line(o_.dst + "[" + std::to_string(e) + "].im = " + ref(out.value, 1, false) + s + ";");
                counts_.stores += 2, counts_.arithmetic += o_.scaleVar.empty() ? 0 : 2;
            } else {
                line("*(" + o_.store(e) + ") = " + ref(out.value, 0, false) + s + ";");
                counts_.stores += 1, counts_.arithmetic += o_.scaleVar.empty() ? 0 : 1;
            }
            return;
        }
        std::string v = var(out.value);
        if (!o_.scaleVar.empty()) {
            ++counts_.arithmetic;
            const std::string scaled = "o" + std::to_string(out.value);
            line("const " + vtype() + " " + scaled + " = " + call("mul", v, o_.scaleVar) + ";");
            v = scaled;
        }
        const std::vector<int>& e = out.elements;
        if (o_.mode == EmitMode::Vertical) {
            ++counts_.stores;
            line(call(o_.aligned && o_.alignedStores ? "store" : "storeu", "(" + std::string(f64() ? "double" : "float") + "*)(" + o_.store(e[0]) + ")", v) + ";");
            return;
        }
        if (f64()) {
            ++counts_.stores;
            line(call(o_.aligned ? "store" : "storeu", "(double*)" + dstElement(e[0]), v) + ";");
            return;
        }
        const int e0 = e[0], e1 = e.size() > 1 ? e[1] : -1;
        if (e0 >= 0 && e1 == e0 + 1) {
            ++counts_.stores;
            line(call(o_.aligned && e0 % 2 == 0 ? "store" : "storeu", "(float*)" + dstElement(e0), v) + ";");
            return;
        }
        if (e0 >= 0) ++counts_.stores, line("_mm_storel_pi((__m64*)" + dstElement(e0) + ", " + v + ");");
        if (e1 >= 0) ++counts_.stores, line("_mm_storeh_pi((__m64*)" + dstElement(e1) + ", " + v + ");");
    }

    const Dag& dag_;
    const EmitOptions& o_;
    std::string constants_, code_;
    std::map<std::string, std::string> constantNames_;
    OpCounts counts_;
    std::vector<int> usedLanes_;
    std::set<NodeId> widened_;
    // see markLaneMovesInDouble: moves made as one rounding, the roundings
    // they take in, moves widened as a move of widened values, and of those
    // the ones no single-precision operation takes
    std::vector<char> roundingOfMove_, movedRounding_, movedWide_, wideOnlyMove_;
    std::unique_ptr<FloatLanes> floatLanes_;  // single-precision RealPairs memory and lane moves
    std::vector<char> signAtStore_;           // see markSignsAtStores
    std::set<std::string> signedScales_;      // the signed scale factors made so far
    std::map<NodeId, std::string> runCopy_;   // product -> the copy of its operand it takes (markProductRuns)
    std::map<NodeId, std::string> runStart_;  // the first product of each run -> that copy
};

}  // namespace

EmitResult emitBody(const Dag& dag, const EmitOptions& options) { return Emitter(dag, options).run(); }

}  // namespace kfpg::gen
