// Exact rules of the inverse real DFT kernels: statuses and their order,
// output untouched on failure, the ignored CCS elements, the same bits in
// place and at every element offset, exactly the loaded elements read and n
// elements written, and the generic entries.
#include <cstring>

#include "buffers.h"
#include "rdft_inv_cases.h"

namespace {

using namespace kfpg::test;
using namespace kfpg::test::rdft;

class RdftInvRules : public ::testing::TestWithParam<Case> {};
class RdftInvCcs : public ::testing::TestWithParam<Case> {};

TEST_P(RdftInvRules, BadFlagsAndNullPointersFailInOrderAndWriteNothing) {
    const Case c = GetParam();
    withPrecision(c, [&](auto tag) {
        using T = decltype(tag);
        const auto kernel = InverseKernels<T>::sized(c.n, c.layout);
        const auto s = randomSpectrum<T>(c, 3u);
        OffsetArray<T> dst(c.n, 0);
        for (int flag : kBadFlags) {
            EXPECT_EQ(kernel(s.data(), dst.data(), flag), StatusFlagError) << flag;
            EXPECT_TRUE(dst.allBytesAre(kSentinel));
        }
        for (int flag : {int{ScaleNone}, 0, -1}) {
            EXPECT_EQ(kernel(nullptr, dst.data(), flag), StatusNullPointer);
            EXPECT_EQ(kernel(s.data(), nullptr, flag), StatusNullPointer);
            EXPECT_EQ(kernel(nullptr, nullptr, flag), StatusNullPointer);
            EXPECT_TRUE(dst.allBytesAre(kSentinel));
        }
    });
}

TEST_P(RdftInvCcs, IgnoredCcsElementsDoNotChangeTheResult) {
    const Case c = GetParam();
    withPrecision(c, [&](auto tag) {
        using T = decltype(tag);
        const auto kernel = InverseKernels<T>::sized(c.n, c.layout);
        const auto clean = randomSpectrum<T>(c, 29u, T(0));
        std::vector<T> want(c.n);
        ASSERT_EQ(kernel(clean.data(), want.data(), ScaleBySqrtN), StatusOk);
        using Limits = std::numeric_limits<T>;
        for (T junk : {Limits::quiet_NaN(), Limits::infinity(), -Limits::infinity(), Limits::max(), T(-3.5)}) {
            auto s = clean;
            for (int e = 0; e < c.packedCount(); ++e)
                if (c.ignored(e)) s[e] = junk;
            std::vector<T> x(c.n);
            ASSERT_EQ(kernel(s.data(), x.data(), ScaleBySqrtN), StatusOk);
            EXPECT_EQ(bytesOf(x.data(), c.n), bytesOf(want.data(), c.n)) << "junk " << junk;
        }
    });
}

TEST_P(RdftInvRules, EveryElementOffsetAndInPlaceGiveIdenticalBits) {
    const Case c = GetParam();
    withPrecision(c, [&](auto tag) {
        using T = decltype(tag);
        const auto kernel = InverseKernels<T>::sized(c.n, c.layout);
        const auto s = randomSpectrum<T>(c, 11u + c.n);
        for (int flag : kFlags) {
            std::vector<T> want(c.n);
            ASSERT_EQ(kernel(s.data(), want.data(), flag), StatusOk);
            for (std::size_t srcOffset = 0; srcOffset < 16; srcOffset += sizeof(T))
                for (std::size_t dstOffset = 0; dstOffset < 16; dstOffset += sizeof(T)) {
                    OffsetArray<T> src(c.packedCount(), srcOffset), dst(c.n, dstOffset);
                    src.assign(s);
                    ASSERT_EQ(kernel(src.data(), dst.data(), flag), StatusOk);
                    EXPECT_EQ(bytesOf(dst.data(), c.n), bytesOf(want.data(), c.n)) << "offsets " << srcOffset << ", " << dstOffset;
                }
            for (std::size_t offset = 0; offset < 16; offset += sizeof(T)) {
                OffsetArray<T> buf(c.packedCount(), offset);
                buf.assign(s);
                ASSERT_EQ(kernel(buf.data(), buf.data(), flag), StatusOk);
                EXPECT_EQ(bytesOf(buf.data(), c.n), bytesOf(want.data(), c.n)) << "in place, offset " << offset;
                // A CCS buffer keeps its elements beyond n.
                EXPECT_EQ(bytesOf(buf.data() + c.n, c.packedCount() - c.n), bytesOf(s.data() + c.n, c.packedCount() - c.n));
            }
        }
    });
}

// A source that ends right after the last element the kernel loads, and a
// destination of n elements, both at an inaccessible page: a read or a write
// past them faults.
TEST_P(RdftInvRules, TouchesNothingBeyondWhatItLoadsAndStores) {
    const Case c = GetParam();
    withPrecision(c, [&](auto tag) {
        using T = decltype(tag);
        const auto s = randomSpectrum<T>(c, 21u, T(0));
        GuardedBlock src(c.readEnd() * sizeof(T)), dst(c.n * sizeof(T));
        std::memcpy(src.data(), s.data(), c.readEnd() * sizeof(T));
        auto* out = reinterpret_cast<T*>(dst.data());
        ASSERT_EQ(InverseKernels<T>::sized(c.n, c.layout)(reinterpret_cast<const T*>(src.data()), out, ScaleNone), StatusOk);
        EXPECT_LT(kfpg::ref::relativeL2(out, expectedSignal(c, s.data(), ScaleNone)), InverseKernels<T>::bound);
        // One element more in front of the output: the kernel must leave it alone.
        GuardedBlock wide(c.n * sizeof(T), sizeof(T));
        std::memset(wide.data(), kSentinel, sizeof(T));
        ASSERT_EQ(InverseKernels<T>::sized(c.n, c.layout)(s.data(), reinterpret_cast<T*>(wide.data() + sizeof(T)), ScaleNone), StatusOk);
        for (std::size_t b = 0; b < sizeof(T); ++b) EXPECT_EQ(wide.data()[b], kSentinel);
    });
}

TEST_P(RdftInvRules, GenericEntryEqualsTheSizedKernel) {
    const Case c = GetParam();
    withPrecision(c, [&](auto tag) {
        using T = decltype(tag);
        const auto s = randomSpectrum<T>(c, 13u);
        for (int flag : {int{ScaleFwdByN}, int{ScaleInvByN}, int{ScaleBySqrtN}, int{ScaleNone}, 0, 3}) {
            OffsetArray<T> a(c.n, 0), b(c.n, 0);
            EXPECT_EQ(InverseKernels<T>::generic(c.layout)(s.data(), a.data(), c.n, flag), InverseKernels<T>::sized(c.n, c.layout)(s.data(), b.data(), flag));
            EXPECT_EQ(bytesOf(a.data(), c.n), bytesOf(b.data(), c.n));
        }
        EXPECT_EQ(InverseKernels<T>::generic(c.layout)(nullptr, nullptr, c.n, ScaleNone), StatusNullPointer);
        EXPECT_EQ(InverseKernels<T>::generic(c.layout)(s.data(), nullptr, c.n, 0), StatusNullPointer);
    });
}

INSTANTIATE_TEST_SUITE_P(AllKernels, RdftInvRules, ::testing::ValuesIn(allCases()), caseName);
INSTANTIATE_TEST_SUITE_P(CcsKernels, RdftInvCcs, ::testing::ValuesIn(ccsCases()), caseName);

TEST(RdftInvGeneric, LengthIsCheckedBeforeEverythingElse) {
    for (Layout layout : {Layout::CCS, Layout::Pack, Layout::Perm})
        for (int len : {1, 0, -1, 65, 2147483647, -2147483647 - 1}) {
            float f[66];
            double d[66];
            std::memset(f, 0xA5, sizeof f);
            std::memset(d, 0xA5, sizeof d);
            EXPECT_EQ(InverseKernels<float>::generic(layout)(nullptr, nullptr, len, 0), StatusSizeError);
            EXPECT_EQ(InverseKernels<float>::generic(layout)(f, f, len, ScaleNone), StatusSizeError);
            EXPECT_EQ(InverseKernels<double>::generic(layout)(d, d, len, ScaleNone), StatusSizeError);
            EXPECT_EQ(InverseKernels<double>::generic(layout)(nullptr, d, len, 3), StatusSizeError);
            const auto* fb = reinterpret_cast<const unsigned char*>(f);
            const auto* db = reinterpret_cast<const unsigned char*>(d);
            for (std::size_t i = 0; i < sizeof f; ++i) ASSERT_EQ(fb[i], 0xA5);
            for (std::size_t i = 0; i < sizeof d; ++i) ASSERT_EQ(db[i], 0xA5);
        }
}

}  // namespace
