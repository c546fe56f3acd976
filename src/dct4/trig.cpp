#include "dct4/trig.h"

#include <cmath>

namespace kfpg::dct4 {

namespace {
constexpr double kPi = 3.141592653589793;
}

float kfpgCosPi_32f(float x) { return std::cos(static_cast<float>(static_cast<double>(x) * kPi)); }
float kfpgSinPi_32f(float x) { return std::sin(static_cast<float>(static_cast<double>(x) * kPi)); }
double kfpgCosPi_64f(double x) { return std::cos(x * kPi); }
double kfpgSinPi_64f(double x) { return std::sin(x * kPi); }

}  // namespace kfpg::dct4
