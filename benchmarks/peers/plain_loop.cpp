#include "peers/plain_loop.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace nerova_zel::benchmark {

namespace {

/** Where each polarizer lies in the 2 x 2 super-pixel of a phase, as 2 * (row & 1) + (column & 1). */
struct Layout {
  unsigned i0;
  unsigned i45;
  unsigned i90;
  unsigned i135;
};

constexpr Layout layouts[4] = {{0, 2, 3, 1}, {2, 0, 1, 3}, {3, 1, 0, 2}, {1, 3, 2, 0}};

std::uint16_t to_output(float value, float maximum) {
  return static_cast<std::uint16_t>(std::lrintf(std::clamp(value, 0.0F, maximum)));
}

}  // namespace

void plain_loop(const TransformParameters& p) {
  const Layout layout = layouts[p.phase];
  const auto width = static_cast<std::size_t>(p.width);
  const auto height = static_cast<std::size_t>(p.height);
  const float gain = p.output_maximum / p.input_maximum;
  for (std::size_t y = 0; y < height; ++y) {
    const std::size_t partner_y = y + 1 < height ? y + 1 : y - 1;
    for (std::size_t x = 0; x < width; ++x) {
      const std::size_t partner_x = x + 1 < width ? x + 1 : x - 1;
      float samples[4];
      const auto parity = static_cast<unsigned>(2 * (y & 1U) + (x & 1U));
      samples[parity] = p.input[y * width + x];
      samples[parity ^ 1U] = p.input[y * width + partner_x];
      samples[parity ^ 2U] = p.input[partner_y * width + x];
      samples[parity ^ 3U] = p.input[partner_y * width + partner_x];
      const float power = (samples[0] + samples[1] + samples[2] + samples[3]) / 2;
      const float s1 = samples[layout.i0] - samples[layout.i90];
      const float s2 = samples[layout.i45] - samples[layout.i135];
      const std::size_t element = y * width + x;
      if (p.images.normalized_stokes != nullptr) {
        p.images.normalized_stokes[2 * element] = s1 / power;
        p.images.normalized_stokes[2 * element + 1] = s2 / power;
      }
      if (p.images.total_power != nullptr) {
        p.images.total_power[element] = to_output(power * gain, p.output_maximum);
      }
      if (p.images.horizontal_vertical != nullptr) {
        p.images.horizontal_vertical[element] = to_output(s1 * gain, p.output_maximum);
      }
      if (p.images.diagonal != nullptr) {
        p.images.diagonal[element] = to_output(s2 * gain, p.output_maximum);
      }
      if (p.images.azimuth != nullptr) {
        const float turns = std::atan2(s2, s1) / (2 * 3.14159265F) + 0.5F;
        p.images.azimuth[element] = to_output(turns * p.output_maximum, p.output_maximum);
      }
      if (p.images.degree_of_linear_polarization != nullptr) {
        const float degree = power > 0 ? std::sqrt(s1 * s1 + s2 * s2) / power : 0;
        p.images.degree_of_linear_polarization[element] = to_output(degree * p.output_maximum, p.output_maximum);
      }
    }
  }
}

}  // namespace nerova_zel::benchmark
