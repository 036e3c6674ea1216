#include "calibration/uniform_frame.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <numeric>

#include "failure.h"

namespace nerova_zel {

namespace {

constexpr int least_size = 8;

/** How many pixels have each value. */
using Histogram = std::vector<std::uint64_t>;

/** Least value that at least half of the counted pixels do not exceed. */
template <class Count>
int median(int values, const Count& count) {
  std::uint64_t all = 0;
  for (int value = 0; value < values; ++value) {
    all += count(value);
  }
  std::uint64_t below = 0;
  int value = 0;
  for (; value < values - 1; ++value) {
    below += count(value);
    if (2 * below >= all) {
      break;
    }
  }
  return value;
}

/** Mean of the values within six standard deviations of the median, as the median deviation estimates them. */
double robust_mean(const Histogram& histogram) {
  constexpr double deviations_per_median = 1.4826;  // of the normal distribution
  const auto values = static_cast<int>(histogram.size());
  const auto count = [&](int value) {
    return value >= 0 && value < values ? histogram[static_cast<std::size_t>(value)] : 0;
  };
  const int middle = median(values, count);
  const int deviation = median(
      values, [&](int distance) { return count(middle - distance) + (distance > 0 ? count(middle + distance) : 0); });
  const int limit = std::max(2, static_cast<int>(std::ceil(6.0 * deviations_per_median * deviation)));
  double sum = 0.0;
  double kept = 0.0;
  for (int value = std::max(0, middle - limit); value <= std::min(values - 1, middle + limit); ++value) {
    sum += static_cast<double>(value) * static_cast<double>(count(value));
    kept += static_cast<double>(count(value));
  }
  return sum / kept;
}

std::vector<double> tile_means(const RawFrame& frame) {
  const int across = std::min(8, frame.width / 4);
  const int down = std::min(8, frame.height / 4);
  const int tile_width = frame.width / across / 2 * 2;
  const int tile_height = frame.height / down / 2 * 2;
  std::vector<double> means;
  for (int row = 0; row < down; ++row) {
    for (int column = 0; column < across; ++column) {
      double sum = 0.0;
      for (int y = row * tile_height; y < (row + 1) * tile_height; ++y) {
        const std::uint16_t* first = frame.pixels.data() + static_cast<std::ptrdiff_t>(y) * frame.width +
                                     static_cast<std::ptrdiff_t>(column) * tile_width;
        sum = std::accumulate(first, first + tile_width, sum);
      }
      means.push_back(sum / (tile_width * tile_height));
    }
  }
  return means;
}

}  // namespace

UniformFrame measure_uniform_frame(const std::string& name, const RawFrame& pixels, const FrameGeometry& geometry) {
  if (pixels.width < least_size || pixels.height < least_size) {
    throw Failure(name + " is " + std::to_string(pixels.width) + " x " + std::to_string(pixels.height) +
                  " pixels; calibration needs at least 8 x 8.");
  }
  const int full_scale = (1 << geometry.bit_depth) - 1;
  std::array<Histogram, 4> histograms;
  histograms.fill(Histogram(static_cast<std::size_t>(full_scale) + 1));
  std::size_t at = 0;
  for (int y = 0; y < pixels.height; ++y) {
    for (int x = 0; x < pixels.width; ++x, ++at) {
      if (pixels.pixels[at] > full_scale) {
        throw Failure(name + " holds the pixel value " + std::to_string(pixels.pixels[at]) +
                          ", which exceeds the full scale of " + std::to_string(geometry.bit_depth) + " bits.",
                      Fact::value_too_great);
      }
      const int angle = geometry.layout.angle_at(geometry.origin.x + x, geometry.origin.y + y);
      ++histograms[static_cast<std::size_t>(angle / 45)][pixels.pixels[at]];
    }
  }
  UniformFrame result{name, pixels.width, pixels.height, {}, tile_means(pixels), 0.0};
  for (std::size_t k = 0; k < 4; ++k) {
    result.level[k] = robust_mean(histograms[k]);
    result.saturated += static_cast<double>(histograms[k].back()) / static_cast<double>(pixels.pixels.size());
  }
  return result;
}

double unevenness(const UniformFrame& frame, const PerPolarizer& dark) {
  const auto [least, greatest] = std::minmax_element(frame.tiles.begin(), frame.tiles.end());
  const double mean =
      std::accumulate(frame.tiles.begin(), frame.tiles.end(), 0.0) / static_cast<double>(frame.tiles.size());
  return (*greatest - *least) / (mean - std::accumulate(dark.begin(), dark.end(), 0.0) / 4.0);
}

}  // namespace nerova_zel
