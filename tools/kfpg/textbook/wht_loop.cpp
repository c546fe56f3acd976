#include "wht_loop.h"

namespace kfpg::textbook {

namespace {
template <class T>
void radix2(T* x, int n) {
    for (int h = 1; h < n; h *= 2)
        for (int i = 0; i < n; i += 2 * h)
            for (int j = i; j < i + h; ++j) {
                const T a = x[j], b = x[j + h];
                x[j] = a + b;
                x[j + h] = a - b;
            }
}
}  // namespace

void walshHadamardInPlace(float* x, int n) { radix2(x, n); }
void walshHadamardInPlace(double* x, int n) { radix2(x, n); }

}  // namespace kfpg::textbook
