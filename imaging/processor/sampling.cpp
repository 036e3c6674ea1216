#include "processor/sampling.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace nerova_zel {

namespace {

/** The mean over the windows that hold each pixel of a row; beyond the edges windows are mirrored, as samples are. */
void average_row(const float* plane, int width, int y, float* result) {
  const float* const lower = plane + static_cast<std::ptrdiff_t>(y) * width;
  const float* const upper = y > 0 ? lower - width : lower;
  result[0] = 0.5F * (upper[0] + lower[0]);
  for (int x = 1; x < width; ++x) {
    result[x] = 0.25F * ((upper[x - 1] + upper[x]) + (lower[x - 1] + lower[x]));
  }
}

/** NaN becomes the maximum, as in the library. */
std::uint16_t code(double value, double maximum) {
  const double limited = value < maximum ? value : maximum;
  return static_cast<std::uint16_t>(std::lrint(limited > 0.0 ? limited : 0.0));
}

/** One row of P, S1 and S2. */
struct StokesRow {
  std::vector<float> s0;
  std::vector<float> s1;
  std::vector<float> s2;
};

void write_row(const StokesRow& row, std::size_t first, double full_scale, double power_scale,
               const ImageBuffers& images) {
  const Outputs& library = images.library;
  const double maximum = library.output_maximum;
  const std::size_t width = row.s0.size();
  std::vector<float> pairs(2 * width);
  std::vector<float> angles(width);
  for (std::size_t x = 0; x < width; ++x) {
    pairs[2 * x] = row.s1[x] / row.s0[x];
    pairs[2 * x + 1] = row.s2[x] / row.s0[x];
  }
  angles_of_pairs(pairs.data(), width, angles.data());
  const auto put = [&](std::uint16_t* image, const auto& value) {
    for (std::size_t x = 0; image != nullptr && x < width; ++x) {
      image[first + x] = code(value(x), maximum);
    }
  };
  put(library.total_power.data(), [&](std::size_t x) { return row.s0[x] * maximum / power_scale; });
  put(library.horizontal_vertical.data(), [&](std::size_t x) { return row.s1[x] * maximum / full_scale; });
  put(library.diagonal.data(), [&](std::size_t x) { return row.s2[x] * maximum / full_scale; });
  // Where P is 0, the azimuth is that of the angle 0.
  put(library.azimuth.data(), [&](std::size_t x) {
    const double angle = std::isnan(angles[x]) ? 0.0 : static_cast<double>(angles[x]);
    return (angle > 90.0 ? angle - 90.0 : angle + 90.0) * maximum / 180.0;
  });
  put(library.degree_of_linear_polarization.data(),
      [&](std::size_t x) { return row.s0[x] == 0.0F ? 0.0 : std::hypot(row.s1[x], row.s2[x]) / row.s0[x] * maximum; });
  const auto copy = [&](float* image, const std::vector<float>& values, std::size_t channels) {
    if (image != nullptr) {
      std::copy(values.begin(), values.end(), image + channels * first);
    }
  };
  copy(library.normalized_stokes.data(), pairs, 2);
  copy(images.planes.s0, row.s0, 1);
  copy(images.planes.s1, row.s1, 1);
  copy(images.planes.s2, row.s2, 1);
  copy(images.angle, angles, 1);
}

}  // namespace

void compute_bilinear(const WindowPlanes& windows, double full_scale, double power_scale, const ImageBuffers& images) {
  const auto width = static_cast<std::size_t>(windows.width);
  StokesRow row{std::vector<float>(width), std::vector<float>(width), std::vector<float>(width)};
  for (int y = 0; y < windows.height; ++y) {
    average_row(windows.s0, windows.width, y, row.s0.data());
    average_row(windows.s1, windows.width, y, row.s1.data());
    average_row(windows.s2, windows.width, y, row.s2.data());
    write_row(row, static_cast<std::size_t>(y) * width, full_scale, power_scale, images);
  }
}

}  // namespace nerova_zel
