// What stats prints; the numbers themselves are tested in the imaging module.
#include <nlohmann/json.hpp>

#include "imaging/even_light.h"
#include "tool_run.h"

namespace nerova_zel::test {
namespace {

class StatsTest : public ToolTest {
 protected:
  void write_even(const std::string& name, double power, double degree, double angle) const {
    CameraSettings camera;
    camera.width = 32;
    camera.height = 20;
    camera.bit_depth = 16;
    write_pgm(name, simulate_frame(even_light(power, degree, angle), camera), 32, 20, 16);
  }
};

TEST_F(StatsTest, TextAndJsonTellTheSame) {
  write_even("a.pgm", 0.8, 0.8, 85.0);
  write_even("b.pgm", 0.4, 0.4, -85.0);
  const std::string text = run("stats a.pgm b.pgm --jobs 2").output;
  EXPECT_NE(text.find("a.pgm: 640 pixels\n  angle      85.0"), std::string::npos) << text;
  EXPECT_NE(text.find("all 2 frames: 1280 pixels"), std::string::npos) << text;
  const auto document = nlohmann::json::parse(run("stats --json a.pgm b.pgm --jobs 2").output);
  ASSERT_EQ(document.at("frames").size(), 2U);
  EXPECT_EQ(document.at("frames").at(1).at("name"), "b.pgm");
  EXPECT_NEAR(document.at("frames").at(1).at("mean_angle_degrees").get<double>(), -85.0, 0.01);
  EXPECT_EQ(document.at("all").at("saturated_pixels").at("dolp"), 0);
  const auto summary = nlohmann::json::parse(run("stats --json --summary --weight power a.pgm b.pgm").output);
  EXPECT_FALSE(summary.contains("frames"));
  EXPECT_EQ(summary.at("weight"), "power");
  EXPECT_NEAR(summary.at("all").at("mean_degree").get<double>(), 0.8 / 1.2, 1e-3);
}

TEST_F(StatsTest, TablesHaveTheNumbersOfTheDocument) {
#if defined(_WIN32)
  const std::string name = "a, one.pgm";  // no file has a quotation mark in its name
  const std::string quoted = "\"a, one.pgm\"";
#else
  const std::string name = "a, \"one\".pgm";
  const std::string quoted = "\"a, \"\"one\"\".pgm\"";
#endif
  write_even(name, 0.8, 0.8, 85.0);
  write_even("b.pgm", 0.0, 0.0, 0.0);
  const RunResult result = run("stats --csv --layout 90 '" + name + "' b.pgm");
  EXPECT_EQ(result.output.find("name,pixels,mean_angle_degrees,resultant_length,"), 0U) << result.output;
  EXPECT_NE(result.output.find("saturated_pixels_dolp,dark_pixels_frame"), std::string::npos) << result.output;
  EXPECT_NE(result.output.find("\n" + quoted + ",640,84.99"), std::string::npos) << result.output;
  EXPECT_NE(result.output.find("\nb.pgm,640,,,,640,,640,"), std::string::npos) << result.output;
  expect_refusal("stats --csv --json b.pgm", {"--json"}, 2);
}

TEST_F(StatsTest, WhatFailsLeavesTheDocumentWhole) {
  write_even("a.pgm", 0.0, 0.0, 0.0);
  const RunResult result = run("stats --json a.pgm missing.pgm");
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_NE(result.errors.find("missing.pgm"), std::string::npos) << result.errors;
  const auto document = nlohmann::json::parse(result.output);
  EXPECT_EQ(document.at("frames_done"), 1);
  EXPECT_EQ(document.at("frames_failed"), 1);
  EXPECT_TRUE(document.at("all").at("mean_angle_degrees").is_null());
  EXPECT_TRUE(document.at("all").at("mean_degree").is_null());
}

}  // namespace
}  // namespace nerova_zel::test
