#include "registry.h"

namespace kfpg::tool {

namespace {
std::vector<Family>& list() {
    static std::vector<Family> all;
    return all;
}
}  // namespace

bool addFamily(Family family) {
    list().push_back(std::move(family));
    return true;
}

const std::vector<Family>& families() { return list(); }

}  // namespace kfpg::tool
