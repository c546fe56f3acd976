// Where the sweep puts a kernel's arrays. The L1 cache set and 4 KB store
// aliasing of an address depend on its offset within a 4 KB page, so each
// placement fixes every array's offset modulo 4 KB: the destination at a
// spread of offsets from the source, any further array at a spread from the
// destination, in and out of place, 16-byte aligned and misaligned.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "registry.h"

namespace kfpg::tool {

struct Placement {
    std::vector<std::size_t> offsets;  // per array, bytes past a 4 KB boundary
    bool inPlace = false;              // the destination is the source
    bool misaligned = false;           // the source or the destination is off 16 bytes
    std::string label;                 // e.g. "dst@src+1024 a2@dst+0 src+4"
};

std::vector<Placement> placementsFor(const std::vector<SweepArray>& arrays);

// The memory of one placement: each array in its own page-aligned block at
// its offset.
class PlacedArrays {
public:
    PlacedArrays(const std::vector<SweepArray>& arrays, const Placement& placement);
    const std::vector<unsigned char*>& at() const { return at_; }

private:
    struct Free {
        void operator()(unsigned char* p) const;
    };
    std::vector<std::unique_ptr<unsigned char, Free>> blocks_;
    std::vector<unsigned char*> at_;
};

}  // namespace kfpg::tool
