#include "power_colours.h"

#include <algorithm>

#include "colour_tables.h"

namespace nerova_zel {

namespace {

int green_of(const ColourPower& power, std::size_t i) { return (power.green1[i] + power.green2[i] + 1) / 2; }

}  // namespace

WhiteBalance grey_world(const ColourPower& power, int output_maximum) {
  std::array<double, 3> sums{};
  for (std::size_t i = 0; i < power.pixels; ++i) {
    if (std::max({power.red[i], power.green1[i], power.green2[i], power.blue[i]}) < output_maximum) {
      sums[0] += power.red[i];
      sums[1] += green_of(power, i);
      sums[2] += power.blue[i];
    }
  }
  if (sums[1] == 0.0) {
    return {};
  }
  return {sums[0] > 0.0 ? sums[1] / sums[0] : 1.0, 1.0, sums[2] > 0.0 ? sums[1] / sums[2] : 1.0};
}

PowerColours::PowerColours(const WhiteBalance& balance, int output_maximum, double power_end) {
  const std::array<double, 3> gains = {balance.red, balance.green, balance.blue};
  for (std::size_t channel = 0; channel < gains.size(); ++channel) {
    tables_[channel].resize(65536);
    for (std::size_t value = 0; value < tables_[channel].size(); ++value) {
      tables_[channel][value] = grey(gains[channel] * static_cast<double>(value) / (output_maximum * power_end)).red;
    }
  }
}

void PowerColours::paint(const ColourPower& power, std::uint8_t* colours) const {
  for (std::size_t i = 0; i < power.pixels; ++i, colours += 3) {
    colours[0] = tables_[0][power.red[i]];
    colours[1] = tables_[1][static_cast<std::size_t>(green_of(power, i))];
    colours[2] = tables_[2][power.blue[i]];
  }
}

}  // namespace nerova_zel
