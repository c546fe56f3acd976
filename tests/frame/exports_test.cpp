// The shared library exports exactly the functions of the families this build
// implements, each of them declared in the public header, and nothing else.
#include <gtest/gtest.h>

#include <cstdio>
#include <regex>
#include <set>
#include <sstream>
#include <string>

namespace {

std::string run(const std::string& command) {
    std::string out;
    FILE* pipe = popen(command.c_str(), "r");
    if (!pipe) return out;
    char buf[4096];
    std::size_t n;
    while ((n = fread(buf, 1, sizeof buf, pipe)) > 0) out.append(buf, n);
    pclose(pipe);
    return out;
}

std::set<std::string> headerFunctions() {
    const std::string text = run(std::string(KFPG_C_COMPILER) + " -std=c99 -E -P " + KFPG_HEADER_PATH);
    std::set<std::string> names;
    const std::regex decl(R"(\b(kfpg[A-Za-z0-9_]*)\s*\()");
    for (auto it = std::sregex_iterator(text.begin(), text.end(), decl); it != std::sregex_iterator(); ++it)
        names.insert((*it)[1]);
    return names;
}

std::set<std::string> exportedSymbols() {
    const std::string text = run(std::string("nm -D --defined-only ") + KFPG_LIBRARY_PATH);
    std::set<std::string> names;
    std::istringstream lines(text);
    std::string addr, type, name;
    while (lines >> addr >> type >> name) names.insert(name.substr(0, name.find('@')));
    return names;
}

// Which family a public name belongs to; generic entries go with their kernels.
std::string familyOf(const std::string& name) {
    static const std::regex cdft("kfpgDFT(Fwd|Inv)_CToC_.*");
    static const std::regex rdftFwd("kfpgDFTFwd_RTo.*");
    static const std::regex rdftInv("kfpgDFTInv_(Perm|Pack|CCS)ToR.*");
    if (name == "kfpgenGetLibVersion") return "frame";
    if (std::regex_match(name, cdft)) return "cdft";
    if (std::regex_match(name, rdftFwd)) return "rdft-fwd";
    if (std::regex_match(name, rdftInv)) return "rdft-inv";
    if (name.rfind("kfpgHartley", 0) == 0) return "dht";
    if (name.rfind("kfpgWHT", 0) == 0) return "wht";
    if (name.rfind("kfpgDCT4", 0) == 0) return "dct4";
    return "unknown";
}

std::set<std::string> builtFamilies() {
    std::set<std::string> out;
    std::istringstream list(KFPG_FAMILY_LIST);
    std::string item;
    while (std::getline(list, item, ',')) out.insert(item);
    return out;
}

TEST(Exports, HeaderDeclaresAllFunctionsOfEveryFamily) {
    const auto names = headerFunctions();
    EXPECT_EQ(names.size(), 1193u);
    for (const auto& n : names) EXPECT_NE(familyOf(n), "unknown") << n;
}

TEST(Exports, LibraryExportsExactlyTheBuiltFamilies) {
    const auto declared = headerFunctions();
    const auto families = builtFamilies();
    std::set<std::string> expected;
    for (const auto& n : declared)
        if (families.count(familyOf(n))) expected.insert(n);
    const auto exported = exportedSymbols();
    ASSERT_FALSE(exported.empty()) << "nm found no symbols in " << KFPG_LIBRARY_PATH;
    for (const auto& n : exported) EXPECT_TRUE(expected.count(n)) << "exported but not expected: " << n;
    for (const auto& n : expected) EXPECT_TRUE(exported.count(n)) << "declared but not exported: " << n;
}

}  // namespace
