// Where colour scales end, and the numbers at them.
#include <gtest/gtest.h>

#include "sheet_drawing.h"
#include "sheet_planes.h"

namespace nerova_zel::test {
namespace {

/** 1000 values: `most` but for `beyond` of them, which are 1. */
cv::Mat plane(double most, int beyond) {
  cv::Mat values(10, 100, CV_32F, cv::Scalar(most));
  for (int i = 0; i < beyond; ++i) {
    values.at<float>(i / 100, i % 100) = 1.0F;
  }
  return values;
}

TEST(Scales, EndsAreRoundAndLeaveOutOneValueInTwoHundred) {
  EXPECT_EQ(light_end(plane(0.004, 0)), 0.01);
  EXPECT_EQ(light_end(plane(0.011, 0)), 0.02);
  EXPECT_EQ(light_end(plane(0.29, 5)), 0.3);
  EXPECT_EQ(light_end(plane(0.29, 6)), 1.0);
  EXPECT_EQ(light_end(plane(0.61, 0)), 0.8);
  EXPECT_EQ(light_end(plane(0.81, 0)), 1.0);
}

TEST(Scales, TheDegreeCountsWhereThereIsLight) {
  SheetPlanes planes;
  planes.power = plane(0.5, 0);
  planes.degree = plane(0.15, 0);
  planes.power(cv::Rect(0, 0, 100, 3)).setTo(0.02F);  // below a twentieth of the light's end
  planes.degree(cv::Rect(0, 0, 100, 3)).setTo(0.9F);
  EXPECT_EQ(degree_end(planes), 0.2);
  planes.power(cv::Rect(0, 0, 100, 3)).setTo(0.03F);  // above it
  EXPECT_EQ(degree_end(planes), 1.0);
  planes.power.setTo(0.5F);
  EXPECT_EQ(degree_end(planes), 1.0);
  planes.degree.setTo(0.001F);
  EXPECT_EQ(degree_end(planes), 0.05);
}

TEST(Scales, NumbersStandWhereTheirValuesAre) {
  const std::vector<Tick> light = even_ticks(0.0, 100.0 * 0.3, 4, percent);
  ASSERT_EQ(light.size(), 5U);
  const char* const labels[] = {"0 %", "7.5 %", "15 %", "22.5 %", "30 %"};
  for (std::size_t i = 0; i < 5; ++i) {
    EXPECT_EQ(light[i].label, labels[i]);
    EXPECT_EQ(light[i].place, 0.25 * static_cast<double>(i));
  }
  EXPECT_EQ(even_ticks(-0.2, 0.2, 2, short_number)[0].label, "-0.2");
  EXPECT_EQ(short_number(1.0), "1");
  EXPECT_EQ(short_number(0.125), "0.12");
  EXPECT_EQ(short_number(-0.001), "0");
}

}  // namespace
}  // namespace nerova_zel::test
