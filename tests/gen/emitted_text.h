// Counting what emitted kernel text contains.
#pragma once

#include <cstddef>
#include <string>

inline std::size_t occurrences(const std::string& text, const std::string& what) {
    std::size_t n = 0;
    for (auto at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++n;
    return n;
}
