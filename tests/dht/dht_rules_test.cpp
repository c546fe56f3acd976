// Exact rules of the Hartley kernels: statuses and their order, output
// untouched on failure, the same bits in place and at every element offset,
// nothing touched beyond the N elements, and the generic entries.
#include <cstring>

#include "buffers.h"
#include "dht_cases.h"

namespace {

using namespace kfpg::test;
using namespace kfpg::test::dht;

class DhtRules : public ::testing::TestWithParam<Case> {};

TEST_P(DhtRules, BadFlagsAndNullPointersFailInOrderAndWriteNothing) {
    const Case c = GetParam();
    withPrecision(c, [&](auto tag) {
        using T = decltype(tag);
        const auto kernel = Kernels<T>::sized(c.n);
        const auto x = randomInput<T>(c.n, 3u);
        OffsetArray<T> dst(c.n, 0);
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

TEST_P(DhtRules, EveryElementOffsetAndInPlaceGiveIdenticalBits) {
    const Case c = GetParam();
    withPrecision(c, [&](auto tag) {
        using T = decltype(tag);
        const auto kernel = Kernels<T>::sized(c.n);
        const auto x = randomInput<T>(c.n, 11u + c.n);
        for (int flag : kFlags) {
            const auto want = run(x, flag);
            for (std::size_t srcOffset = 0; srcOffset < 16; srcOffset += sizeof(T))
                for (std::size_t dstOffset = 0; dstOffset < 16; dstOffset += sizeof(T)) {
                    OffsetArray<T> src(c.n, srcOffset), dst(c.n, dstOffset);
                    src.assign(x);
                    ASSERT_EQ(kernel(src.data(), dst.data(), flag), StatusOk);
                    EXPECT_EQ(bytesOf(dst.data(), c.n), bytesOf(want.data(), c.n)) << "offsets " << srcOffset << ", " << dstOffset;
                }
            for (std::size_t offset = 0; offset < 16; offset += sizeof(T)) {
                OffsetArray<T> buf(c.n, offset);
                buf.assign(x);
                ASSERT_EQ(kernel(buf.data(), buf.data(), flag), StatusOk);
                EXPECT_EQ(bytesOf(buf.data(), c.n), bytesOf(want.data(), c.n)) << "in place, offset " << offset;
            }
        }
    });
}

// Arrays that end exactly at an inaccessible page: a read or write past the
// last element faults; the element in front of the output stays untouched.
TEST_P(DhtRules, TouchesNothingBeyondItsArrays) {
    const Case c = GetParam();
    withPrecision(c, [&](auto tag) {
        using T = decltype(tag);
        const auto x = randomInput<T>(c.n, 21u);
        GuardedBlock src(c.n * sizeof(T)), dst(c.n * sizeof(T), sizeof(T));
        std::memcpy(src.data(), x.data(), c.n * sizeof(T));
        auto* out = reinterpret_cast<T*>(dst.data() + sizeof(T));
        ASSERT_EQ(Kernels<T>::sized(c.n)(reinterpret_cast<const T*>(src.data()), out, ScaleNone), StatusOk);
        EXPECT_EQ(bytesOf(out, c.n), bytesOf(run(x).data(), c.n));
        for (std::size_t b = 0; b < sizeof(T); ++b) EXPECT_EQ(dst.data()[b], kSentinel);
    });
}

TEST_P(DhtRules, GenericEntryEqualsTheSizedKernel) {
    const Case c = GetParam();
    withPrecision(c, [&](auto tag) {
        using T = decltype(tag);
        const auto x = randomInput<T>(c.n, 13u);
        for (int flag : {int{ScaleFwdByN}, int{ScaleInvByN}, int{ScaleBySqrtN}, int{ScaleNone}, 0, 3}) {
            OffsetArray<T> a(c.n, 0), b(c.n, 0);
            EXPECT_EQ(Kernels<T>::generic(x.data(), a.data(), c.n, flag), Kernels<T>::sized(c.n)(x.data(), b.data(), flag));
            EXPECT_EQ(bytesOf(a.data(), c.n), bytesOf(b.data(), c.n));
        }
        EXPECT_EQ(Kernels<T>::generic(nullptr, nullptr, c.n, ScaleNone), StatusNullPointer);
        EXPECT_EQ(Kernels<T>::generic(x.data(), nullptr, c.n, 0), StatusNullPointer);
    });
}

INSTANTIATE_TEST_SUITE_P(AllKernels, DhtRules, ::testing::ValuesIn(allCases()), caseName);

TEST(DhtGeneric, LengthIsCheckedBeforeEverythingElse) {
    for (int len : {1, 0, -1, 65, 2147483647, -2147483647 - 1}) {
        float f[66];
        double d[66];
        std::memset(f, 0xA5, sizeof f);
        std::memset(d, 0xA5, sizeof d);
        EXPECT_EQ(kfpgHartley_32f(nullptr, nullptr, len, 0), StatusSizeError);
        EXPECT_EQ(kfpgHartley_32f(f, f, len, ScaleNone), StatusSizeError);
        EXPECT_EQ(kfpgHartley_64f(nullptr, d, len, 3), StatusSizeError);
        EXPECT_EQ(kfpgHartley_64f(d, d, len, ScaleNone), StatusSizeError);
        EXPECT_EQ(bytesOf(f, 66), std::vector<unsigned char>(66 * sizeof(float), 0xA5));
        EXPECT_EQ(bytesOf(d, 66), std::vector<unsigned char>(66 * sizeof(double), 0xA5));
    }
}

}  // namespace
