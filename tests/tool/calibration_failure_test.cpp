#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>

#include "tool_run.h"

namespace nerova_zel::test {
namespace {

constexpr double pi = 3.14159265358979323846;

class CalibrationFailureTest : public ToolTest {
 protected:
  CalibrationFailureTest() {
    camera_.width = 32;
    camera_.height = 32;
  }

  void write_frame(const std::string& name, double power, double angle) const {
    SceneSettings settings;
    settings.uniform_light =
        StokesVector{power, power * std::cos(angle * pi / 90.0), power * std::sin(angle * pi / 90.0)};
    write_pgm(name, simulate_frame({1, 1, settings}, camera_), camera_.width, camera_.height, camera_.bit_depth);
  }

  /** ANGLE.pgm at each angle; returns the options that name them. */
  std::string write_series(const std::vector<int>& angles) const {
    std::string options;
    for (const int angle : angles) {
      write_frame(std::to_string(angle) + ".pgm", 0.7, angle);
      options += " --frame " + std::to_string(angle) + ":" + std::to_string(angle) + ".pgm";
    }
    return options;
  }

  CameraSettings camera_;
};

TEST_F(CalibrationFailureTest, AnglesThatDoNotSuffice) {
  const std::string good = write_series({0, 45, 90});
  write_series({1, 2, 3, 180});
  expect_refusal("calibrate", {"0 are given"});
  expect_refusal("calibrate" + good, {"3 are given"});
  expect_refusal("calibrate" + good + " --frame 180:180.pgm", {"3 different angles", "half a turn"});
  expect_refusal("calibrate" + good + " --frame 135:90.pgm", {"90.pgm is given twice"});
  expect_refusal("calibrate --frame 0:0.pgm --frame 1:1.pgm --frame 2:2.pgm --frame 3:3.pgm", {"spread over 180"});
  expect_refusal("calibrate" + good + " --frame up:1.pgm", {"--frame up:1.pgm", "30:frame.png"});
  expect_refusal("calibrate" + good + " --frame 135", {"--frame 135"});
  expect_refusal("calibrate" + good + " --frame nan:1.pgm", {"--frame nan:1.pgm"});
  write("list.csv", "0,0.pgm\n45;45.pgm\n");
  expect_refusal("calibrate --list list.csv", {"line 2 of list.csv"});
  expect_refusal("calibrate --list nowhere.csv", {"nowhere.csv", "No such file"});
  // As seen from behind: 45 and 135 degrees change places.
  expect_refusal("calibrate --frame 0:0.pgm --frame 135:45.pgm --frame 90:90.pgm --frame 178:2.pgm",
                 {"45 degree", "at 135.0", "counter-clockwise"});
}

TEST_F(CalibrationFailureTest, FramesThatDoNotGoTogether) {
  const std::string good = write_series({0, 45, 90, 135});
  const auto with = [&](const std::string& frame) { return "calibrate" + good + " --frame 20:" + frame; };
  write_frame("bright.pgm", 1.3, 20);
  write_frame("night.pgm", 0.003, 20);
  camera_.dark_level = 1000;
  write_frame("dark.pgm", 0.0, 0.0);
  camera_.bit_depth = 11;
  write_frame("shallow.pgm", 0.7, 20);
  camera_.bit_depth = 12;
  camera_.width = 34;
  write_frame("wide.pgm", 0.7, 20);
  camera_.width = 6;
  write_frame("tiny.pgm", 0.7, 20);
  std::vector<std::uint16_t> half(1024, 100);
  std::fill(half.begin() + 512, half.end(), std::uint16_t{2000});
  write_pgm("half.pgm", half, 32, 32, 12);
  expect_refusal(with("missing.pgm"), {"missing.pgm", "No such file"});
  expect_refusal(with("bright.pgm"), {"bright.pgm is overexposed", "50.0 %"});
  expect_refusal(with("night.pgm"), {"night.pgm shows no light"});
  expect_refusal(with("shallow.pgm"), {"shallow.pgm", "11 bits", "0.pgm", "12 bits"});
  expect_refusal(with("wide.pgm"), {"wide.pgm", "34 x 32", "0.pgm", "32 x 32"});
  expect_refusal("calibrate --frame 20:tiny.pgm" + good, {"tiny.pgm", "8 x 8"});
  expect_refusal(with("half.pgm"), {"half.pgm is no uniform source"});
  expect_refusal("calibrate" + good + " --dark dark.pgm", {"dark.pgm is no dark frame"});
  expect_refusal("calibrate" + good + " --dark wide.pgm", {"wide.pgm"});
  expect_refusal("calibrate" + good + " --bit-depth 10", {"0.pgm", "10 bits"});
  expect_refusal("calibrate" + good + " --layout 0", {"--layout or --origin"});
  expect_refusal("calibrate" + good + " --out calibration.txt", {"calibration.txt", ".json"});
  expect_refusal("calibrate --raw 16x16 --pixel-format Mono16" + good, {"0.pgm holds more than one frame"});
  std::filesystem::create_directory(path("calibration.png"));
  expect_refusal("calibrate" + good, {"calibration.png", "a directory has that name"});
}

TEST_F(CalibrationFailureTest, DoubtfulFramesAreNamed) {
  const std::string good = write_series({0, 45, 90, 135, 20});
  write_frame("off.pgm", 0.7, 110);
  const RunResult result = run("calibrate" + good + " --frame 113:off.pgm");
  EXPECT_EQ(result.exit_code, 0);
  EXPECT_NE(result.errors.find("off.pgm departs from the fit"), std::string::npos) << result.errors;
}

TEST_F(CalibrationFailureTest, CalibrationFiles) {
  ASSERT_EQ(run("calibrate" + write_series({0, 45, 90, 135}) + " --out good.json").exit_code, 0);
  const auto good = nlohmann::json::parse(read("good.json"));
  const auto expect = [&](const std::string& content, const std::vector<std::string>& words) {
    write("bad.json", content);
    std::vector<std::string> all = words;
    all.emplace_back("bad.json");
    expect_refusal("transform 0.pgm --out results --calibration bad.json", all);
  };
  const auto expect_changed = [&](const char* place, const nlohmann::json& value,
                                  const std::vector<std::string>& words) {
    nlohmann::json changed = good;
    changed[nlohmann::json::json_pointer(place)] = value;
    expect(changed.dump(), words);
  };
  expect_refusal("transform 0.pgm --out results --calibration nowhere.json", {"nowhere.json", "No such file"});
  expect("", {"not JSON"});
  expect(read("good.json").substr(0, 500), {"not JSON", "byte 50"});
  expect("[1, 2]", {"not a calibration file", "format"});
  expect(R"({"format": "nerova-polarize calibration", "version": 1})", {R"(no "matrices")"});
  expect_changed("/format", "other", {R"("format" is "other")"});
  expect_changed("/version", 2, {"version 2"});
  expect_changed("/matrices", {1, 2, 3}, {"4 \"matrices\""});
  expect_changed("/matrices/2", {1, 2, 3}, {"4 rows in matrix 2"});
  expect_changed("/matrices/3/1", {1, 2, 3, 4, 5}, {"4 numbers in row 1 of matrix 3"});
  expect_changed("/matrices/0/1/2", nullptr, {"null in matrix 0"});
  expect_changed("/matrices/0/1/2", "1", {"\"1\" in matrix 0"});
  expect_changed("/matrices/0/1/2", 1e39, {"1e+39 in matrix 0"});
  expect_changed("/dark/levels", {1, 2, 3}, {"4 dark \"levels\""});
  expect_changed("/dark/levels/0", -1, {"dark level -1"});
  expect_changed("/dark/bit_depth", 17, {"\"bit_depth\" 17"});
  std::string text = good.dump();
  expect(text.replace(text.find("1.0"), 3, "1e999"), {"too large"});
  expect(text.replace(text.find("1e999"), 5, "NaN"), {"not JSON"});
}

}  // namespace
}  // namespace nerova_zel::test
