// From simulated frames of a uniform source through a calibration file to the errors of azimuth and degree.
#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>
#include <opencv2/imgcodecs.hpp>
#include <utility>

#include "tool_run.h"

namespace nerova_zel::test {
namespace {

constexpr double pi = 3.14159265358979323846;
constexpr double output_maximum = 65535.0;

constexpr std::array<PixelPolarizer, 4> poor_polarizers = {
    PixelPolarizer{1.2, 300.0, 1.05}, {-0.8, 150.0, 0.97}, {-1.5, 220.0, 1.0}, {0.6, 90.0, 0.94}};

SimulatedScene uniform_light(double power, double degree, double angle) {
  SceneSettings settings;
  const double polarized = power * degree;
  settings.uniform_light =
      StokesVector{power, polarized * std::cos(angle * pi / 90.0), polarized * std::sin(angle * pi / 90.0)};
  return {1, 1, settings};
}

struct Errors {
  double azimuth_rms;
  double azimuth_95;        ///< 95 of 100 are smaller
  double stokes_angle_rms;  ///< of the exact arctangent of the normalized Stokes pair
  double degree_rms;
  double degree_95;
  std::size_t pixels;
};

double rms(const std::vector<double>& values) {
  double squares = 0.0;
  for (const double value : values) {
    squares += value * value;
  }
  return std::sqrt(squares / static_cast<double>(values.size()));
}

double percentile_95(std::vector<double> values) {
  const auto at = values.begin() + static_cast<std::ptrdiff_t>(values.size() * 95 / 100);
  std::nth_element(values.begin(), at, values.end());
  return *at;
}

class CalibrationTest : public ToolTest {
 protected:
  CalibrationTest() {
    camera_.width = 96;
    camera_.height = 80;
    camera_.polarizers = poor_polarizers;
  }

  void write_frame(const std::string& name, const SimulatedScene& scene) const {
    write_pgm(name, simulate_frame(scene, camera_), camera_.width, camera_.height, camera_.bit_depth);
  }

  std::string sensor() const {
    return " --layout " + std::to_string(45 * camera_.layout.phase()) + " --origin " +
           std::to_string(camera_.origin_x) + "," + std::to_string(camera_.origin_y);
  }

  /** Frames at the angles, each with its brightness, as aNUMBER.pgm in a list; and a dark frame. */
  void write_series(const std::vector<double>& angles, double drift) {
    std::string list = "angle,file\n# taken by hand\n\n";
    for (std::size_t i = 0; i < angles.size(); ++i) {
      const std::string name = "a" + std::to_string(i) + ".pgm";
      write_frame(name, uniform_light(0.7 * (1.0 + drift * std::sin(2.0 * static_cast<double>(i))), 1.0, angles[i]));
      list += std::to_string(angles[i]) + ", " + name + "\n";
      ++camera_.seed;
    }
    write("list.csv", list);
    write_frame("dark.pgm", uniform_light(0.0, 0.0, 0.0));
  }

  nlohmann::json calibrate(const std::string& options) const {
    const RunResult result = run("calibrate --list list.csv" + sensor() + options);
    EXPECT_EQ(result.exit_code, 0) << result.errors;
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(cv::imread(path("calibration.png")).cols, 2400);
    return nlohmann::json::parse(read("calibration.json"));
  }

  /** Outputs of the tool against the light, where that is smooth; of the last two columns and rows, or the others. */
  Errors transform(const std::string& options, const SimulatedScene& scene, bool edges, std::string& complaints) const;

