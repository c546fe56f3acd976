// White-box tests of the planner's pieces: arena, EnvList, divisor and rule
// choice, twiddle helpers and index functions, the plan trees of 64, 128 and
// 4096 with their tables, and the recursive split's radix-2 and radix-4
// paths that no accepted length up to 2^16 plans.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <vector>

#include "dct4/arena.h"
#include "dct4/env_list.h"
#include "dct4/env_ops.h"
#include "dct4/envs.h"
#include "dct4/trig.h"
#include "dct4_api.h"
#include "reference.h"

namespace {

using namespace kfpg::dct4;

// A fresh arena at the start of a block.
struct TestArena {
    explicit TestArena(std::size_t bytes = 1 << 16) : block(bytes) {}
    std::vector<unsigned char> block;
    Arena* arena = arenaInBlock(block.data());
    unsigned char* start = arenaNext(arena);
    long used() const { return arenaNext(arena) - start; }
};

TEST(Dct4Arena, AlignSize) {
    EXPECT_EQ(kfpgAlignSize32Bytes(0), 0u);
    EXPECT_EQ(kfpgAlignSize32Bytes(1), 32u);
    EXPECT_EQ(kfpgAlignSize32Bytes(24), 32u);
    EXPECT_EQ(kfpgAlignSize32Bytes(80), 96u);
    EXPECT_EQ(kfpgAlignSize32Bytes(88), 96u);
    EXPECT_EQ(kfpgAlignSize32Bytes(96), 96u);
    EXPECT_EQ(kfpgAlignSize32Bytes(104), 128u);
}

TEST(Dct4Arena, TakeAndGiveBackInReverse) {
    TestArena t;
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(t.start) % 32, 0u);
    void* a = kfpgArenaMalloc(t.arena, 80);
    EXPECT_EQ(a, t.start);
    EXPECT_EQ(t.used(), 96);
    void* b = kfpgArenaMalloc(t.arena, 24);
    EXPECT_EQ(b, t.start + 96);
    EXPECT_EQ(t.used(), 128);
    EXPECT_EQ(kfpgArenaMalloc(t.arena, 0), t.start + 128);
    EXPECT_EQ(t.used(), 128);
    kfpgArenaFree(t.arena, b, 24);
    kfpgArenaFree(t.arena, a, 80);
    EXPECT_EQ(t.used(), 0);
}

TEST(Dct4Arena, FirstObjectPosition) {
    std::vector<unsigned char> storage(256);
    for (int shift = 0; shift < 64; ++shift) {
        unsigned char* block = storage.data() + shift;
        Arena* arena = arenaInBlock(block);
        const long offset = arenaNext(arena) - block;
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(arenaNext(arena)) % 32, 0u);
        EXPECT_GE(offset, 33);
        EXPECT_LE(offset, 64);
    }
}

struct CountingObject {
    void (*del)(void*);
    std::int32_t size;
    void* op;
    Arena* arena;
    int* released;
};

void countRelease(void* self) { ++*static_cast<CountingObject*>(self)->released; }

TEST(Dct4EnvList, AddGetAndNodes) {
    TestArena t;
    EnvList* list = newEnvList(t.arena);
    EXPECT_EQ(t.used(), 32);
    EXPECT_EQ(EnvList_get(list, 0), nullptr);
    EXPECT_EQ(EnvList_get(list, -1), nullptr);
    int items[3];
    EXPECT_EQ(EnvList_add(list, &items[0]), &items[0]);
    EXPECT_EQ(t.used(), 32);  // the head holds the first item
    EnvList_add(list, &items[1]);
    EXPECT_EQ(t.used(), 64);
    EnvList_add(list, &items[2]);
    EXPECT_EQ(t.used(), 96);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(EnvList_get(list, i), &items[i]);
    EXPECT_EQ(EnvList_get(list, 3), nullptr);
    EXPECT_EQ(EnvList_get(list, -1), nullptr);
    EXPECT_EQ(EnvList_add_mem(3), 96);
    EnvList___del__(list);
    EXPECT_EQ(t.used(), 32);
    EXPECT_EQ(EnvList_get(list, 1), nullptr);
}

