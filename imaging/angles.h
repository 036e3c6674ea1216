#pragma once

#include <cmath>

namespace nerova_zel {

constexpr double pi = 3.14159265358979323846;
constexpr double degrees_per_radian = 180.0 / pi;

/** Of a vector in the plane whose squares neither overflow nor vanish. std::hypot would need a newer C library. */
inline double length_of(double x, double y) { return std::sqrt(x * x + y * y); }

}  // namespace nerova_zel
