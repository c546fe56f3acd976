// cos(pi x) and sin(pi x): the only source of transcendental values in the
// DCT-IV plans. The 32f twins widen x, multiply by pi in double, narrow the
// product back to float and call the single-precision function.
#pragma once

namespace kfpg::dct4 {

float kfpgCosPi_32f(float x);
float kfpgSinPi_32f(float x);
double kfpgCosPi_64f(double x);
double kfpgSinPi_64f(double x);

inline float cosPi(float x) { return kfpgCosPi_32f(x); }
inline float sinPi(float x) { return kfpgSinPi_32f(x); }
inline double cosPi(double x) { return kfpgCosPi_64f(x); }
inline double sinPi(double x) { return kfpgSinPi_64f(x); }

}  // namespace kfpg::dct4
