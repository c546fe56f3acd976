#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "kfpcore.h"
#include "kfpgen.h"

namespace {

TEST(Version, RecordMatchesThisBuild) {
    const LibVersion* v = kfpgenGetLibVersion();
    ASSERT_NE(v, nullptr);
    EXPECT_EQ(v->major, 6);
    EXPECT_EQ(v->minor, 1);
    EXPECT_EQ(v->majorBuild, 137);
    EXPECT_EQ(v->build, 336);
    EXPECT_EQ(std::memcmp(v->targetCpu, "y8\0\0", 4), 0);
    EXPECT_STREQ(v->version, "6.1 build 137.56");
    EXPECT_STREQ(v->buildDate, "Mar 17 2010");
}

TEST(Version, NameCarriesPlusExactlyWhenFeature0x80IsPresent) {
    const LibVersion* v = kfpgenGetLibVersion();
    const std::string expected = ownGetFeature(0x80) ? "libkfpgeny8.so.6.1+" : "libkfpgeny8.so.6.1";
    EXPECT_EQ(v->name, expected);
    EXPECT_EQ(kfpgenGetLibVersion(), v) << "the same record on every call";
}

TEST(Core, MallocAlignsAndRejectsNonPositiveSizes) {
    for (int bytes : {1, 15, 16, 17, 1000, 73728}) {
        void* p = kfpMalloc(bytes);
        ASSERT_NE(p, nullptr);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(p) % 16, 0u);
        std::memset(p, 0x5a, static_cast<std::size_t>(bytes));
        kfpFree(p);
    }
    EXPECT_EQ(kfpMalloc(0), nullptr);
    EXPECT_EQ(kfpMalloc(-4), nullptr);
    kfpFree(nullptr);
}

TEST(Core, FeatureQueryReportsTheX86_64Baseline) {
    EXPECT_NE(ownGetFeature(KFP_FEATURE_SSE2), 0);
    EXPECT_NE(ownGetFeature(KFP_FEATURE_SSE | KFP_FEATURE_SSE2), 0);
    EXPECT_EQ(ownGetFeature(0), 0);
    // A combined mask holds only when every part holds.
    EXPECT_EQ(ownGetFeature(KFP_FEATURE_SSE2 | KFP_FEATURE_AVX512F) != 0, ownGetFeature(KFP_FEATURE_AVX512F) != 0);
}

}  // namespace