TEST(Dct4EnvList, FreeChildrenWalksPastAnEmptyHead) {
    TestArena t;
    EnvList* list = newEnvList(t.arena);
    int released = 0;
    auto* child = static_cast<CountingObject*>(kfpgArenaMalloc(t.arena, sizeof(CountingObject)));
    *child = {countRelease, 64, nullptr, t.arena, &released};
    auto* node = EnvList___init__(static_cast<EnvList*>(kfpgArenaMalloc(t.arena, 24)), t.arena);
    node->item = child;
    list->next = node;  // head item stays null
    const long before = t.used();
    EnvList_freeChildren(list);
    EXPECT_EQ(released, 1);
    EXPECT_EQ(t.used(), before - 64);
    EnvList_freeChildren(nullptr);
}

TEST(Dct4Planning, DivisorChoice) {
    const std::pair<int, int> cases[] = {{32, 8}, {64, 8},  {128, 16}, {256, 16}, {512, 32}, {24, 4},
                                         {12, 2}, {6, 2},   {4, 2},    {16, 4},   {1024, 32}, {96, 8},
                                         {48, 8}, {31, 0},  {3, 0},    {2, 0},    {0, 0},    {-4, 0}};
    for (auto [n, want] : cases) {
        std::int32_t out = -7;
        const KfpStatus status = divisorsIntNonTriv(&out, n);
        if (want == 0) {
            EXPECT_EQ(status, StatusSizeError) << n;
            EXPECT_EQ(out, -7) << n;
        } else {
            EXPECT_EQ(status, StatusOk) << n;
            EXPECT_EQ(out, want) << n;
        }
    }
    for (int n = 0; n <= 64; ++n) {
        const int want = n == 2 ? 1 : n == 4 ? 2 : n == 8 ? 3 : n == 16 ? 4 : n == 32 ? 5 : 0;
        EXPECT_EQ(chooseRule(n), want) << n;
    }
}

TEST(Dct4Planning, CosPiAndSinPi) {
    for (float x : {0.0f, 0.125f, 0.3f, 0.5f, 0.99f, 1.75f}) {
        EXPECT_EQ(kfpgCosPi_32f(x), std::cos(static_cast<float>(static_cast<double>(x) * 3.141592653589793)));
        EXPECT_EQ(kfpgSinPi_32f(x), std::sin(static_cast<float>(static_cast<double>(x) * 3.141592653589793)));
        EXPECT_EQ(kfpgCosPi_64f(x), std::cos(static_cast<double>(x) * 3.141592653589793));
        EXPECT_EQ(kfpgSinPi_64f(x), std::sin(static_cast<double>(x) * 3.141592653589793));
    }
}

TEST(Dct4Planning, SubKindMemChecks) {
    // env2 needs m a multiple of the lane count and d in 1, 2, 4, ..., 32.
    EXPECT_EQ(owngDCT4_32fw7_env2_mem(4, 48, 8, 6, 48, 95, 12), StatusSizeError);
    EXPECT_GT(owngDCT4_64fw7_env2_mem(4, 48, 8, 6, 48, 95, 12), 0);
    EXPECT_EQ(owngDCT4_64fw7_env2_mem(4, 40, 8, 5, 40, 79, 10), StatusSizeError);
    EXPECT_GT(owngDCT4_64fw7_env2_mem(2, 16, 4, 4, 16, 31, 8), 0);
    EXPECT_EQ(owngDCT4_32fw7_env2_mem(64, 4096, 128, 32, 4096, 8191, 64), StatusSizeError);
    // env3 needs d a multiple of the lane count.
    EXPECT_EQ(owngDCT4_32fw7_env3_mem(8, 17, 33, 4, 2, 17, 2), StatusSizeError);
    EXPECT_EQ(owngDCT4_64fw7_env3_mem(8, 17, 33, 4, 2, 17, 2), 160 + 224);
    // Codelet sizes need only the node itself; 24 fails three levels down.
    for (int m = 2; m <= 64; m *= 2) EXPECT_EQ(owngDCT4_32fw7_env5_mem(m, 512, 1023, 16, 2, 512, 8), 160);
    EXPECT_EQ(owngDCT4_32fw7_env5_mem(24, 192, 383, 16, 2, 192, 8), StatusSizeError);
    EXPECT_GT(owngDCT4_32fw7_env5_mem(128, 4096, 8191, 64, 8, 4096, 32), 160);
    // env8 needs d' in 2 .. 32.
    EXPECT_EQ(owngDCT4_32fw7_env8_mem(64, 4096, 32, 4096, 2, 4096, 64, 127, 32, 2), StatusSizeError);
    EXPECT_EQ(owngDCT4_32fw7_env8_mem(8, 4096, 32, 512, 8, 4096, 64, 127, 32, 16), 128 + 32 + 8 * 14 * 16);
}

