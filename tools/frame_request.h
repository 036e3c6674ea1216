#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "calibration_file.h"
#include "headerless_frame.h"
#include "library.h"
#include "mosaic_layout.h"
#include "option_values.h"

namespace nerova_zel {

/** Options of the commands that transform frames, as given on the command line. */
struct FrameOptions {
  std::vector<std::string> frames;
  std::optional<std::string> raw;
  std::optional<std::string> pixel_format;
  int layout = 90;
  std::string origin = "0,0";
  std::optional<std::string> region;
  std::optional<int> bit_depth;
  std::optional<std::string> calibration;
  std::optional<int> jobs;
  std::string library;
};

/** The same, read and found possible. */
struct FrameRequest {
  std::optional<HeaderlessLayout> headerless;
  MosaicLayout layout{90};
  Origin origin{};
  std::optional<Region> region;
  std::optional<int> bit_depth;
  int output_maximum = 65535;
  std::optional<Calibration> calibration;
  std::string calibration_file;
  /** Frames worked on at once. */
  int jobs = 1;
  /** Transforms of each frame. */
  int repeat = 1;
};

/** Throws Failure, naming the option, when one makes no sense. */
void read_frame_options(const FrameOptions& options, FrameRequest& request);

/** Has the library use the request's calibration, if any, and says so where it will not do for a whole frame. */
void use_calibration(Library& library, const FrameRequest& request);

}  // namespace nerova_zel
