// Exact rules of the complex DFT kernels: statuses and their order, output
// untouched on failure, aligned = unaligned and in-place = out-of-place bit
// for bit, and no access outside the two arrays.
#include <cstring>

#include "buffers.h"
#include "cdft_cases.h"

namespace {

using namespace kfpg::test;
using namespace kfpg::test::cdft;

class CdftRules : public ::testing::TestWithParam<Case> {};

TEST_P(CdftRules, BadFlagsAndNullPointersFailInOrderAndWriteNothing) {
    const Case c = GetParam();
    withPrecision(c, [&](auto tag) {
        using C = decltype(tag);
        const auto kernel = Kernels<C>::sized(c.n, c.inverse);
        const auto x = randomInput<C>(c.n, 3u);
        // Aligned and misaligned (8 bytes past a 16-byte boundary) arrays reach both paths.
        for (std::size_t offset : {0u, 8u}) {
            OffsetArray<C> src(c.n, offset), dst(c.n, offset);
            std::memcpy(src.data(), x.data(), c.n * sizeof(C));
            for (int flag : kBadFlags) {
                EXPECT_EQ(kernel(src.data(), dst.data(), flag), StatusFlagError) << flag;
                EXPECT_TRUE(dst.allBytesAre(kSentinel));
                EXPECT_EQ(std::memcmp(src.data(), x.data(), c.n * sizeof(C)), 0);
            }
            for (int flag : {int{ScaleNone}, 0, -1}) {
                EXPECT_EQ(kernel(nullptr, dst.data(), flag), StatusNullPointer);
                EXPECT_EQ(kernel(src.data(), nullptr, flag), StatusNullPointer);
                EXPECT_EQ(kernel(nullptr, nullptr, flag), StatusNullPointer);
                EXPECT_TRUE(dst.allBytesAre(kSentinel));
            }
        }
    });
}

template <class C>
std::vector<unsigned char> bytesOf(const C* p, int n) {
    const auto* b = reinterpret_cast<const unsigned char*>(p);
    return std::vector<unsigned char>(b, b + n * sizeof(C));
}

TEST_P(CdftRules, EveryAlignmentAndInPlaceGiveIdenticalBits) {
    const Case c = GetParam();
    withPrecision(c, [&](auto tag) {
        using C = decltype(tag);
        const auto kernel = Kernels<C>::sized(c.n, c.inverse);
        const auto x = randomInput<C>(c.n, 11u + c.n);
        for (int flag : kFlags) {
            OffsetArray<C> src0(c.n, 0), dst0(c.n, 0);
            std::memcpy(src0.data(), x.data(), c.n * sizeof(C));
            ASSERT_EQ(kernel(src0.data(), dst0.data(), flag), StatusOk);
            const auto want = bytesOf(dst0.data(), c.n);
            // Offsets: 8 is the misaligned case of both types; 4 keeps floats aligned only.
            const std::vector<std::size_t> offsets = c.f64 ? std::vector<std::size_t>{0, 8}
                                                           : std::vector<std::size_t>{0, 4, 8};
            for (std::size_t so : offsets)
                for (std::size_t doff : offsets) {
                    OffsetArray<C> src(c.n, so), dst(c.n, doff);
                    std::memcpy(src.data(), x.data(), c.n * sizeof(C));
                    ASSERT_EQ(kernel(src.data(), dst.data(), flag), StatusOk);
                    EXPECT_EQ(bytesOf(dst.data(), c.n), want) << "offsets " << so << "/" << doff << " flag " << flag;
                }
            for (std::size_t off : offsets) {
                OffsetArray<C> buf(c.n, off);
                std::memcpy(buf.data(), x.data(), c.n * sizeof(C));
                ASSERT_EQ(kernel(buf.data(), buf.data(), flag), StatusOk);
                EXPECT_EQ(bytesOf(buf.data(), c.n), want) << "in place at offset " << off << " flag " << flag;
            }
        }
    });
}

TEST_P(CdftRules, UnalignedInputWithNullOutputIsANullPointer) {
    const Case c = GetParam();
    withPrecision(c, [&](auto tag) {
        using C = decltype(tag);
        OffsetArray<C> src(c.n, 8);
        EXPECT_EQ(Kernels<C>::sized(c.n, c.inverse)(src.data(), nullptr, ScaleNone), StatusNullPointer);
        EXPECT_EQ(Kernels<C>::sized(c.n, c.inverse)(src.data(), nullptr, 3), StatusNullPointer);
    });
}

TEST_P(CdftRules, ReadsAndWritesOnlyTheirArrays) {
    const Case c = GetParam();
    withPrecision(c, [&](auto tag) {
        using C = decltype(tag);
        const auto kernel = Kernels<C>::sized(c.n, c.inverse);
        const auto x = randomInput<C>(c.n, 5u);
        std::vector<C> want(c.n);
        ASSERT_EQ(kernel(x.data(), want.data(), ScaleNone), StatusOk);
        const std::size_t bytes = c.n * sizeof(C);
        // Arrays that end at an inaccessible page, once 16-byte aligned, once 8 past.
        for (std::size_t shift : {0u, 8u}) {
            const std::size_t padded = (bytes + 15) / 16 * 16 + shift;
            GuardedBlock in(padded), out(padded);
            C* src = reinterpret_cast<C*>(in.data() + padded - bytes);
            C* dst = reinterpret_cast<C*>(out.data() + padded - bytes);
            std::memcpy(src, x.data(), bytes);
            ASSERT_EQ(kernel(src, dst, ScaleNone), StatusOk);
            EXPECT_EQ(std::memcmp(dst, want.data(), bytes), 0);
        }
    });
}

INSTANTIATE_TEST_SUITE_P(AllKernels, CdftRules, ::testing::ValuesIn(allCases()), caseName);

}  // namespace