// Objects of a built plan, read through the common header.
int sizeOf(const void* object) { return static_cast<const EnvHeader*>(object)->size; }
int listLength(const EnvList* list) {
    int n = 0;
    for (; list && list->item; list = list->next) ++n;
    return n;
}
bool aligned32(const void* p) { return reinterpret_cast<std::uintptr_t>(p) % 32 == 0; }

// Expected env4 entry: the F formula with the float quotient, then cos/sin pi x.
float rootTwiddle(int n, int d, int i, int k) {
    const int r = k / 2;
    const float x = static_cast<float>(2 * (2 * i + 1) * (2 * r + 1)) / static_cast<float>(8 * n);
    return k % 2 == 0 ? kfpgCosPi_32f(x) : kfpgSinPi_32f(x);
}

struct BuiltPlan {
    std::vector<unsigned char> block;
    Env1<float>* root = nullptr;
    explicit BuiltPlan(int n) {
        int size = 0;
        kfpgDCT4GetSize_32f(n, &size);
        block.resize(size);
        DCT4Spec_32f* spec = nullptr;
        if (kfpgDCT4Init_32f(&spec, n, block.data()) == StatusOk) root = reinterpret_cast<Env1<float>*>(spec);
    }
};

// Root, F, env2 (S, env4 and its table), env3 (env5) for a split length.
void checkRootTree(int n, int d, int subRule) {
    BuiltPlan plan(n);
    ASSERT_NE(plan.root, nullptr);
    const Env1<float>* root = plan.root;
    const int m = n / (2 * d), M = n / d;
    EXPECT_EQ(root->rule, 6);
    EXPECT_EQ(root->divisor, d);
    ASSERT_EQ(listLength(root->children), 3);
    const auto* f = static_cast<const EnvFCompose*>(EnvList_get(root->children, 0));
    const auto* out = static_cast<const Env2<float>*>(EnvList_get(root->children, 1));
    const auto* in = static_cast<const Env3<float>*>(EnvList_get(root->children, 2));
    EXPECT_EQ(EnvList_get(root->stage2, 0), out);
    EXPECT_EQ(EnvList_get(root->stage1, 0), in);
    EXPECT_EQ(listLength(root->stage2), 1);
    EXPECT_EQ(listLength(root->stage1), 1);

    EXPECT_EQ(sizeOf(f), 56);
    EXPECT_EQ((std::vector<int>{f->twoD, f->eightN, f->m, f->d, f->twoD2}),
              (std::vector<int>{2 * d, 8 * n, m, d, 2 * d}));

    EXPECT_EQ(sizeOf(out), 96);
    EXPECT_EQ((std::vector<int>{out->rule, out->d, out->len, out->twoD, out->m, out->len2, out->lastIndex,
                                out->subSize}),
              (std::vector<int>{1, d, n, 2 * d, m, n, 2 * n - 1, M}));
    EXPECT_EQ(out->twiddle, f);
    EXPECT_EQ(out->buffer, nullptr);
    ASSERT_EQ(listLength(out->children), 2);
    const auto* split = static_cast<const EnvFSplit*>(EnvList_get(out->children, 0));
    const auto* kernel = static_cast<const Env4<float>*>(EnvList_get(out->children, 1));
    EXPECT_EQ(EnvList_get(out->stage, 0), kernel);
    EXPECT_EQ(sizeOf(split), 48);
    EXPECT_EQ(split->twoD, 2 * d);
    EXPECT_EQ(split->groups, m / 4);
    EXPECT_EQ(split->inner, f);
    EXPECT_EQ(sizeOf(kernel), 96);
    EXPECT_EQ((std::vector<int>{kernel->rule, kernel->d, kernel->len, kernel->twoD, kernel->eightD, kernel->groups,
                                kernel->len2, kernel->lastIndex, kernel->subSize}),
              (std::vector<int>{__builtin_ctz(d) + 1, d, n, 2 * d, 8 * d, m / 4, n, 2 * n - 1, M}));
    EXPECT_EQ(kernel->twiddle, split);
    ASSERT_TRUE(aligned32(kernel->table));
    for (int g = 0; g < m / 4; ++g)
        for (int k = 0; k < 2 * d; ++k)
            for (int j = 0; j < 4; ++j) {
                const float want = rootTwiddle(n, d, 4 * g + j, k);
                ASSERT_EQ(kernel->table[(g * 2 * d + k) * 4 + j], want) << "g=" << g << " k=" << k << " j=" << j;
                ASSERT_EQ(owng_TFunc_IIIR_at<float>(split, g, j, k), want);
                ASSERT_EQ(owng_TFunc_IIIR_at<float>(f, 4 * g + j, k, 0), want);
            }

    EXPECT_EQ(sizeOf(in), 88);
    EXPECT_EQ((std::vector<int>{in->rule, in->subSize, in->len, in->lastIndex, in->twoD, in->d, in->len2, in->d2}),
              (std::vector<int>{1, M, n, 2 * n - 1, 2 * d, d, n, d}));
    ASSERT_EQ(listLength(in->children), 1);
    const auto* sub = static_cast<const Env5<float>*>(EnvList_get(in->children, 0));
    EXPECT_EQ(EnvList_get(in->stage, 0), sub);
    EXPECT_EQ(sizeOf(sub), 88);
    EXPECT_EQ((std::vector<int>{sub->rule, sub->subSize, sub->len, sub->lastIndex, sub->twoD, sub->groups, sub->len2,
                                sub->d}),
              (std::vector<int>{subRule, M, n, 2 * n - 1, 2 * d, d / 4, n, d}));
    ASSERT_TRUE(aligned32(root->work));
}

