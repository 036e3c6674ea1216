// From files to a calibration and back; what a series must be is tested in the imaging module.
#include <nlohmann/json.hpp>

#include "commands/source_list.h"
#include "formatted.h"
#include "imaging/even_light.h"
#include "tool_run.h"

namespace nerova_zel::test {
namespace {

class CalibrateTest : public ToolTest {
 protected:
  CalibrateTest() {
    camera_.width = 32;
    camera_.height = 32;
    camera_.dark_level = 200.0;
    camera_.full_well = 10000;
    std::string list = "angle,file\n# taken by hand\n\n";
    for (const int angle : {0, 40, 75, 110, 160}) {
      const std::string name = "a" + std::to_string(angle) + ".pgm";
      write_pgm(name, simulate_frame(even_light(0.7, 1.0, angle), camera_), 32, 32, 12);
      list += std::to_string(angle) + ", " + name + "\n";
      ++camera_.seed;
    }
    write("list.csv", list);
    write_pgm("dark.pgm", simulate_frame(even_light(0.0, 0.0, 0.0), camera_), 32, 32, 12);
  }

  CameraSettings camera_;
};

TEST_F(CalibrateTest, AListOfFramesMakesAFileAPlotAndAReport) {
  const RunResult result = run("calibrate --list list.csv --dark dark.pgm --layout 90 -o c.json");
  EXPECT_EQ(result.exit_code, 0) << result.errors;
  EXPECT_EQ(result.errors, "");
  EXPECT_NE(result.output.find("5 frames, source "), std::string::npos) << result.output;
  EXPECT_NE(result.output.find("dark level 200.0"), std::string::npos) << result.output;
  EXPECT_NE(result.output.find("plot in c.png"), std::string::npos) << result.output;
  EXPECT_EQ(nlohmann::json::parse(read("c.json")).at("dark").at("levels").at(3), 200.0);
  EXPECT_FALSE(read("c.png").empty());
}

TEST_F(CalibrateTest, ListsMayBeThoseOfSpreadsheets) {
  const auto listed = [&](const std::string& text) {
    write("lists/list.csv", text);
    std::string found;
    for (const SourceFile& source : read_source_list(path("lists/list.csv"))) {
      found += formatted("%g %s|", source.angle, std::filesystem::path(source.path).filename().string().c_str());
    }
    return found;
  };
  EXPECT_EQ(listed("\xEF\xBB\xBF"
                   "Angle (deg);File\r\n22,5;a.png\r\n-30;b;c.png\r\n"),
            "22.5 a.png|-30 b;c.png|");
  EXPECT_EQ(listed("# by hand\nfile\tpolarizer angle\n\"a,1.png\"\t1.5\n"), "1.5 a,1.png|");
  EXPECT_EQ(listed("0,angle0.png\n90 , \"b.png\"\n"), "0 angle0.png|90 b.png|");
  EXPECT_ANY_THROW(listed("O,angle0.png\n90,b.png\n")) << "a mistake in the first line is no header";
}

// Frames that share a library and are worked on at once must not differ from lone ones.
TEST_F(CalibrateTest, FramesOfABatchAreCalibratedLikeLoneOnes) {
  ASSERT_EQ(run("calibrate calibration.json --list list.csv --dark dark.pgm").exit_code, 0);
  const std::string options = " --calibration calibration.json --layout 90 --resume --outputs stokes,power -o ";
  ASSERT_EQ(run("transform a0.pgm" + options + "lone").exit_code, 0);
  ASSERT_EQ(run("transform 'a*.pgm'" + options + "batch --jobs 3").exit_code, 0);
  for (const char* name : {"/a0_stokes_s1.tiff", "/a0_stokes_s2.tiff", "/a0_power.png"}) {
    EXPECT_EQ(read(std::string("lone") + name), read(std::string("batch") + name)) << name;
  }
  EXPECT_NE(run("transform 'a*.pgm'" + options + "batch").output.find("5 skipped"), std::string::npos);
  std::filesystem::last_write_time(
      path("calibration.json"),
      std::filesystem::last_write_time(path("batch/a0_stokes_s1.tiff")) + std::chrono::hours(1));
  EXPECT_NE(run("transform 'a*.pgm'" + options + "batch").output.find("5 done"), std::string::npos);
  const RunResult told =
      run("transform 'a*.pgm' --library \"" NEROVA_BUILT_IN_ONLY_LIBRARY "\"" + options + "built_in");
  EXPECT_EQ(std::count(told.errors.begin(), told.errors.end(), '\n'), 1) << told.errors;
}

TEST_F(CalibrateTest, ListsAndFramesThatDoNotSuffice) {
  const std::string four = "calibrate c.json --frame 0:a0.pgm --frame 40:a40.pgm --frame 75:a75.pgm";
  expect_refusal("calibrate c.json", {"0 are given"}, 2);
  expect_refusal(four, {"3 are given"}, 2);
  expect_refusal(four + " --frame 180:a110.pgm", {"3 different angles", "half a turn"}, 2);
  expect_refusal(four + " --frame 135:a75.pgm", {"a75.pgm is given twice"}, 2);
  expect_refusal(four + " --frame up:a110.pgm", {"--frame up:a110.pgm", "30:frame.png"}, 2);
  expect_refusal(four + " --frame 135", {"--frame 135"}, 2);
  expect_refusal(four + " --frame 134,5:a110.pgm", {"--frame 134,5:a110.pgm"}, 2);
  expect_refusal(four + " --frame nan:a110.pgm", {"--frame nan:a110.pgm"}, 2);
  write("bad.csv", "0,a0.pgm\n45:a40.pgm\n");
  expect_refusal("calibrate c.json --list bad.csv", {"line 2 of bad.csv"});
  expect_refusal("calibrate c.json --list nowhere.csv", {"nowhere.csv", "No such file"});
  expect_refusal("calibrate c.json --list list.csv --layout 0", {"pass light at", "--layout or --origin is wrong"});
  expect_refusal("calibrate c.json --list list.csv --bit-depth 10", {"pixel value", "--bit-depth"});
  expect_refusal("calibrate c.json --raw 16x16 --pixel-format Mono16 --list list.csv",
                 {"a0.pgm holds more than one frame"});
  expect_refusal("transform a0.pgm -o r --calibration list.csv", {"list.csv is not JSON"});
  std::filesystem::create_directory(path("c.png"));
  expect_refusal("calibrate c.json --list list.csv", {"c.png is there already", "--force"});
  expect_refusal("calibrate c.json --list list.csv --layout 90 --force", {"c.png", "a directory has that name"});
}

}  // namespace
}  // namespace nerova_zel::test
