#include "colour_tables.h"

#include <gtest/gtest.h>

#include <fstream>
#include <limits>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

namespace nerova_zel {

void PrintTo(const Rgb& colour, std::ostream* out) {
  *out << int{colour.red} << "," << int{colour.green} << "," << int{colour.blue};
}

namespace test {
namespace {

/** A table as it is published with the documents. */
std::vector<Rgb> published(const std::string& name) {
  std::ifstream file(std::string(NEROVA_COLOUR_TABLES) + "/" + name + ".csv");
  std::string line;
  std::getline(file, line);
  std::vector<Rgb> colours;
  while (std::getline(file, line)) {
    std::istringstream text(line);
    int red = 0;
    int green = 0;
    int blue = 0;
    char comma = 0;
    text >> red >> comma >> green >> comma >> blue;
    colours.push_back(
        {static_cast<std::uint8_t>(red), static_cast<std::uint8_t>(green), static_cast<std::uint8_t>(blue)});
  }
  return colours;
}

/** Each entry is what a value near its place gives, and changes half way to the next. */
template <class ColourOf>
void check_table(const char* name, std::size_t entries, double first, double last, const ColourOf& colour_of) {
  const std::vector<Rgb> table = published(name);
  ASSERT_EQ(table.size(), entries);
  const double step = (last - first) / static_cast<double>(entries - 1);
  for (std::size_t i = 0; i < entries; ++i) {
    const double place = first + step * static_cast<double>(i);
    EXPECT_EQ(colour_of(place), table[i]) << name << " " << i;
    EXPECT_EQ(colour_of(place - 0.49 * step), table[i]) << name << " " << i;
    EXPECT_EQ(colour_of(place + 0.49 * step), table[i]) << name << " " << i;
  }
  EXPECT_EQ(colour_of(last + 1000 * step), table.back());
  EXPECT_EQ(colour_of(-std::numeric_limits<double>::infinity()), table.front());
  EXPECT_EQ(colour_of(std::numeric_limits<double>::quiet_NaN()), colour_of(0.0));
}

TEST(ColourTables, ScalesAreThePublishedOnes) {
  check_table("grey", 4096, 0.0, 1.0, grey);
  check_table("sequential", 256, 0.0, 1.0, sequential);
  check_table("diverging", 257, -1.0, 1.0, diverging);
}

TEST(ColourTables, HuesTurnWithTheAngle) {
  const std::vector<Rgb> table = published("hue");
  ASSERT_EQ(table.size(), 1530U);
  for (int entry = -1530; entry < 3 * 1530; ++entry) {
    EXPECT_EQ(hue(180.0 / 1530 * entry), table[static_cast<std::size_t>((entry + 1530) % 1530)]) << entry;
  }
  EXPECT_EQ(hue(-0.01), table[0]);
  EXPECT_EQ(hue(std::numeric_limits<double>::quiet_NaN()), table[0]);
}

}  // namespace
}  // namespace test
}  // namespace nerova_zel
