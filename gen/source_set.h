// Collects the functions a family generates, spreads them over several
// translation units (so the library builds in parallel) and keeps the
// per-kernel operation table.
#pragma once

#include <string>
#include <vector>

namespace kfpg::gen {

class SourceSet {
public:
    SourceSet(std::string family, int parts);

    // Text at the top of every file (includes, shared helpers).
    void setPreamble(std::string text) { preamble_ = std::move(text); }
    // A group of functions that stays in one file; `cost` balances the files.
    void add(std::string code, long cost);
    // One line of the operation table (header line first).
    void reportLine(std::string line) { report_.push_back(std::move(line)); }

    // Writes <family>_0.cpp .. <family>_<parts-1>.cpp and <family>_ops.txt
    // into dir (files whose content did not change are left alone) and
    // prints the operation table.
    void write(const std::string& dir) const;

private:
    std::string family_;
    int parts_;
    std::string preamble_;
    struct Group {
        std::string code;
        long cost;
    };
    std::vector<Group> groups_;
    std::vector<std::string> report_;
};

}  // namespace kfpg::gen
