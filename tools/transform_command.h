#pragma once

#include <optional>
#include <string>

namespace nerova_zel {

/** Options of `transform`, as given on the command line. */
struct TransformOptions {
  std::string frame;
  std::optional<std::string> raw;
  int layout = 90;
  std::string origin = "0,0";
  std::optional<int> bit_depth;
  int output_maximum = 65535;
  std::string outputs = "all";
  std::string directory = ".";
  std::string format = "png";
  std::string azimuth_brightness = "degree";
  std::optional<double> degree_limit;
  int repeat = 5;
  std::optional<std::string> calibration;
  std::string library;
};

/** Transforms one frame, writes the wanted outputs and prints a line about it. Throws Failure. */
void run_transform(const TransformOptions& options);

}  // namespace nerova_zel
