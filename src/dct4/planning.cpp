// Divisor and rule choices shared by both precisions.
#include "dct4/envs.h"

namespace kfpg::dct4 {

KfpStatus divisorsIntNonTriv(std::int32_t* out, std::int32_t n) {
    // A larger divisor is preferred, each allowed from its own threshold on.
    static constexpr struct {
        int divisor, from;
    } kChoices[] = {{32, 512}, {16, 128}, {8, 32}, {4, 16}, {2, 4}};
    for (const auto& c : kChoices)
        if (n >= c.from && n % c.divisor == 0) {
            *out = c.divisor;
            return StatusOk;
        }
    return StatusSizeError;
}

int chooseRule(int n) {
    for (int rule = 1, size = 2; rule <= 5; ++rule, size *= 2)
        if (n == size) return rule;
    return 0;
}

}  // namespace kfpg::dct4
