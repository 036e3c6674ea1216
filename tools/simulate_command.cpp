#include "simulate_command.h"

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

CameraSettings camera_of(const SimulateOptions& options) {
  check_layout(options.layout);
  check_range("--bit-depth", options.bit_depth, 1, 16);
  check_frame_extension(options.file);
  if (!(options.photons >= 0.0 && options.photons <= 1e12)) {
    throw Failure("--photons must be 0 (no shot noise) to 1e12.");
  }
  if (!(options.refractive_index > 1.0 && options.refractive_index <= 10.0)) {
    throw Failure("--index must be above 1 and at most 10.");
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
  SceneSettings settings;
  settings.refractive_index = options.refractive_index;
  const SimulatedScene scene(camera.width, camera.height, settings);
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
