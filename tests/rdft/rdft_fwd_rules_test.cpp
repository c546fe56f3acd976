// Exact rules of the forward real DFT kernels: statuses and their order,
// output untouched on failure, the same bits in place and at every element
// offset, exactly the layout's elements written, and the generic entries.
#include <cstring>

#include "buffers.h"
#include "rdft_fwd_cases.h"

namespace {

using namespace kfpg::test;
using namespace kfpg::test::rdft;

class RdftFwdRules : public ::testing::TestWithParam<Case> {};

TEST_P(RdftFwdRules, BadFlagsAndNullPointersFailInOrderAndWriteNothing) {
    const Case c = GetParam();
    withPrecision(c, [&](auto tag) {
        using T = decltype(tag);
        const auto kernel = Kernels<T>::sized(c.n, c.layout);
        const auto x = randomInput<T>(c.n, 3u);
        OffsetArray<T> dst(c.packedCount(), 0);
        for (int flag : kBadFlags) {
            EXPECT_EQ(kernel(x.data(), dst.data(), flag), StatusFlagError) << flag;
            EXPECT_TRUE(dst.allBytesAre(kSentinel));
        }
        for (int flag : {int{ScaleNone}, 0, -1}) {
            EXPECT_EQ(kernel(nullptr, dst.data(), flag), StatusNullPointer);
            EXPECT_EQ(kernel(x.data(), nullptr, flag), StatusNullPointer);
            EXPECT_EQ(kernel(nullptr, nullptr, flag), StatusNullPointer);
            EXPECT_TRUE(dst.allBytesAre(kSentinel));
        }
    });
}

TEST_P(RdftFwdRules, EveryElementOffsetAndInPlaceGiveIdenticalBits) {
    const Case c = GetParam();
    withPrecision(c, [&](auto tag) {
        using T = decltype(tag);
        const auto kernel = Kernels<T>::sized(c.n, c.layout);
        const auto x = randomInput<T>(c.n, 11u + c.n);
        for (int flag : kFlags) {
            std::vector<T> want(c.packedCount());
            ASSERT_EQ(kernel(x.data(), want.data(), flag), StatusOk);
            for (std::size_t srcOffset = 0; srcOffset < 16; srcOffset += sizeof(T))
                for (std::size_t dstOffset = 0; dstOffset < 16; dstOffset += sizeof(T)) {
                    OffsetArray<T> src(c.n, srcOffset), dst(c.packedCount(), dstOffset);
                    src.assign(x);
                    ASSERT_EQ(kernel(src.data(), dst.data(), flag), StatusOk);
                    EXPECT_EQ(bytesOf(dst.data(), c.packedCount()), bytesOf(want.data(), c.packedCount()))
                        << "offsets " << srcOffset << ", " << dstOffset;
                }
            for (std::size_t offset = 0; offset < 16; offset += sizeof(T)) {
                OffsetArray<T> buf(c.packedCount(), offset);
                buf.assign(x);
                ASSERT_EQ(kernel(buf.data(), buf.data(), flag), StatusOk);
                EXPECT_EQ(bytesOf(buf.data(), c.packedCount()), bytesOf(want.data(), c.packedCount())) << "in place, offset " << offset;
            }
        }
    });
}

// Arrays that end exactly at an inaccessible page: a read past the input's
// last element or a write past the layout's last element faults.
TEST_P(RdftFwdRules, TouchesNothingBeyondItsArrays) {
    const Case c = GetParam();
    withPrecision(c, [&](auto tag) {
        using T = decltype(tag);
        const auto x = randomInput<T>(c.n, 21u);
        GuardedBlock src(c.n * sizeof(T)), dst(c.packedCount() * sizeof(T));
        std::memcpy(src.data(), x.data(), c.n * sizeof(T));
        auto* out = reinterpret_cast<T*>(dst.data());
        ASSERT_EQ(Kernels<T>::sized(c.n, c.layout)(reinterpret_cast<const T*>(src.data()), out, ScaleNone), StatusOk);
        EXPECT_LT(kfpg::ref::relativeL2(out, expected(c, x.data(), ScaleNone)), Kernels<T>::bound);
        // One element more in front of the output: the kernel must leave it alone.
        GuardedBlock wide(c.packedCount() * sizeof(T), sizeof(T));
        ASSERT_EQ(Kernels<T>::sized(c.n, c.layout)(x.data(), reinterpret_cast<T*>(wide.data() + sizeof(T)), ScaleNone), StatusOk);
        for (std::size_t b = 0; b < sizeof(T); ++b) EXPECT_EQ(wide.data()[b], kSentinel);
    });
}

TEST_P(RdftFwdRules, GenericEntryEqualsTheSizedKernel) {
    const Case c = GetParam();
    withPrecision(c, [&](auto tag) {
        using T = decltype(tag);
        const auto x = randomInput<T>(c.n, 13u);
        for (int flag : {int{ScaleFwdByN}, int{ScaleInvByN}, int{ScaleBySqrtN}, int{ScaleNone}, 0, 3}) {
            OffsetArray<T> a(c.packedCount(), 0), b(c.packedCount(), 0);
            EXPECT_EQ(Kernels<T>::generic(c.layout)(x.data(), a.data(), c.n, flag),
                      Kernels<T>::sized(c.n, c.layout)(x.data(), b.data(), flag));
            EXPECT_EQ(bytesOf(a.data(), c.packedCount()), bytesOf(b.data(), c.packedCount()));
        }
        EXPECT_EQ(Kernels<T>::generic(c.layout)(nullptr, nullptr, c.n, ScaleNone), StatusNullPointer);
    });
}

INSTANTIATE_TEST_SUITE_P(AllKernels, RdftFwdRules, ::testing::ValuesIn(allCases()), caseName);

TEST(RdftFwdGeneric, LengthIsCheckedBeforeEverythingElse) {
    for (Layout layout : {Layout::CCS, Layout::Pack, Layout::Perm})
        for (int len : {1, 0, -1, 65, 2147483647, -2147483647 - 1}) {
            float f[66];
            double d[66];
            std::memset(f, 0xA5, sizeof f);
            EXPECT_EQ(Kernels<float>::generic(layout)(nullptr, nullptr, len, 0), StatusSizeError);
            EXPECT_EQ(Kernels<float>::generic(layout)(f, f, len, ScaleNone), StatusSizeError);
            EXPECT_EQ(Kernels<double>::generic(layout)(nullptr, d, len, 3), StatusSizeError);
            const auto* bytes = reinterpret_cast<const unsigned char*>(f);
            for (std::size_t i = 0; i < sizeof f; ++i) ASSERT_EQ(bytes[i], 0xA5);
        }
}

}  // namespace