  CameraSettings camera_;
};

Errors CalibrationTest::transform(const std::string& options, const SimulatedScene& scene, bool edges,
                                  std::string& complaints) const {
  const RunResult result =
      run("transform frame.pgm --overwrite --outputs azimuth,dolp,stokes --repeat 1" + sensor() + options);
  EXPECT_EQ(result.exit_code, 0) << result.errors;
  complaints = result.errors;
  const cv::Mat azimuth = cv::imread(path("frame_azimuth.png"), cv::IMREAD_UNCHANGED);
  const cv::Mat degree = cv::imread(path("frame_dolp.png"), cv::IMREAD_UNCHANGED);
  const cv::Mat s1 = cv::imread(path("frame_s1.tiff"), cv::IMREAD_UNCHANGED);
  const cv::Mat s2 = cv::imread(path("frame_s2.tiff"), cv::IMREAD_UNCHANGED);
  std::vector<double> azimuth_errors;
  std::vector<double> stokes_angle_errors;
  std::vector<double> degree_errors;
  for (int y = 0; y < camera_.height; ++y) {
    for (int x = 0; x < camera_.width; ++x) {
      if (edges != (x >= camera_.width - 2 || y >= camera_.height - 2)) {
        continue;
      }
      const StokesVector light = true_light(scene, camera_, x, y);
      bool smooth = true;
      for (const auto& [across, down] : {std::pair{-3.0, -3.0}, {5.0, -3.0}, {-3.0, 5.0}, {5.0, 5.0}}) {
        const StokesVector near = scene.light_at(x + across, y + down);
        smooth = smooth && std::hypot(light.s1 - near.s1, light.s2 - near.s2, light.s0 - near.s0) < 0.08 * light.s0;
      }
      if (smooth && light.degree() > 0.3) {
        const double angle = azimuth.at<std::uint16_t>(y, x) * 180.0 / output_maximum - 90.0;
        azimuth_errors.push_back(std::abs(std::remainder(angle - light.angle_degrees(), 180.0)));
        const double stokes_angle = std::atan2(s2.at<float>(y, x), s1.at<float>(y, x)) * 90.0 / pi;
        stokes_angle_errors.push_back(std::abs(std::remainder(stokes_angle - light.angle_degrees(), 180.0)));
        degree_errors.push_back(std::abs(degree.at<std::uint16_t>(y, x) / output_maximum - light.degree()));
      }
    }
  }
  return {rms(azimuth_errors), percentile_95(azimuth_errors), rms(stokes_angle_errors),
          rms(degree_errors),  percentile_95(degree_errors),  azimuth_errors.size()};
}

TEST_F(CalibrationTest, AnIdealSensorGivesTheDefaultMatrices) {
  camera_.polarizers = {};
  camera_.bit_depth = 16;
  for (const int layout : {0, 45, 90, 135}) {
    camera_.layout = MosaicLayout(layout);
    camera_.origin_x = layout % 2;
    write_series({0, 40, 75, 110, 160}, 0.1);
    const auto matrices = calibrate("").at("matrices");
    const LoadedLibrary library(library_path());
    nv_polarization_processor* processor = nullptr;
    float defaults[4][16] = {};
    library.module_initialize();
    library.create(&processor);
    library.get_coefficients(processor, defaults[0], defaults[1], defaults[2], defaults[3]);
    library.destroy(processor);
    library.module_terminate();
    for (std::size_t m = 0; m < 4; ++m) {
      for (std::size_t i = 0; i < 16; ++i) {
        // A rounded pixel value is off by half at most, of 45000.
        EXPECT_NEAR(matrices.at(m).at(i / 4).at(i % 4).get<double>(), defaults[m][i], 3e-5) << m << ", " << i;
      }
    }
  }
}

// What a pixel under a polarizer receives from light is known from the simulation: matrix times that must give twice
// the power, S1 and S2, whatever the light, up to one common scale.
TEST_F(CalibrationTest, MatricesUndoTheSensor) {
  camera_.full_well = 10000;
  camera_.dark_level = 40.3;
  camera_.layout = MosaicLayout(45);
  camera_.origin_x = 1;
  camera_.origin_y = 2;
  write_series({0, 22.5, 45, 67.5, 270, 112.5, -45, 157.5}, 0.1);
  const auto file = calibrate(" --dark dark.pgm");
  for (std::size_t k = 0; k < 4; ++k) {
    const auto& polarizer = file.at("report").at(k);
    const double uncertainty = polarizer.at("angle_standard_error_degrees").get<double>();
    EXPECT_LT(uncertainty, 0.03);
    EXPECT_NEAR(polarizer.at("angle_error_degrees").get<double>(), poor_polarizers[k].angle_error, 5.0 * uncertainty);
    EXPECT_NEAR(polarizer.at("leakage").get<double>(), 1.0 / poor_polarizers[k].extinction,
                5.0 * polarizer.at("leakage_standard_error").get<double>());
    EXPECT_EQ(file.at("dark").at("levels").at(k).get<double>(), 40.0);
  }
  for (std::size_t m = 0; m < 4; ++m) {
    double product[3][3] = {};
    for (int column = 0; column < 4; ++column) {
      const int nominal = MosaicLayout(static_cast<int>(45 * m)).angle_at(column % 2, column / 2);
      const PixelPolarizer& polarizer = poor_polarizers[static_cast<std::size_t>(nominal / 45)];
      const double twice = (nominal + polarizer.angle_error) * pi / 90.0;
      const double even = 0.5 * polarizer.gain * (1.0 + 1.0 / polarizer.extinction);
      const double swing = 0.5 * polarizer.gain * (1.0 - 1.0 / polarizer.extinction);
      const double response[3] = {even, swing * std::cos(twice), swing * std::sin(twice)};
      for (std::size_t row = 0; row < 3; ++row) {
        const double weight = file.at("matrices").at(m).at(row).at(static_cast<std::size_t>(column)).get<double>();
        for (std::size_t of = 0; of < 3; ++of) {
          product[row][of] += weight * response[of];
        }
      }
    }
    const double scale = product[1][1];
    EXPECT_NEAR(scale, 1.0, 0.02);
    for (int row = 0; row < 3; ++row) {
      for (int of = 0; of < 3; ++of) {
        EXPECT_NEAR(product[row][of] / scale, row == of ? (row == 0 ? 2.0 : 1.0) : 0.0, 0.002) << m << row << of;
      }
    }
  }
}

// A lone frame is checked against the truth below; frames that share a library and are worked on at once must not
// differ.
TEST_F(CalibrationTest, FramesOfABatchAreCalibratedLikeLoneOnes) {
  camera_.dark_level = 200.0;
  camera_.full_well = 10000;
  write_series({0, 40, 75, 110, 160}, 0.1);
  calibrate(" --dark dark.pgm");
  const std::string options = sensor() + " --calibration calibration.json --outputs stokes,power --out ";
  for (int i = 0; i < 5; ++i) {
    const std::string name = "a" + std::to_string(i) + ".pgm";
    ASSERT_EQ(run("transform " + name + options + "lone").exit_code, 0);
  }
  ASSERT_EQ(run("transform 'a*.pgm'" + options + "batch --jobs 3").exit_code, 0);
  for (int i = 0; i < 5; ++i) {
    for (const char* ending : {"_s1.tiff", "_s2.tiff", "_power.png"}) {
      const std::string name = "/a" + std::to_string(i) + ending;
      EXPECT_EQ(read("lone" + name), read("batch" + name)) << name;
    }
  }
  std::filesystem::last_write_time(path("calibration.json"),
                                   std::filesystem::last_write_time(path("batch/a0_s1.tiff")) + std::chrono::hours(1));
  EXPECT_NE(run("transform 'a*.pgm'" + options + "batch").output.find("5 done"), std::string::npos);
  const RunResult told =
      run("transform 'a*.pgm' --library \"" NEROVA_BUILT_IN_ONLY_LIBRARY "\"" + options + "built_in");
  EXPECT_EQ(std::count(told.errors.begin(), told.errors.end(), '\n'), 1) << told.errors;
}

class CalibratedRoute : public CalibrationTest, public ::testing::WithParamInterface<const char*> {
 protected:
  void record(const std::string& name, const Errors& errors) {
    char text[160] = "";
    std::snprintf(text, sizeof(text),
                  "azimuth %.3f rms %.3f 95 %%, by Stokes pair %.3f; degree %.4f rms %.4f 95 %%; %zu pixels",
                  errors.azimuth_rms, errors.azimuth_95, errors.stokes_angle_rms, errors.degree_rms, errors.degree_95,
                  errors.pixels);
    RecordProperty(name, text);
  }
};

TEST_P(CalibratedRoute, ErrorsBeforeAndAfter) {
  const bool plugin = std::string(GetParam()) == NEROVA_LIBRARY;
  const std::string library = " --library \"" + std::string(GetParam()) + "\"";
  const std::string calibration = " --calibration calibration.json";
  camera_.width = 306;
  camera_.height = 256;
  camera_.dark_level = 64.0;
  camera_.full_well = 10000;
  write_series({0, 15, 30, 45, 60, 75, 90, 105, 120, 135, 150, 165}, 0.05);
  calibrate(" --dark dark.pgm");

  // Without noise, what is left is the sensor's doing, and the library's documented 0.16 degrees.
  camera_.full_well = 0.0;
  camera_.width = 1224;
  camera_.height = 1024;
  std::string complaints;
  const SimulatedScene scene(camera_.width, camera_.height, {});
  write_frame("frame.pgm", scene);
  const Errors before = transform(library, scene, false, complaints);
  EXPECT_EQ(complaints, "");
  const Errors after = transform(library + calibration, scene, false, complaints);
  EXPECT_EQ(complaints.find("calibration.json") == std::string::npos, plugin) << complaints;
  const SimulatedScene even = uniform_light(0.6, 0.7, 20.0);
  write_frame("frame.pgm", even);
  const Errors edges_before = transform(library, even, true, complaints);
  const Errors edges_after = transform(library + calibration, even, true, complaints);
  camera_.polarizers = {};
  camera_.dark_level = 0.0;
  write_frame("frame.pgm", scene);
  const Errors ideal = transform(library, scene, false, complaints);
  record("ideal", ideal);
  record("before", before);
  record("after", after);
  record("edges_before", edges_before);
  record("edges_after", edges_after);
  ASSERT_GT(after.pixels, 20000U);

  EXPECT_GT(before.azimuth_rms, 0.5);
  EXPECT_GT(edges_before.azimuth_rms, 0.5);
  EXPECT_LT(edges_after.azimuth_rms, 0.2);
  EXPECT_LT(edges_after.degree_rms, 0.002);
  if (plugin) {
    EXPECT_LT(after.azimuth_rms, ideal.azimuth_rms + 0.01);
    EXPECT_LT(after.stokes_angle_rms, ideal.stokes_angle_rms + 0.01);
    EXPECT_LT(after.degree_rms, ideal.degree_rms + 0.0005);
  } else {
    EXPECT_EQ(after.azimuth_rms, before.azimuth_rms);
  }
}

INSTANTIATE_TEST_SUITE_P(Calibration, CalibratedRoute, ::testing::Values(NEROVA_LIBRARY, NEROVA_BUILT_IN_ONLY_LIBRARY),
                         [](const auto& library) { return library.index == 0 ? "WithPlugins" : "BuiltIn"; });

}  // namespace
}  // namespace nerova_zel::test
