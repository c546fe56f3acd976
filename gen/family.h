// Registry of generated families: each families/<name>.cpp registers itself
// with a static initialiser and kfpg_gen runs the one named on its command line.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "source_set.h"

namespace kfpg::gen {

struct GenFamily {
    std::string name;
    std::function<void(SourceSet&)> generate;
};

bool registerFamily(GenFamily family);
const std::vector<GenFamily>& registeredFamilies();

}  // namespace kfpg::gen
