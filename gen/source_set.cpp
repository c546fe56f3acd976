#include "source_set.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace kfpg::gen {

namespace {

void writeIfChanged(const std::string& path, const std::string& text) {
    std::ifstream in(path, std::ios::binary);
    if (in) {
        std::stringstream old;
        old << in.rdbuf();
        if (old.str() == text) return;
    }
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << text;
    if (!out) throw std::runtime_error("cannot write " + path);
}

}  // namespace

SourceSet::SourceSet(std::string family, int parts) : family_(std::move(family)), parts_(std::max(1, parts)) {}

void SourceSet::add(std::string code, long cost) { groups_.push_back({std::move(code), cost}); }

void SourceSet::write(const std::string& dir) const {
    // Largest groups first, each into the currently lightest file.
    std::vector<std::size_t> order(groups_.size());
    for (std::size_t i = 0; i < order.size(); ++i) order[i] = i;
    std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) { return groups_[a].cost > groups_[b].cost; });
    std::vector<long> load(parts_, 0);
    std::vector<std::string> text(parts_, preamble_);
    for (std::size_t i : order) {
        const int part = static_cast<int>(std::min_element(load.begin(), load.end()) - load.begin());
        load[part] += groups_[i].cost;
        text[part] += "\n" + groups_[i].code;
    }
    for (int p = 0; p < parts_; ++p) writeIfChanged(dir + "/" + family_ + "_" + std::to_string(p) + ".cpp", text[p]);
    std::string table;
    for (const std::string& l : report_) table += l + "\n";
    writeIfChanged(dir + "/" + family_ + "_ops.txt", table);
    std::fputs(table.c_str(), stdout);
}

}  // namespace kfpg::gen
