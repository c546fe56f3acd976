// Every way of calling a WHT kernel gives the same bits: misaligned arrays,
// in place, a caller's buffer or none. And a kernel touches exactly its
// arrays and the reported number of buffer bytes.
#include <cstdlib>
#include <memory>

#include "wht_support.h"

namespace {

using namespace kfpg::test;
using namespace kfpg::test::wht;

class WhtPaths : public ::testing::TestWithParam<Case> {};

template <class T>
void misalignedAlike(const Case& c) {
    const auto x = narrow<T>(input(c.order));
    const auto aligned = transform<T>(c.order, x, ScaleBySqrtN);
    for (auto [srcOffset, dstOffset] : {std::pair{4, 0}, std::pair{0, 4}, std::pair{8, 8}, std::pair{0, 8},
                                        std::pair{8, 0}, std::pair{4, 12}}) {
        EXPECT_TRUE(sameBits(aligned, transform<T>(c.order, x, ScaleBySqrtN, srcOffset, dstOffset)))
            << "src at " << srcOffset << ", dst at " << dstOffset << " mod 16";
    }
}
TEST_P(WhtPaths, MisalignedArraysGiveTheAlignedBits) { KFPG_WHT_FOR_PRECISION(GetParam(), misalignedAlike); }

template <class T>
void inPlaceAlike(const Case& c) {
    const auto x = narrow<T>(input(c.order));
    const auto outOfPlace = transform<T>(c.order, x, ScaleFwdByN);
    int bytes = 0;
    bufferSize<T>(c.order, &bytes);
    OffsetArray<unsigned char> buffer(bytes, 0);
    for (std::size_t offset : {0, 4, 8}) {
        OffsetArray<T> data(c.n(), offset);
        store(data.data(), x);
        ASSERT_EQ(kernel<T>(c.order)(data.data(), data.data(), ScaleFwdByN, buffer.data()), StatusOk);
        EXPECT_TRUE(sameBits(outOfPlace, load(data.data(), c.n()))) << "offset " << offset;
    }
}
TEST_P(WhtPaths, InPlaceGivesTheOutOfPlaceBits) { KFPG_WHT_FOR_PRECISION(GetParam(), inPlaceAlike); }

template <class T>
void nullBufferAlike(const Case& c) {
    const auto x = narrow<T>(input(c.order));
    for (std::size_t offset : {0, 4}) {
        EXPECT_TRUE(sameBits(transform<T>(c.order, x, ScaleNone, offset, offset),
                             transform<T>(c.order, x, ScaleNone, offset, offset, /*nullBuffer=*/true)))
            << "offset " << offset;
    }
}
TEST_P(WhtPaths, NullBufferGivesTheCallerBufferBits) { KFPG_WHT_FOR_PRECISION(GetParam(), nullBufferAlike); }

// Source, destination and buffer each end at an inaccessible page, and the
// buffer is exactly the reported size (none at all below order 8: the
// kernel gets a pointer to the guard page itself). Bytes in front of the
// destination and the buffer must keep their sentinel.
template <class T>
void staysInsideItsMemory(const Case& c) {
    const auto x = narrow<T>(input(c.order));
    const auto want = transform<T>(c.order, x, ScaleBySqrtN);
    int bytes = 0;
    bufferSize<T>(c.order, &bytes);
    constexpr std::size_t lead = 64;
    const std::size_t arrayBytes = c.n() * sizeof(T);
    GuardedBlock src(arrayBytes), dst(arrayBytes, lead), buffer(bytes, lead);
    std::memcpy(src.data(), x.data(), arrayBytes);
    T* out = reinterpret_cast<T*>(dst.data() + lead);
    ASSERT_EQ(kernel<T>(c.order)(reinterpret_cast<const T*>(src.data()), out, ScaleBySqrtN, buffer.data() + lead),
              StatusOk);
    EXPECT_TRUE(sameBits(want, load(out, c.n())));
    for (std::size_t i = 0; i < lead; ++i) {
        ASSERT_EQ(dst.data()[i], kSentinel) << "wrote " << lead - i << " bytes before pDst";
        ASSERT_EQ(buffer.data()[i], kSentinel) << "wrote " << lead - i << " bytes before pBuffer";
    }
}
TEST_P(WhtPaths, TouchesOnlyItsArraysAndTheReportedBufferBytes) {
    KFPG_WHT_FOR_PRECISION(GetParam(), staysInsideItsMemory);
}

INSTANTIATE_TEST_SUITE_P(AllOrders, WhtPaths, ::testing::ValuesIn(allCases()), caseName);

// Orders 8..13 choose the column order, and three-pass orders the place of
// their intermediate array in the buffer, by where the buffer lies against
// pDst modulo 4 KB: the same cache sets (0, 16), just above or below pDst
// (64, 4032, 4080) or far from it. The bits must not depend on it, in place
// or not, aligned or not; the buffer ends at a guard page, so a move past its
// reported size faults.
class WhtBufferPlacement : public ::testing::TestWithParam<Case> {};

struct PageFree {
    void operator()(void* p) const { std::free(p); }
};

template <class T>
void bufferPlacementAlike(const Case& c) {
    constexpr std::size_t page = 4096;
    const auto x = narrow<T>(input(c.order));
    const auto want = transform<T>(c.order, x, ScaleBySqrtN);
    int bytes = 0;
    bufferSize<T>(c.order, &bytes);
    GuardedBlock buffer(bytes);
    const std::size_t bufferOffset = reinterpret_cast<std::uintptr_t>(buffer.data()) % page;
    const std::size_t arrayBytes = c.n() * sizeof(T);
    std::unique_ptr<unsigned char, PageFree> memory(
        static_cast<unsigned char*>(std::aligned_alloc(page, 2 * page + arrayBytes / page * page)));
    std::vector<T> src = x;
    for (std::size_t bufferAbove : {0, 16, 64, 1024, 2048, 3072, 4032, 4080})
        for (std::size_t misalign : {std::size_t{0}, sizeof(T)})
            for (bool inPlace : {false, true}) {
                T* dst = reinterpret_cast<T*>(memory.get() + (bufferOffset + page - bufferAbove) % page + misalign);
                store(dst, x);
                ASSERT_EQ(kernel<T>(c.order)(inPlace ? dst : src.data(), dst, ScaleBySqrtN, buffer.data()), StatusOk);
                EXPECT_TRUE(sameBits(want, load(dst, c.n())))
                    << "buffer " << bufferAbove << " bytes above pDst mod 4096, pDst off by " << misalign
                    << (inPlace ? ", in place" : "");
            }
}
TEST_P(WhtBufferPlacement, EveryPlacementAgainstTheBufferGivesTheSameBits) {
    KFPG_WHT_FOR_PRECISION(GetParam(), bufferPlacementAlike);
}

std::vector<Case> bufferedCases() {
    std::vector<Case> cases;
    for (const Case& c : allCases())
        if (c.order >= 8) cases.push_back(c);
    return cases;
}
INSTANTIATE_TEST_SUITE_P(BufferedOrders, WhtBufferPlacement, ::testing::ValuesIn(bufferedCases()), caseName);

}  // namespace
