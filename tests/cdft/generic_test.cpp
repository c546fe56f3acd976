// The generic complex DFT entries: length errors before anything else, and
// otherwise exactly the sized kernel's status and output.
#include <climits>
#include <cstring>

#include "buffers.h"
#include "cdft_cases.h"

namespace {

using namespace kfpg::test;
using namespace kfpg::test::cdft;

class CdftGeneric : public ::testing::TestWithParam<Case> {};

TEST_P(CdftGeneric, ForwardsToTheSizedKernelBitForBit) {
    const Case c = GetParam();
    withPrecision(c, [&](auto tag) {
        using C = decltype(tag);
        const auto sized = Kernels<C>::sized(c.n, c.inverse);
        const auto generic = Kernels<C>::generic(c.inverse);
        const auto x = randomInput<C>(c.n, 21u + c.n);
        for (int flag : {int{ScaleFwdByN}, int{ScaleInvByN}, int{ScaleBySqrtN}, int{ScaleNone}, 0, 3, -1})
            for (std::size_t offset : {0u, 8u}) {
                OffsetArray<C> src(c.n, offset), a(c.n, offset), b(c.n, offset);
                std::memcpy(src.data(), x.data(), c.n * sizeof(C));
                EXPECT_EQ(generic(src.data(), a.data(), c.n, flag), sized(src.data(), b.data(), flag)) << flag;
                EXPECT_EQ(std::memcmp(a.data(), b.data(), c.n * sizeof(C)), 0) << flag;
                EXPECT_EQ(generic(nullptr, a.data(), c.n, flag), sized(nullptr, b.data(), flag));
                EXPECT_EQ(generic(src.data(), nullptr, c.n, flag), sized(src.data(), nullptr, flag));
            }
    });
}

INSTANTIATE_TEST_SUITE_P(AllLengths, CdftGeneric, ::testing::ValuesIn(allCases()), caseName);

template <class C>
void expectLengthErrorsFirst(bool inverse) {
    const auto generic = Kernels<C>::generic(inverse);
    OffsetArray<C> src(64, 0), dst(64, 0);
    for (int len : {1, 0, -1, 65, 66, INT_MAX, INT_MIN})
        for (int flag : {int{ScaleNone}, 0, 3}) {
            EXPECT_EQ(generic(src.data(), dst.data(), len, flag), StatusSizeError) << len;
            EXPECT_EQ(generic(nullptr, dst.data(), len, flag), StatusSizeError) << len;
            EXPECT_EQ(generic(src.data(), nullptr, len, flag), StatusSizeError) << len;
            EXPECT_TRUE(dst.allBytesAre(kSentinel));
        }
}

TEST(CdftGenericLength, OutsideTwoToSixtyFourIsASizeErrorBeforeAnyOtherCheck) {
    for (bool inverse : {false, true}) {
        expectLengthErrorsFirst<kfp32fc>(inverse);
        expectLengthErrorsFirst<kfp64fc>(inverse);
    }
}

}  // namespace
