// Four discs of polarizer film photographed with a real camera; the picture lies outside the project.
#include <cmath>
#include <cstdlib>

#include "angles.h"
#include "picture_file.h"
#include "tool_run.h"

namespace nerova_zel::test {
namespace {

using RealFrameTest = ToolTest;

struct Disc {
  int x;
  int y;
  double angle;
  double degree;
};

TEST_F(RealFrameTest, DiscsShowTheirAnglesAndDegrees) {
  const char* directory = std::getenv("NEROVA_FRAMES_DIR");
  const std::string frame =
      std::string(directory != nullptr ? directory : NEROVA_DEFAULT_FRAMES_DIR) + "/polarizer_discs_2448x2048_8bit.png";
  if (!std::filesystem::exists(frame)) {
    GTEST_SKIP() << frame << " is not there; say where with NEROVA_FRAMES_DIR";
  }
  const RunResult result = run("transform \"" + frame + "\" --layout 90 --outputs azimuth,dolp");
  ASSERT_EQ(result.exit_code, 0) << result.errors;
  GreyPage azimuth;
  GreyPage dolp;
  PictureFile(path("polarizer_discs_2448x2048_8bit_azimuth.png")).read(0, azimuth);
  PictureFile(path("polarizer_discs_2448x2048_8bit_dolp.png")).read(0, dolp);
  ASSERT_EQ(azimuth.pixels.size(), std::size_t{2448} * 2048);
  ASSERT_EQ(dolp.pixels.size(), azimuth.pixels.size());
  // Means computed once from the same pixels by other software, without overlap between the 2 x 2 neighbourhoods.
  for (const Disc& disc : {Disc{384, 1104, 83.3, 0.512}, Disc{1008, 1092, 43.6, 0.411}, Disc{1560, 1092, 175.1, 0.383},
                           Disc{2112, 1104, 135.5, 0.423}}) {
    SCOPED_TRACE(::testing::Message() << "disc at " << disc.x << ", " << disc.y);
    constexpr int radius = 120;
    double cosines = 0.0;
    double sines = 0.0;
    double degrees = 0.0;
    int count = 0;
    for (int y = -radius; y <= radius; ++y) {
      for (int x = -radius; x <= radius; ++x) {
        if (x * x + y * y <= radius * radius) {
          const std::size_t at = static_cast<std::size_t>(disc.y + y) * 2448 + static_cast<std::size_t>(disc.x + x);
          const double twice = (azimuth.pixels[at] / 65535.0 - 0.5) * 2.0 * pi;
          cosines += std::cos(twice);
          sines += std::sin(twice);
          degrees += dolp.pixels[at] / 65535.0;
          ++count;
        }
      }
    }
    const double angle = 0.5 * std::atan2(sines, cosines) * 180.0 / pi;
    RecordProperty("angle_" + std::to_string(disc.x), std::to_string(angle));
    EXPECT_NEAR(std::remainder(angle - disc.angle, 180.0), 0.0, 0.3);
    RecordProperty("degree_" + std::to_string(disc.x), std::to_string(degrees / count));
    EXPECT_NEAR(degrees / count, disc.degree, 0.01);
  }
}

}  // namespace
}  // namespace nerova_zel::test
