#pragma once

#include <optional>
#include <string>
#include <vector>

namespace nerova_zel {

/** Options of `calibrate`, as given on the command line. */
struct CalibrateOptions {
  std::vector<std::string> frames;  ///< "ANGLE:FILE" each
  std::optional<std::string> list;
  std::optional<std::string> dark;
  std::optional<std::string> raw;
  std::optional<std::string> pixel_format;
  int layout = 90;
  std::string origin = "0,0";
  std::optional<int> bit_depth;
  bool steady_source = false;
  std::string file = "calibration.json";
};

/** Fits a calibration, writes it and its plot, and prints how good it is. Throws Failure. */
void run_calibrate(const CalibrateOptions& options);

}  // namespace nerova_zel