TEST(Dct4PlanTree, Length64) {
    checkRootTree(64, 8, 3);
    // Values of the first and last table vectors.
    BuiltPlan plan(64);
    const auto* kernel = static_cast<const Env4<float>*>(
        EnvList_get(static_cast<const Env2<float>*>(EnvList_get(plan.root->stage2, 0))->stage, 0));
    const float first[4] = {0.99992472f, 0.99932241f, 0.99811810f, 0.99631262f};
    const float last[4] = {0.18303989f, 0.52458972f, 0.79583693f, 0.96043050f};
    for (int j = 0; j < 4; ++j) {
        EXPECT_NEAR(kernel->table[j], first[j], 1e-7);
        EXPECT_NEAR(kernel->table[15 * 4 + j], last[j], 1e-7);
    }
}

TEST(Dct4PlanTree, Length128) { checkRootTree(128, 8, 4); }

TEST(Dct4PlanTree, OddLength65PlansLike64) { checkRootTree(65, 8, 3); }

TEST(Dct4PlanTree, Length4096RecursiveSplit) {
    checkRootTree(4096, 32, 7);
    BuiltPlan plan(4096);
    const auto* in = static_cast<const Env3<float>*>(EnvList_get(plan.root->stage1, 0));
    const auto* sub = static_cast<const Env5<float>*>(EnvList_get(in->stage, 0));
    const auto* split = static_cast<const Env7<float>*>(EnvList_get(sub->stage, 0));
    EXPECT_EQ(EnvList_get(sub->children, 0), split);
    EXPECT_EQ(sizeOf(split), 96);
    EXPECT_EQ((std::vector<int>{split->rule, split->subSize, split->divisor, split->len, split->len2, split->stride,
                                split->workLen, split->interleave}),
              (std::vector<int>{1, 128, 8, 4096, 4096, 64, 4096, 32}));
    ASSERT_EQ(listLength(split->children), 3);
    const auto* lambda = static_cast<const EnvLambda*>(EnvList_get(split->children, 0));
    const auto* output = static_cast<const Env8<float>*>(EnvList_get(split->children, 1));
    const auto* input = static_cast<const Env9<float>*>(EnvList_get(split->children, 2));
    EXPECT_EQ(EnvList_get(split->stage2, 0), output);
    EXPECT_EQ(EnvList_get(split->stage1, 0), input);
    EXPECT_EQ(sizeOf(lambda), 40);
    EXPECT_EQ(lambda->a, 128);
    EXPECT_EQ(lambda->b, 8);
    EXPECT_EQ(owng_TFunc_IIIR_at<float>(lambda, 3, 99, -5), 3.5f / 16);
    EXPECT_EQ(sizeOf(output), 104);
    EXPECT_EQ((std::vector<int>{output->rule, output->divisor, output->workLen, output->interleave, output->rowLanes,
                                output->groups, output->workLen2, output->half, output->last, output->interleave2,
                                output->subSize}),
              (std::vector<int>{3, 8, 4096, 32, 512, 8, 4096, 64, 127, 32, 16}));
    EXPECT_EQ(output->twiddle, lambda);
    // Group g: (cos, sin) of pi n2 (2g+1) / 128 for n2 = 1..7, all lanes alike.
    ASSERT_TRUE(aligned32(output->table));
    const long double pi = std::acos(-1.0L);
    for (int g = 0; g < 8; ++g)
        for (int n2 = 1; n2 < 8; ++n2)
            for (int j = 0; j < 4; ++j) {
                const float* v = output->table + (g * 14 + 2 * (n2 - 1)) * 4;
                const long double angle = pi * n2 * (2 * g + 1) / 128;
                EXPECT_NEAR(v[j], static_cast<double>(std::cos(angle)), 1.2e-7);
                EXPECT_NEAR(v[4 + j], static_cast<double>(std::sin(angle)), 1.2e-7);
                EXPECT_EQ(v[j], v[0]);
            }
    EXPECT_EQ(sizeOf(input), 96);
    EXPECT_EQ((std::vector<int>{input->rule, input->subSize, input->len, input->len2, input->stride,
                                input->parentStride, input->divisor, input->workLen, input->interleave,
                                input->parentInterleave}),
              (std::vector<int>{4, 16, 4096, 4096, 512, 64, 8, 4096, 256, 32}));
    EXPECT_TRUE(aligned32(split->work));
}

