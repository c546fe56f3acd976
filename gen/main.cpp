// kfpg_gen <family> <output dir> <parts>: generates one family's kernels.
#include <cstdio>
#include <exception>
#include <string>

#include "family.h"

namespace kfpg::gen {

namespace {
std::vector<GenFamily>& list() {
    static std::vector<GenFamily> all;
    return all;
}
}  // namespace

bool registerFamily(GenFamily family) {
    list().push_back(std::move(family));
    return true;
}

const std::vector<GenFamily>& registeredFamilies() { return list(); }

}  // namespace kfpg::gen

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fprintf(stderr, "usage: kfpg_gen <family> <output dir> <parts>\n");
        return 2;
    }
    const std::string name = argv[1];
    for (const auto& family : kfpg::gen::registeredFamilies()) {
        if (family.name != name) continue;
        try {
            kfpg::gen::SourceSet out(name, std::stoi(argv[3]));
            family.generate(out);
            out.write(argv[2]);
        } catch (const std::exception& e) {
            std::fprintf(stderr, "kfpg_gen %s: %s\n", name.c_str(), e.what());
            return 1;
        }
        return 0;
    }
    std::fprintf(stderr, "kfpg_gen: unknown family %s\n", name.c_str());
    return 2;
}
