// The exported DCT-IV calls: accepted lengths and reported sizes, argument
// checks and statuses, the root object in the caller's block, builds into
// exactly-sized, guarded and misaligned blocks, InitAlloc/Free, release
// order, and two plans used from two threads.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <thread>
#include <vector>

#include "buffers.h"
#include "dct4/arena.h"
#include "dct4/envs.h"
#include "dct4_api.h"
#include "reference.h"

namespace {

using kfpg::dct4::Arena;
using kfpg::dct4::Env1;
using kfpg::test::Dct4Api;
using kfpg::test::Dct4Plan;
using kfpg::test::GuardedBlock;

template <class Real>
class Dct4Lifecycle : public ::testing::Test {};
using Precisions = ::testing::Types<float, double>;
TYPED_TEST_SUITE(Dct4Lifecycle, Precisions);

bool isPowerOfTwo(long n) { return n >= 2 && (n & (n - 1)) == 0; }

// Accepted: powers of two from 2; 2^k + 1 from 33 (32f) or 9 (64f); up to
// 2^26 (32f) or 2^25 (64f), where the block still fits an int size.
template <class Real>
bool accepted(long n) {
    const long largest = sizeof(Real) == 4 ? 1L << 26 : 1L << 25;
    return n <= largest && (isPowerOfTwo(n) || (isPowerOfTwo(n - 1) && n >= (sizeof(Real) == 4 ? 33 : 9)));
}

template <class Real>
std::uintptr_t firstObject(const unsigned char* block) {
    const auto a = reinterpret_cast<std::uintptr_t>(block);
    return a + 64 - a % 32;
}

template <class Real>
std::vector<Real> randomInput(int n, unsigned seed) {
    const auto r = kfpg::ref::randomReals(static_cast<std::size_t>(n), seed);
    return std::vector<Real>(r.begin(), r.end());
}

TYPED_TEST(Dct4Lifecycle, AcceptedLengthsAndSizes) {
    using Api = Dct4Api<TypeParam>;
    std::vector<long> lengths;
    for (long n = -2; n <= 1100; ++n) lengths.push_back(n);
    for (long n : {2047L, 2048L, 2049L, 4095L, 4097L, 6144L, 65536L, 65537L, 131072L, 131073L, 196608L, 1L << 25,
                   (1L << 25) + 1, 1L << 26, (1L << 26) + 1, 1L << 27, 1L << 30, 2147483647L})
        lengths.push_back(n);
    for (long n : lengths) {
        int size = -12345;
        const KfpStatus status = Api::getSize(static_cast<int>(n), &size);
        if (!accepted<TypeParam>(n)) {
            ASSERT_EQ(status, StatusSizeError) << "N=" << n;
            ASSERT_EQ(size, -12345) << "N=" << n;
            typename Api::Spec* spec = reinterpret_cast<typename Api::Spec*>(&size);
            // Planning may build part of the tree before it fails: room for that
            // (the lengths beyond the largest fail before anything is built).
            std::vector<unsigned char> block(n > 0 && n < 1000000 ? 64 * static_cast<std::size_t>(n) + 4096 : 4096);
            ASSERT_EQ(Api::init(&spec, static_cast<int>(n), block.data()), StatusSizeError) << "N=" << n;
            ASSERT_EQ(Api::initAlloc(&spec, static_cast<int>(n)), StatusSizeError) << "N=" << n;
            ASSERT_EQ(spec, reinterpret_cast<typename Api::Spec*>(&size)) << "spec written for N=" << n;
            continue;
        }
        ASSERT_EQ(status, StatusOk) << "N=" << n;
        if (isPowerOfTwo(n) && n <= 32) EXPECT_EQ(size, 256) << "N=" << n;
        if (isPowerOfTwo(n) && n >= 64 && n <= 2048)
            EXPECT_EQ(size, (sizeof(TypeParam) == 4 ? 8 : 16) * n + 1312) << "N=" << n;
    }
}

TEST(Dct4Sizes, DocumentedValues) {
    int s32 = 0, s64 = 0;
    ASSERT_EQ(kfpgDCT4GetSize_32f(64, &s32), StatusOk);
    EXPECT_EQ(s32, 1824);
    ASSERT_EQ(kfpgDCT4GetSize_32f(128, &s32), StatusOk);
    EXPECT_EQ(s32, 2336);
    ASSERT_EQ(kfpgDCT4GetSize_32f(2048, &s32), StatusOk);
    EXPECT_EQ(s32, 17696);
    // 17 and 9 only in 64f; 33 and 65 in both.
    EXPECT_EQ(kfpgDCT4GetSize_32f(17, &s32), StatusSizeError);
    EXPECT_EQ(kfpgDCT4GetSize_64f(17, &s64), StatusOk);
    EXPECT_EQ(kfpgDCT4GetSize_32f(9, &s32), StatusSizeError);
    EXPECT_EQ(kfpgDCT4GetSize_64f(9, &s64), StatusOk);
    for (int n : {33, 65}) {
        EXPECT_EQ(kfpgDCT4GetSize_32f(n, &s32), StatusOk);
        EXPECT_EQ(kfpgDCT4GetSize_64f(n, &s64), StatusOk);
    }
    for (int n : {0, 1, 3, 6, 48, 96, 192}) {
        EXPECT_EQ(kfpgDCT4GetSize_32f(n, &s32), StatusSizeError) << n;
        EXPECT_EQ(kfpgDCT4GetSize_64f(n, &s64), StatusSizeError) << n;
    }
}

// Every accepted length builds in a block of exactly the reported size that
// ends at an inaccessible page, at several start alignments, takes no more
// than that size, and gives the same results as a build elsewhere.
TYPED_TEST(Dct4Lifecycle, GuardedExactBlocks) {
    using Api = Dct4Api<TypeParam>;
    for (int n : kfpg::test::acceptedLengths<TypeParam>(65537)) {
        if (n % 2 && n > 1025) continue;
        int size = 0;
        ASSERT_EQ(Api::getSize(n, &size), StatusOk);
        const auto x = randomInput<TypeParam>(n, 5u + n);
        Dct4Plan<TypeParam> plain(n);
        std::vector<TypeParam> want(n), got(n);
        ASSERT_EQ(plain.run(x.data(), want.data()), StatusOk);
        for (int shift : {0, 1, 13, 31}) {
            GuardedBlock guarded(static_cast<std::size_t>(size) + shift);
            unsigned char* block = guarded.data() + shift;
            typename Api::Spec* spec = nullptr;
            ASSERT_EQ(Api::init(&spec, n, block), StatusOk) << "N=" << n;
            EXPECT_EQ(reinterpret_cast<std::uintptr_t>(spec), firstObject<TypeParam>(block));
            const auto* arena = reinterpret_cast<const Arena*>(block);
            EXPECT_LE(arenaNext(arena), block + size) << "N=" << n << " takes more than reported";
            ASSERT_EQ(Api::run(x.data(), got.data(), spec), StatusOk);
            ASSERT_EQ(0, std::memcmp(got.data(), want.data(), n * sizeof(TypeParam))) << "N=" << n;
        }
    }
}

TYPED_TEST(Dct4Lifecycle, RootObjectInTheBlock) {
    using Api = Dct4Api<TypeParam>;
    for (int n : {2, 4, 8, 16, 32, 64, 65, 1024}) {
        int size = 0;
        ASSERT_EQ(Api::getSize(n, &size), StatusOk);
        std::vector<unsigned char> storage(size + 32);
        for (int shift = 0; shift < 32; shift += 5) {
            unsigned char* block = storage.data() + shift;
            typename Api::Spec* spec = nullptr;
            ASSERT_EQ(Api::init(&spec, n, block), StatusOk);
            const auto* root = reinterpret_cast<const Env1<TypeParam>*>(spec);
            const std::uintptr_t at = reinterpret_cast<std::uintptr_t>(root);
            EXPECT_EQ(at % 32, 0u);
            EXPECT_GE(at - reinterpret_cast<std::uintptr_t>(block), 33u);
            EXPECT_LE(at - reinterpret_cast<std::uintptr_t>(block), 64u);
            EXPECT_EQ(root->size, 80);
            EXPECT_EQ(reinterpret_cast<const unsigned char*>(root->arena), block);
            EXPECT_EQ(root->len, n);
            if (n <= 32) {
                EXPECT_EQ(root->rule, __builtin_ctz(n));
                EXPECT_EQ(root->work, nullptr);
                EXPECT_EQ(root->stage1->item, nullptr);
                EXPECT_EQ(root->stage2->item, nullptr);
            } else {
                EXPECT_EQ(root->rule, 6);
                ASSERT_NE(root->work, nullptr);
                EXPECT_EQ(reinterpret_cast<std::uintptr_t>(root->work) % 32, 0u);
            }
        }
    }
}

TYPED_TEST(Dct4Lifecycle, NullArgumentsAndUnknownRules) {
    using Api = Dct4Api<TypeParam>;
    typename Api::Spec* spec = nullptr;
    unsigned char block[4096];
    EXPECT_EQ(Api::init(nullptr, 64, block), StatusNullPointer);
    EXPECT_EQ(Api::init(&spec, 64, nullptr), StatusNullPointer);
    EXPECT_EQ(Api::init(&spec, 48, nullptr), StatusNullPointer);  // null before the length
    EXPECT_EQ(Api::initAlloc(nullptr, 64), StatusNullPointer);
    EXPECT_EQ(Api::free(nullptr), StatusNullPointer);
    EXPECT_EQ(spec, nullptr);

    int size = 0;
    ASSERT_EQ(Api::getSize(64, &size), StatusOk);
    std::vector<unsigned char> mem(size);
    ASSERT_EQ(Api::init(&spec, 64, mem.data()), StatusOk);
    std::vector<TypeParam> x(64, TypeParam(1));
    kfpg::test::OffsetArray<TypeParam> y(64, 0);
    EXPECT_EQ(Api::run(nullptr, y.data(), spec), StatusNullPointer);
    EXPECT_EQ(Api::run(x.data(), nullptr, spec), StatusNullPointer);
    EXPECT_EQ(Api::run(x.data(), y.data(), nullptr), StatusNullPointer);
    EXPECT_TRUE(y.allBytesAre(kfpg::test::kSentinel));

    auto* root = reinterpret_cast<Env1<TypeParam>*>(spec);
    for (int rule : {0, 7, -1, 100}) {
        root->rule = rule;
        EXPECT_EQ(Api::run(x.data(), y.data(), spec), StatusContextError) << rule;
        EXPECT_EQ(Api::run(nullptr, y.data(), spec), StatusNullPointer) << rule;
        EXPECT_TRUE(y.allBytesAre(kfpg::test::kSentinel)) << rule;
    }
    root->rule = 6;
    EXPECT_EQ(Api::run(x.data(), y.data(), spec), StatusOk);
}

TYPED_TEST(Dct4Lifecycle, InitAllocAndFree) {
    using Api = Dct4Api<TypeParam>;
    for (int n : {2, 32, 33, 64, 4096, 65536}) {
        if (!accepted<TypeParam>(n)) continue;
        typename Api::Spec* spec = nullptr;
        ASSERT_EQ(Api::initAlloc(&spec, n), StatusOk);
        ASSERT_NE(spec, nullptr);
        const auto x = randomInput<TypeParam>(n, 9u);
        std::vector<TypeParam> got(n), want(n);
        Dct4Plan<TypeParam> plain(n);
        ASSERT_EQ(Api::run(x.data(), got.data(), spec), StatusOk);
        ASSERT_EQ(plain.run(x.data(), want.data()), StatusOk);
        EXPECT_EQ(0, std::memcmp(got.data(), want.data(), n * sizeof(TypeParam)));
        EXPECT_EQ(Api::free(spec), StatusOk);
    }
}

// The root's release operation, then its 80 bytes, bring the arena back to
// where the root was taken, for successful and for failed builds.
TYPED_TEST(Dct4Lifecycle, ReleaseRestoresTheArena) {
    using Api = Dct4Api<TypeParam>;
    std::vector<unsigned char> block(1 << 20);
    auto* arena = reinterpret_cast<Arena*>(block.data());
    for (int n : {2, 16, 32, 33, 64, 65, 128, 1024, 4096, 4097, 8192, 65536}) {
        if (!accepted<TypeParam>(n)) continue;
        typename Api::Spec* spec = nullptr;
        ASSERT_EQ(Api::init(&spec, n, block.data()), StatusOk);
        auto* root = reinterpret_cast<Env1<TypeParam>*>(spec);
        root->del(root);
        kfpg::dct4::kfpgArenaFree(arena, root, 80);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(arenaNext(arena)), firstObject<TypeParam>(block.data())) << n;
    }
    // A failed build releases everything it had registered.
    for (int n : {3, 6, 34, 40, 48, 96, 192, 12288}) {
        typename Api::Spec* spec = nullptr;
        ASSERT_EQ(Api::init(&spec, n, block.data()), StatusSizeError) << n;
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(arenaNext(arena)), firstObject<TypeParam>(block.data())) << n;
    }
}

