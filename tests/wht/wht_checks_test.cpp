// Statuses and their order, untouched output on failure, the generic entry
// by order, the buffer-size query and the kernel's own buffer allocation.
#include <dlfcn.h>

#include <climits>

#include "wht_support.h"

// Counts the core library's allocations made while a probe is recording and
// forwards every call to the real functions.
namespace {
struct AllocationProbe {
    bool recording = false;
    int mallocs = 0, frees = 0;
    int lastBytes = 0;
    void* lastBlock = nullptr;
    void* lastFreed = nullptr;
};
AllocationProbe probe;
}  // namespace

extern "C" __attribute__((weak, visibility("default"))) void* kfpMalloc(int bytes) {
    static auto real = reinterpret_cast<void* (*)(int)>(dlsym(RTLD_NEXT, "kfpMalloc"));
    void* block = real(bytes);
    if (probe.recording) ++probe.mallocs, probe.lastBytes = bytes, probe.lastBlock = block;
    return block;
}

extern "C" __attribute__((weak, visibility("default"))) void kfpFree(void* block) {
    static auto real = reinterpret_cast<void (*)(void*)>(dlsym(RTLD_NEXT, "kfpFree"));
    if (probe.recording) ++probe.frees, probe.lastFreed = block;
    real(block);
}

