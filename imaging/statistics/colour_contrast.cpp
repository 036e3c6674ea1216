#include "statistics/colour_contrast.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace nerova_zel {

namespace {

constexpr int tiles_a_side = 8;
constexpr int least_tile = 16;
constexpr int most_tile = 64;  // of larger tiles a part tells enough

/** Tiles along one side of a frame, aligned with the pattern of the sensor. */
struct Tiling {
  int first;
  int step;
  int length;
  int count;
};

Tiling tiling_of(int pixels, int origin) {
  const int first = (4 - origin % 4) % 4;
  const int step = std::max(least_tile, (pixels - first) / tiles_a_side / 4 * 4);
  return {first, step, std::min(step, most_tile), std::max(0, std::min(tiles_a_side, (pixels - first) / step))};
}

/** Light of the four cells of a pattern whose top-left pixel is `pixel`. */
std::array<std::uint32_t, 4> cells_of(const std::uint16_t* pixel, int width) {
  std::array<std::uint32_t, 4> cells{};
  for (std::size_t y = 0; y < 4; ++y, pixel += width) {
    for (std::size_t x = 0; x < 4; ++x) {
      cells[y / 2 * 2 + x / 2] += pixel[x];
    }
  }
  return cells;
}

/** The mean of a cell by itself follows the scene; its difference from the mean of the pattern does not. */
std::optional<ColourContrast> measure_tile(const std::uint16_t* corner, int width, int tile_width, int tile_height,
                                           int full_scale) {
  std::array<double, 4> sums{};
  double squares = 0.0;
  double light = 0.0;
  double patterns = 0.0;
  for (int y = 0; y < tile_height; y += 4) {
    for (int x = 0; x < tile_width; x += 4, ++patterns) {
      const auto cells = cells_of(corner + static_cast<std::ptrdiff_t>(y) * width + x, width);
      const double mean = 0.25 * (cells[0] + cells[1] + cells[2] + cells[3]);
      light += mean;
      for (std::size_t i = 0; i < 4; ++i) {
        sums[i] += cells[i] - mean;
        squares += (cells[i] - mean) * (cells[i] - mean);
      }
    }
  }
  const double share = light / patterns / (4.0 * full_scale);
  if (share < 0.005 || share > 0.95) {
    return std::nullopt;
  }
  double explained = 0.0;
  for (const double sum : sums) {
    explained += sum * sum / patterns;
  }
  const auto [least, greatest] = std::minmax_element(sums.begin(), sums.end());
  const double deviation = std::sqrt(std::max(0.0, squares - explained) / (3.0 * (patterns - 1.0)));
  return ColourContrast{(*greatest - *least) / light, deviation * std::sqrt(patterns) / light};
}

double median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

}  // namespace

// No filters are so alike as to pass the same light to within a hundredth, and the shot noise of usable frames is less.
bool ColourContrast::is_grey() const { return uncertainty < 0.01 && contrast < 0.01 + 3.0 * uncertainty; }

bool ColourContrast::is_colour() const { return contrast > 0.04 + 4.0 * uncertainty; }

std::optional<ColourContrast> measure_colour_contrast(const RawFrame& frame, const Origin& origin, int full_scale) {
  const Tiling columns = tiling_of(frame.width, origin.x);
  const Tiling rows = tiling_of(frame.height, origin.y);
  std::vector<double> contrasts;
  std::vector<double> uncertainties;
  for (int row = 0; row < rows.count; ++row) {
    for (int column = 0; column < columns.count; ++column) {
      const std::ptrdiff_t x = columns.first + column * columns.step;
      const std::ptrdiff_t y = rows.first + row * rows.step;
      const std::uint16_t* const corner = frame.pixels.data() + y * frame.width + x;
      const auto tile = measure_tile(corner, frame.width, columns.length, rows.length, full_scale);
      if (tile) {
        contrasts.push_back(tile->contrast);
        uncertainties.push_back(tile->uncertainty);
      }
    }
  }
  if (contrasts.empty()) {
    return std::nullopt;
  }
  return ColourContrast{median(std::move(contrasts)), median(std::move(uncertainties))};
}

}  // namespace nerova_zel
