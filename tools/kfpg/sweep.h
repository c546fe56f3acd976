// `kfpg sweep [family...]`: every kernel of the families that offer a sweep,
// timed at every placement of placement.h in interleaved rounds, taking each
// placement's fastest round (a placement's cost is fixed; other work on the
// machine only adds time); a kernel whose placements spread by more than 10%
// is measured again on newly allocated arrays, up to three passes, each
// placement keeping its fastest time. Prints per kernel the fastest and the slowest
// placement and their ratio, and for kernels with misaligned placements the
// best misaligned time over the best aligned one; writes every placement's
// time to sweep.csv in `folder`.
#pragma once

#include <string>
#include <vector>

namespace kfpg::tool {

int runSweep(const std::vector<std::string>& names, const std::string& folder);

}  // namespace kfpg::tool