// 64f: groups of two lanes, the quotient of F in double precision.
TEST(Dct4PlanTree, Length64In64fUsesTwoLaneGroups) {
    for (int n : {64, 9}) {
        int size = 0;
        ASSERT_EQ(kfpgDCT4GetSize_64f(n, &size), StatusOk);
        std::vector<unsigned char> block(size);
        DCT4Spec_64f* spec = nullptr;
        ASSERT_EQ(kfpgDCT4Init_64f(&spec, n, block.data()), StatusOk);
        const auto* root = reinterpret_cast<const Env1<double>*>(spec);
        const int d = n == 64 ? 8 : 2, m = n / (2 * d);
        EXPECT_EQ(root->divisor, d);
        const auto* out = static_cast<const Env2<double>*>(EnvList_get(root->stage2, 0));
        const auto* kernel = static_cast<const Env4<double>*>(EnvList_get(out->stage, 0));
        const auto* in = static_cast<const Env3<double>*>(EnvList_get(root->stage1, 0));
        const auto* sub = static_cast<const Env5<double>*>(EnvList_get(in->stage, 0));
        EXPECT_EQ(kernel->groups, m / 2);
        EXPECT_EQ(sub->groups, d / 2);
        EXPECT_EQ(sub->subSize, n / d);
        for (int g = 0; g < m / 2; ++g)
            for (int k = 0; k < 2 * d; ++k)
                for (int j = 0; j < 2; ++j) {
                    const int i = 2 * g + j, r = k / 2;
                    const double x = static_cast<double>(2 * (2 * i + 1) * (2 * r + 1)) / (8.0 * n);
                    ASSERT_EQ(kernel->table[(g * 2 * d + k) * 2 + j], k % 2 ? kfpgSinPi_64f(x) : kfpgCosPi_64f(x));
                }
    }
}

