#include "placement.h"

#include <cstdlib>

namespace kfpg::tool {

namespace {

constexpr std::size_t kPage = 4096;
// Offsets modulo 4 KB between two arrays: the same set and the same 4 KB
// alias (0), the same sets one vector apart (16), the neighbouring set (64),
// the other quarters of the page and the set below (4032).
constexpr std::size_t kSpread[] = {0, 16, 64, 1024, 2048, 3072, 4032};
// The fewer offsets tried with misaligned arrays.
constexpr std::size_t kMisalignedSpread[] = {0, 16, 1024};

std::string offsetText(const char* name, const char* from, std::size_t offset) {
    return std::string(name) + "@" + from + "+" + std::to_string(offset);
}

struct Builder {
    const std::vector<SweepArray>& arrays;
    std::vector<Placement> out;

    // Source at page offset 0; `srcOff`/`dstOff` say which of the two are misaligned.
    void add(std::size_t dstFromSrc, std::size_t extraFromDst, bool inPlace, bool srcOff, bool dstOff) {
        Placement p;
        p.inPlace = inPlace;
        p.misaligned = srcOff || dstOff;
        const std::size_t src = srcOff ? arrays[0].misalignBy : 0;
        const std::size_t dstBase = inPlace ? 0 : dstFromSrc % kPage;
        const std::size_t dst = dstBase + (dstOff ? arrays[1].misalignBy : 0);
        p.offsets = {src, inPlace ? src : dst};
        p.label = inPlace ? "in place" : offsetText("dst", "src", dstFromSrc);
        for (std::size_t i = 2; i < arrays.size(); ++i) {
            p.offsets.push_back((dstBase + extraFromDst) % kPage);
            p.label += " " + offsetText(("a" + std::to_string(i)).c_str(), "dst", extraFromDst);
        }
        if (srcOff) p.label += " src+" + std::to_string(arrays[0].misalignBy);
        if (dstOff && !inPlace) p.label += " dst+" + std::to_string(arrays[1].misalignBy);
        out.push_back(p);
    }
};

}  // namespace

std::vector<Placement> placementsFor(const std::vector<SweepArray>& arrays) {
    Builder b{arrays, {}};
    const bool extra = arrays.size() > 2;
    const std::vector<std::size_t> none{0};
    const std::vector<std::size_t> all(std::begin(kSpread), std::end(kSpread));
    const std::vector<std::size_t> few(std::begin(kMisalignedSpread), std::end(kMisalignedSpread));
    for (std::size_t d : all)
        for (std::size_t e : extra ? all : none) b.add(d, e, false, false, false);
    for (std::size_t e : extra ? all : none) b.add(0, e, true, false, false);
    if (arrays[0].misalignBy == 0) return b.out;
    for (auto [srcOff, dstOff] : {std::pair{true, false}, std::pair{false, true}, std::pair{true, true}})
        for (std::size_t d : few)
            for (std::size_t e : extra ? few : none) b.add(d, e, false, srcOff, dstOff);
    for (std::size_t e : extra ? few : none) b.add(0, e, true, true, true);
    return b.out;
}

void PlacedArrays::Free::operator()(unsigned char* p) const { std::free(p); }

PlacedArrays::PlacedArrays(const std::vector<SweepArray>& arrays, const Placement& placement) {
    for (std::size_t i = 0; i < arrays.size(); ++i) {
        if (i == 1 && placement.inPlace) {
            at_.push_back(at_[0]);
            continue;
        }
        const std::size_t bytes = (placement.offsets[i] + arrays[i].bytes + kPage - 1) / kPage * kPage;
        blocks_.emplace_back(static_cast<unsigned char*>(std::aligned_alloc(kPage, bytes)));
        at_.push_back(blocks_.back().get() + placement.offsets[i]);
    }
}

}  // namespace kfpg::tool
