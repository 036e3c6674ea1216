#include "video/panels.h"

#include <algorithm>

namespace nerova_zel {

namespace {

constexpr std::size_t pixel_bytes = 3;
/** Pixels worked on at once: every second of an image, collected. */
constexpr std::size_t block = 256;

/** Greys first, then colours: compilers make vector code of each loop alone. At most a block. */
void paint_grey(const std::uint16_t* values, std::size_t count, double white, std::uint8_t* colours) {
  const auto scale = static_cast<float>(255.0 / white);
  std::uint8_t greys[block];
  for (std::size_t i = 0; i < count; ++i) {
    greys[i] = static_cast<std::uint8_t>(std::min(255.0F, scale * static_cast<float>(values[i]) + 0.5F));
  }
  for (std::size_t i = 0; i < count; ++i) {
    colours[pixel_bytes * i] = greys[i];
    colours[pixel_bytes * i + 1] = greys[i];
    colours[pixel_bytes * i + 2] = greys[i];
  }
}

void collect(const std::uint16_t* every_second, std::size_t count, std::uint16_t* values) {
  for (std::size_t i = 0; i < count; ++i) {
    values[i] = every_second[2 * i];
  }
}

void paint_raw(const PanelRows& rows, std::size_t at, std::size_t count, int full_scale, std::uint8_t* colours) {
  std::uint16_t brightest[block];
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t x = at + 2 * i;
    brightest[i] = std::max(std::max(rows.raw[0][x], rows.raw[0][x + 1]), std::max(rows.raw[1][x], rows.raw[1][x + 1]));
  }
  paint_grey(brightest, count, full_scale, colours);
  for (std::size_t i = 0; i < count; ++i) {
    if (brightest[i] >= full_scale) {
      std::uint8_t* const pixel = colours + pixel_bytes * i;
      pixel[0] = 255;
      pixel[1] = 0;
      pixel[2] = 0;
    }
  }
}

}  // namespace

void paint_panel_rows(const PanelRows& rows, const PanelScales& scales, const AzimuthColours& colours,
                      std::size_t count, std::uint8_t* upper, std::uint8_t* lower) {
  const std::size_t right = pixel_bytes * count;
  std::uint16_t power[block];
  std::uint16_t azimuth[block];
  std::uint16_t degree[block];
  for (std::size_t first = 0; first < count; first += block) {
    const std::size_t part = std::min(block, count - first);
    const std::size_t to = pixel_bytes * first;
    collect(rows.power + 2 * first, part, power);
    collect(rows.azimuth + 2 * first, part, azimuth);
    collect(rows.degree + 2 * first, part, degree);
    paint_grey(power, part, scales.output_maximum * scales.power_end, upper + to);
    colours.paint(azimuth, degree, power, part, upper + right + to);
    paint_grey(degree, part, scales.output_maximum * scales.degree_end, lower + to);
    paint_raw(rows, 2 * first, part, scales.full_scale, lower + right + to);
  }
}

}  // namespace nerova_zel
