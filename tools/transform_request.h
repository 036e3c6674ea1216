#pragma once

#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "frame_outputs.h"
#include "frame_request.h"
#include "picture_content.h"

namespace nerova_zel {

/** Options of `transform`, as given on the command line. */
struct TransformOptions : FrameOptions {
  int output_maximum = 65535;
  std::string outputs = "all";
  std::string directory = ".";
  std::string format = "png";
  std::string azimuth_style = "dark";
  std::optional<double> degree_end;
  std::optional<double> power_end;
  std::optional<int> repeat;
  bool overwrite = false;
};

/** The same, read and found possible. */
struct TransformRequest : FrameRequest {
  /** When the calibration's file was written. */
  std::filesystem::file_time_type calibrated = std::filesystem::file_time_type::min();
  std::set<OutputKind> outputs;
  std::vector<OutputFile> files;
  std::filesystem::path directory;
  PictureStyle picture_style;
  bool overwrite = false;
};

/** Throws Failure, naming the option, when one makes no sense. */
TransformRequest read_transform_options(const TransformOptions& options);

}  // namespace nerova_zel
