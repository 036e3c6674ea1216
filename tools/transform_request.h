#pragma once

#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "calibration_file.h"
#include "frame_outputs.h"
#include "headerless_frame.h"
#include "mosaic_layout.h"
#include "option_values.h"
#include "picture_content.h"

namespace nerova_zel {

/** Options of `transform`, as given on the command line. */
struct TransformOptions {
  std::vector<std::string> frames;
  std::optional<std::string> raw;
  std::optional<std::string> pixel_format;
  int layout = 90;
  std::string origin = "0,0";
  std::optional<std::string> region;
  std::optional<int> bit_depth;
  int output_maximum = 65535;
  std::string outputs = "all";
  std::string directory = ".";
  std::string format = "png";
  std::string azimuth_style = "dark";
  std::optional<double> degree_end;
  std::optional<double> power_end;
  std::optional<int> repeat;
  std::optional<int> jobs;
  std::optional<std::string> calibration;
  bool overwrite = false;
  std::string library;
};

/** The same, read and found possible. */
struct TransformRequest {
  std::optional<HeaderlessLayout> headerless;
  MosaicLayout layout{90};
  Origin origin{};
  std::optional<Region> region;
  std::optional<int> bit_depth;
  int output_maximum = 65535;
  std::optional<Calibration> calibration;
  /** When its file was written. */
  std::filesystem::file_time_type calibrated = std::filesystem::file_time_type::min();
  std::set<OutputKind> outputs;
  std::vector<OutputFile> files;
  std::filesystem::path directory;
  PictureStyle picture_style;
  /** Transforms of each frame; 0 leaves it to the number of frames. */
  int repeat = 0;
  int jobs = 1;
  bool overwrite = false;
};

/** Throws Failure, naming the option, when one makes no sense. */
TransformRequest read_options(const TransformOptions& options);

}  // namespace nerova_zel
