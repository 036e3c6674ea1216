#include "simulate_command.h"

#include <cmath>
#include <filesystem>
#include <iostream>
#include <opencv2/core.hpp>

#include "failure.h"
#include "file_set.h"
#include "image_encoder.h"
#include "option_values.h"
#include "simulated_frame.h"

namespace nerova_zel {

namespace {

namespace fs = std::filesystem;

constexpr double pi = 3.14159265358979323846;

std::array<PixelPolarizer, 4> polarizers_of(const SimulateOptions& options) {
  const auto angle_errors = parse_four("--angle-errors", options.angle_errors, -20.0, 20.0);
  const auto extinctions = parse_four("--extinction", options.extinctions, 1.0, HUGE_VAL);
  const auto gains = parse_four("--gains", options.gains, 0.01, 10.0);
  std::array<PixelPolarizer, 4> polarizers;
  for (std::size_t i = 0; i < polarizers.size(); ++i) {
    polarizers[i] = {angle_errors[i], extinctions[i], gains[i]};
  }
  return polarizers;
}

SceneSettings scene_of(const SimulateOptions& options) {
  if (!(options.refractive_index > 1.0 && options.refractive_index <= 10.0)) {
    throw Failure("--index must be above 1 and at most 10.");
  }
  if (!(options.source_power >= 0.0 && options.source_power <= 10.0)) {
    throw Failure("--source-power must be 0 (no light) to 10.");
  }
  SceneSettings settings;
  settings.refractive_index = options.refractive_index;
  if (options.source_angle) {
    if (!(std::abs(*options.source_angle) <= 360.0)) {
      throw Failure("--source-angle must be -360 to 360 degrees.");
    }
    const double twice = *options.source_angle * pi / 90.0;
    const double power = options.source_power;
    settings.uniform_light = {power, power * std::cos(twice), power * std::sin(twice)};
  }
  return settings;
}

CameraSettings camera_of(const SimulateOptions& options) {
  check_layout(options.layout);
  check_range("--bit-depth", options.bit_depth, 1, 16);
  check_frame_extension(options.file);
  if (!(options.photons >= 0.0 && options.photons <= 1e12)) {
    throw Failure("--photons must be 0 (no shot noise) to 1e12.");
  }
  if (!(options.dark_level >= 0.0 && options.dark_level < (1 << options.bit_depth))) {
    throw Failure("--dark-level must be 0 or more, and less than the pixel values there are.");
  }
  const FrameSize size = parse_size("--size", options.size);
  const Origin origin = parse_origin(options.origin);
  CameraSettings camera;
  camera.width = size.width;
  camera.height = size.height;
  camera.bit_depth = options.bit_depth;
  camera.layout = MosaicLayout(options.layout);
  camera.origin_x = origin.x;
  camera.origin_y = origin.y;
  camera.full_well = options.photons;
  camera.seed = options.seed;
  camera.dark_level = options.dark_level;
  camera.polarizers = polarizers_of(options);
  return camera;
}

void write_truth(FileSet& files, const fs::path& directory, const SimulatedScene& scene, const CameraSettings& camera,
                 const std::string& stem) {
  cv::Mat angle(camera.height, camera.width, CV_32F);
  cv::Mat degree(camera.height, camera.width, CV_32F);
  for (int y = 0; y < camera.height; ++y) {
    for (int x = 0; x < camera.width; ++x) {
      const StokesVector light = true_light(scene, camera, x, y);
      angle.at<float>(y, x) = static_cast<float>(light.angle_degrees());
      degree.at<float>(y, x) = static_cast<float>(light.degree());
    }
  }
  files.make_directory(directory);
  files.write(directory / (stem + "_true_angle.tiff"), encode_picture(angle, ".tiff"));
  files.write(directory / (stem + "_true_degree.tiff"), encode_picture(degree, ".tiff"));
}

/** The command that transforms what was written. */
std::string next_command(const SimulateOptions& options) {
  std::string command = "nerova-polarize transform " + options.file + " --layout " + std::to_string(options.layout) +
                        " --origin " + options.origin + " --bit-depth " + std::to_string(options.bit_depth);
  if (lower_case_extension(options.file) == ".raw") {
    command += " --raw " + options.size;
  }
  return command;
}

}  // namespace

void run_simulate(const SimulateOptions& options) {
  const CameraSettings camera = camera_of(options);
  const SimulatedScene scene(camera.width, camera.height, scene_of(options));
  FileSet files;
  const fs::path file(options.file);
  files.write(file,
              encode_frame(simulate_frame(scene, camera), camera.width, camera.height, camera.bit_depth, options.file));
  if (options.truth_directory) {
    write_truth(files, *options.truth_directory, scene, camera, file.stem().string());
  }
  files.commit();
  std::cout << options.file << ": " << camera.width << " x " << camera.height << ", " << camera.bit_depth
            << "-bit, layout " << options.layout << "; transform it with: " << next_command(options) << '\n';
}

}  // namespace nerova_zel