TEST(Dct4PlanTree, DirectLengthsHaveNoChildren) {
    for (int n : {2, 4, 8, 16, 32}) {
        BuiltPlan plan(n);
        ASSERT_NE(plan.root, nullptr);
        EXPECT_EQ(listLength(plan.root->children), 0);
        EXPECT_EQ(plan.root->divisor, 0);
    }
}

// ---- the recursive split on its own: R_M of d lanes through env7 -----------

// Long-double R_M of lane r: s[n] = u[r + 2 d n], u the antisymmetric extension.
std::vector<std::complex<long double>> rodftReference(const std::vector<float>& x, int d, int M, int r) {
    const int n = static_cast<int>(x.size());
    const long double pi = std::acos(-1.0L);
    std::vector<std::complex<long double>> out(M / 2);
    for (int k = 0; k < M / 2; ++k)
        for (int j = 0; j < M; ++j) {
            const int p = r + 2 * d * j;
            const long double s = p < n ? x[p] : -x[2 * n - 1 - p];
            const long double a = pi * j * (2 * k + 1) / M;
            out[k] += s * std::complex<long double>(std::cos(a), -std::sin(a));
        }
    return out;
}

class Dct4RecursiveSplit : public ::testing::TestWithParam<std::pair<int, int>> {};

// Sizes 8 and 16 split with d' = 2, size 32 with d' = 4, 128 with d' = 8,
// 1024 with d' = 32 (radix 8 then radix 4).
TEST_P(Dct4RecursiveSplit, ComputesTheOddFrequencyDft) {
    const auto [M, divisor] = GetParam();
    const int d = 4, n = d * M;
    TestArena t(1 << 20);
    auto* split = owngDCT4_32fw7_env7___init__(kfpgArenaMalloc(t.arena, 96), t.arena, M, n, n, 2 * d, n, d);
    ASSERT_EQ(split->plan(split), StatusOk);
    EXPECT_EQ(split->divisor, divisor);
    const auto values = kfpg::ref::randomReals(n, 31u + M);
    std::vector<float> x(values.begin(), values.end());
    std::vector<float> rows(n + 8);
    ASSERT_EQ(owngDCT4_32fw7_env7_compute(split, rows.data(), x.data(), d), StatusOk);
    for (int r = 0; r < d; ++r) {
        const auto want = rodftReference(x, d, M, r);
        long double err = 0, norm = 0;
        for (int k = 0; k < M / 2; ++k) {
            const std::complex<long double> got(rows[(2 * k) * d + r], rows[(2 * k + 1) * d + r]);
            err += std::norm(got - want[k]);
            norm += std::norm(want[k]);
        }
        EXPECT_LE(std::sqrt(err / norm), 3e-7) << "lane " << r;
    }
    // An unplanned split refuses to run.
    split->rule = 0;
    EXPECT_EQ(owngDCT4_32fw7_env7_compute(split, rows.data(), x.data(), d), StatusContextError);
    split->rule = 1;
    split->del(split);
    kfpgArenaFree(t.arena, split, 96);
    EXPECT_EQ(t.used(), 0);
}

INSTANTIATE_TEST_SUITE_P(Divisors, Dct4RecursiveSplit,
                         ::testing::Values(std::pair{8, 2}, std::pair{16, 2}, std::pair{32, 4}, std::pair{128, 8},
                                           std::pair{1024, 32}),
                         [](const auto& info) { return "M" + std::to_string(info.param.first); });

}  // namespace