// Two plans of one length used by two threads at once give the
// results of one thread alone.
TYPED_TEST(Dct4Lifecycle, TwoThreadsTwoPlans) {
    for (int n : {64, 1024, 4096, 65}) {
        Dct4Plan<TypeParam> first(n), second(n);
        constexpr int kInputs = 24;
        std::vector<std::vector<TypeParam>> inputs, want(kInputs, std::vector<TypeParam>(n));
        for (int i = 0; i < kInputs; ++i) inputs.push_back(randomInput<TypeParam>(n, 100u + i));
        for (int i = 0; i < kInputs; ++i) ASSERT_EQ(first.run(inputs[i].data(), want[i].data()), StatusOk);
        std::vector<std::vector<TypeParam>> a(kInputs, std::vector<TypeParam>(n)), b = a;
        auto work = [&](const Dct4Plan<TypeParam>& plan, std::vector<std::vector<TypeParam>>& out) {
            for (int round = 0; round < 20; ++round)
                for (int i = 0; i < kInputs; ++i) plan.run(inputs[i].data(), out[i].data());
        };
        std::thread t1(work, std::cref(first), std::ref(a)), t2(work, std::cref(second), std::ref(b));
        t1.join();
        t2.join();
        for (int i = 0; i < kInputs; ++i) {
            EXPECT_EQ(0, std::memcmp(a[i].data(), want[i].data(), n * sizeof(TypeParam))) << n;
            EXPECT_EQ(0, std::memcmp(b[i].data(), want[i].data(), n * sizeof(TypeParam))) << n;
        }
    }
}

}  // namespace
