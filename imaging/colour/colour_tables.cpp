#include "colour_tables.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

#include "sequential_table.h"

namespace nerova_zel {

namespace {

// So many that no step is wider than one of 8 bits: greys climb 12.92 times as fast as light from black, and a turn of
// hues has six flanks of 255 steps. The diverging table has a middle.
constexpr int greys = 4096;
constexpr int hues = 6 * 255;
constexpr int diverging_colours = 257;

double limited(double value, double least, double greatest) {
  return std::isnan(value) ? 0.0 : std::clamp(value, least, greatest);
}

std::uint8_t to_byte(double value) { return static_cast<std::uint8_t>(std::lrint(value)); }

template <int count>
using Table = std::array<Rgb, static_cast<std::size_t>(count)>;

template <int count, class ColourOf>
Table<count> make_table(const ColourOf& colour_of) {
  Table<count> table;
  for (int i = 0; i < count; ++i) {
    table[static_cast<std::size_t>(i)] = colour_of(i);
  }
  return table;
}

/** The entry nearest to a place from 0 (the first) to 1 (the last). */
template <std::size_t count>
Rgb at(const std::array<Rgb, count>& table, double place) {
  return table[static_cast<std::size_t>(std::lround(static_cast<double>(count - 1) * place))];
}

Rgb grey_entry(int entry) {
  const double linear = static_cast<double>(entry) / (greys - 1);
  const double encoded = linear <= 0.0031308 ? 12.92 * linear : 1.055 * std::pow(linear, 1.0 / 2.4) - 0.055;
  const std::uint8_t level = to_byte(255.0 * encoded);
  return {level, level, level};
}

Rgb diverging_entry(int entry) {
  // From the middle outwards; either side falls in lightness alike.
  static constexpr std::array<std::array<double, 3>, 4> blues = {
      {{246, 246, 246}, {150, 196, 222}, {62, 130, 190}, {8, 42, 98}}};
  static constexpr std::array<std::array<double, 3>, 4> reds = {
      {{246, 246, 246}, {244, 168, 132}, {208, 78, 66}, {100, 2, 32}}};
  constexpr int middle = diverging_colours / 2;
  const auto& side = entry < middle ? blues : reds;
  const double place = 3.0 * std::abs(entry - middle) / middle;
  const auto from = std::min<std::size_t>(2, static_cast<std::size_t>(place));
  const double share = place - static_cast<double>(from);
  const auto mix = [&](std::size_t channel) {
    return to_byte(side[from][channel] + share * (side[from + 1][channel] - side[from][channel]));
  };
  return {mix(0), mix(1), mix(2)};
}

Rgb hue_entry(int entry) {
  const auto channel = [&](int centre) {
    const int distance = std::abs(entry - centre);
    return static_cast<std::uint8_t>(std::clamp(510 - std::min(distance, hues - distance), 0, 255));
  };
  return {channel(0), channel(2 * 255), channel(4 * 255)};
}

const Table<greys>& grey_table() {
  static const Table<greys> table = make_table<greys>(grey_entry);
  return table;
}

const Table<diverging_colours>& diverging_table() {
  static const Table<diverging_colours> table = make_table<diverging_colours>(diverging_entry);
  return table;
}

const Table<hues>& hue_table() {
  static const Table<hues> table = make_table<hues>(hue_entry);
  return table;
}

template <std::size_t count>
std::vector<Rgb> list_of(const std::array<Rgb, count>& table) {
  return {table.begin(), table.end()};
}

}  // namespace

std::vector<Rgb> entries_of(ColourTable table) {
  switch (table) {
    case ColourTable::grey:
      return list_of(grey_table());
    case ColourTable::hue:
      return list_of(hue_table());
    case ColourTable::sequential:
      return list_of(sequential_table);
    case ColourTable::diverging:
      break;
  }
  return list_of(diverging_table());
}

Rgb grey(double intensity) { return at(grey_table(), limited(intensity, 0.0, 1.0)); }

Rgb sequential(double value) { return at(sequential_table, limited(value, 0.0, 1.0)); }

Rgb diverging(double value) { return at(diverging_table(), 0.5 + 0.5 * limited(value, -1.0, 1.0)); }

Rgb hue(double angle_degrees) {
  const double turns = angle_degrees / 180.0;
  const double turn = limited(turns - std::floor(turns), 0.0, 1.0);
  return hue_table()[static_cast<std::size_t>(std::lround(hues * turn) % hues)];
}

}  // namespace nerova_zel
