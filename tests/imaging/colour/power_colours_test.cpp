#include "power_colours.h"

#include <gtest/gtest.h>

#include "colour_tables.h"

namespace nerova_zel::test {
namespace {

// The light of the second pixel reaches the limit in one colour and counts for none.
TEST(PowerColours, GreyWorldMakesMeansEqual) {
  const std::uint16_t red[] = {100, 200, 300};
  const std::uint16_t green1[] = {390, 4095, 800};
  const std::uint16_t green2[] = {410, 10, 800};
  const std::uint16_t blue[] = {100, 4000, 700};
  const WhiteBalance balance = grey_world({red, green1, green2, blue, 3}, 4095);
  EXPECT_DOUBLE_EQ(balance.red, 3.0);
  EXPECT_DOUBLE_EQ(balance.green, 1.0);
  EXPECT_DOUBLE_EQ(balance.blue, 1.5);
  const std::uint16_t none[] = {0, 0, 0};
  EXPECT_EQ(grey_world({none, green1, green2, blue, 3}, 4095).red, 1.0);
  EXPECT_EQ(grey_world({red, none, none, blue, 3}, 4095).red, 1.0);
}

TEST(PowerColours, ChannelsShowTheirLightTimesTheBalance) {
  const std::uint16_t red[] = {0, 1000, 4095};
  const std::uint16_t green1[] = {0, 1000, 100};
  const std::uint16_t green2[] = {0, 1001, 300};
  const std::uint16_t blue[] = {0, 500, 65535};
  std::uint8_t colours[9] = {};
  PowerColours({2.0, 1.0, 0.5}, 4095, 0.8).paint({red, green1, green2, blue, 3}, colours);
  const double end = 0.8 * 4095;
  const std::uint8_t expected[] = {
      0, 0, 0, grey(2000 / end).red, grey(1001 / end).red, grey(250 / end).red, 255, grey(200 / end).red, 255};
  for (std::size_t i = 0; i < 9; ++i) {
    EXPECT_EQ(colours[i], expected[i]) << i;
  }
}

}  // namespace
}  // namespace nerova_zel::test
