#pragma once

namespace nerova_zel {

constexpr double pi = 3.14159265358979323846;
constexpr double degrees_per_radian = 180.0 / pi;

}  // namespace nerova_zel
