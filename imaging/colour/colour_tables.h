#pragma once

#include <cstdint>
#include <vector>

namespace nerova_zel {

/** An sRGB colour of 8 bits a channel. */
struct Rgb {
  std::uint8_t red = 0;
  std::uint8_t green = 0;
  std::uint8_t blue = 0;
};

constexpr bool operator==(const Rgb& a, const Rgb& b) {
  return a.red == b.red && a.green == b.green && a.blue == b.blue;
}

// Colours come from tables and a value takes the nearest entry: docs/pictures.md has the formulas, docs/colour-tables
// the entries. Arguments outside their range count as its ends; NaN counts as 0. Thread-safe.

/** The tables, as docs/pictures.md calls them. */
enum class ColourTable { grey, hue, sequential, diverging };

/** All entries of a table, the first is that of the lowest value. */
std::vector<Rgb> entries_of(ColourTable table);

/** Light of relative intensity 0 to 1 as grey, by the transfer curve of sRGB so that it looks as bright as it is. */
Rgb grey(double intensity);

/** 0 to 1 from dark violet to yellow, evenly rising in lightness. */
Rgb sequential(double value);

/** -1 to 1 from blue over near-white at 0 to red. */
Rgb diverging(double value);

/** An angle in degrees as hue, periodic with 180 degrees and red at 0. */
Rgb hue(double angle_degrees);

}  // namespace nerova_zel