namespace {

using namespace kfpg::test;
using namespace kfpg::test::wht;

class WhtChecks : public ::testing::TestWithParam<Case> {};

constexpr int kBadFlags[] = {0, 3, 5, 16, -1, INT_MIN, INT_MAX};

// Each failing call gets a buffer pointer at an inaccessible page: a failed
// check must not touch the buffer either.
template <class T>
void failuresLeaveOutputAlone(const Case& c) {
    const auto x = narrow<T>(input(c.order));
    GuardedBlock noBuffer(0);
    for (std::size_t offset : {0, 4}) {
        OffsetArray<T> src(c.n(), 0), dst(c.n(), offset);
        store(src.data(), x);
        const auto call = [&](const T* s, T* d, int flag) {
            return kernel<T>(c.order)(s, d, flag, noBuffer.data());
        };
        for (int flag : {int{ScaleNone}, int{ScaleFwdByN}, 0, -1}) {
            EXPECT_EQ(call(nullptr, dst.data(), flag), StatusNullPointer) << flag;
            EXPECT_EQ(call(src.data(), nullptr, flag), StatusNullPointer) << flag;
            EXPECT_EQ(call(nullptr, nullptr, flag), StatusNullPointer) << flag;
        }
        for (int flag : kBadFlags) EXPECT_EQ(call(src.data(), dst.data(), flag), StatusFlagError) << flag;
        EXPECT_TRUE(dst.allBytesAre(kSentinel)) << "offset " << offset;
    }
}
TEST_P(WhtChecks, FailuresLeaveOutputAndBufferAlone) { KFPG_WHT_FOR_PRECISION(GetParam(), failuresLeaveOutputAlone); }

template <class T>
void genericMatchesSized(const Case& c) {
    const auto x = narrow<T>(input(c.order));
    int bytes = 0;
    bufferSize<T>(c.order, &bytes);
    OffsetArray<unsigned char> buffer(bytes, 0);
    OffsetArray<T> src(c.n(), 4);
    store(src.data(), x);
    for (int flag : {int{ScaleNone}, int{ScaleBySqrtN}, int{ScaleFwdByN}, int{ScaleInvByN}, 3}) {
        for (const T* s : {static_cast<const T*>(src.data()), static_cast<const T*>(nullptr)}) {
            OffsetArray<T> viaSized(c.n(), 0), viaGeneric(c.n(), 0);
            const KfpStatus sized = kernel<T>(c.order)(s, viaSized.data(), flag, buffer.data());
            EXPECT_EQ(generic<T>(s, viaGeneric.data(), c.order, flag, buffer.data()), sized) << flag;
            EXPECT_EQ(std::memcmp(viaSized.data(), viaGeneric.data(), c.n() * sizeof(T)), 0) << flag;
        }
    }
}
TEST_P(WhtChecks, GenericEntryForwardsToTheSizedKernel) { KFPG_WHT_FOR_PRECISION(GetParam(), genericMatchesSized); }

// Orders 8..13 with a null buffer take exactly the reported size from the
// core library once and give it back; with a caller's buffer, below order 8
// and on failure they allocate nothing.
template <class T>
void allocatesOnlyAMissingBuffer(const Case& c) {
    const auto x = narrow<T>(input(c.order));
    int bytes = 0;
    bufferSize<T>(c.order, &bytes);
    OffsetArray<T> src(c.n(), 0), dst(c.n(), 0);
    OffsetArray<unsigned char> buffer(bytes, 0);
    store(src.data(), x);
    const auto count = [&](const T* s, int flag, unsigned char* b, KfpStatus want) {
        probe = AllocationProbe{};
        probe.recording = true;
        EXPECT_EQ(kernel<T>(c.order)(s, dst.data(), flag, b), want);
        probe.recording = false;
        return probe;
    };
    const AllocationProbe own = count(src.data(), ScaleNone, nullptr, StatusOk);
    const int expected = c.order >= 8 ? 1 : 0;
    EXPECT_EQ(own.mallocs, expected);
    EXPECT_EQ(own.frees, expected);
    if (expected) {
        EXPECT_EQ(own.lastBytes, bytes);
        EXPECT_NE(own.lastBlock, nullptr);
        EXPECT_EQ(own.lastFreed, own.lastBlock);
    }
    EXPECT_EQ(count(src.data(), ScaleNone, buffer.data(), StatusOk).mallocs, 0);
    EXPECT_EQ(count(nullptr, ScaleNone, nullptr, StatusNullPointer).mallocs, 0);
    EXPECT_EQ(count(src.data(), 0, nullptr, StatusFlagError).mallocs, 0);
}
TEST_P(WhtChecks, AllocatesExactlyTheBufferSizeOnlyWhenMissing) {
    KFPG_WHT_FOR_PRECISION(GetParam(), allocatesOnlyAMissingBuffer);
}

INSTANTIATE_TEST_SUITE_P(AllOrders, WhtChecks, ::testing::ValuesIn(allCases()), caseName);

TEST(WhtGeneric, OrderOutsideOneToThirteenIsASizeErrorBeforeAnythingElse) {
    float f[4] = {1, 2, 3, 4};
    double d[4] = {1, 2, 3, 4};
    for (int order : {0, 14, -1, 100, INT_MIN, INT_MAX}) {
        EXPECT_EQ(kfpgWHT_32f(f, f, order, ScaleNone, nullptr), StatusSizeError) << order;
        EXPECT_EQ(kfpgWHT_64f(d, d, order, ScaleNone, nullptr), StatusSizeError) << order;
        EXPECT_EQ(kfpgWHT_32f(nullptr, nullptr, order, 0, nullptr), StatusSizeError) << order;
        EXPECT_EQ(kfpgWHT_64f(nullptr, nullptr, order, 0, nullptr), StatusSizeError) << order;
        int size = 12345;
        EXPECT_EQ(kfpgWHTGetBufferSize_32f(order, &size), StatusSizeError);
        EXPECT_EQ(kfpgWHTGetBufferSize_64f(order, &size), StatusSizeError);
        EXPECT_EQ(size, 12345);
    }
    EXPECT_EQ(f[0], 1);
    EXPECT_EQ(d[3], 4);
}

TEST(WhtGeneric, BufferSizesPerOrder) {
    const int want32[] = {0, 0, 0, 0, 0, 0, 0, 0x400, 0x800, 0x1000, 0x2000, 0x4800, 0x8800};
    const int want64[] = {0, 0, 0, 0, 0, 0, 0, 0x800, 0x1000, 0x2000, 0x4800, 0x8800, 0x12000};
    for (int order = 1; order <= 13; ++order) {
        int size = -1;
        EXPECT_EQ(kfpgWHTGetBufferSize_32f(order, &size), StatusOk);
        EXPECT_EQ(size, want32[order - 1]) << order;
        size = -1;
        EXPECT_EQ(kfpgWHTGetBufferSize_64f(order, &size), StatusOk);
        EXPECT_EQ(size, want64[order - 1]) << order;
    }
}

}  // namespace
