#pragma once

#include <string>

#include "frame_request.h"

namespace nerova_zel {

/** Options of `stats`, as given on the command line. */
struct StatsOptions : FrameOptions {
  std::string weight = "equal";
  /** Only all frames together. */
  bool summary = false;
  bool json = false;
};

/** Transforms frames and prints statistics of each, and of all together. Throws Failure. */
void run_stats(const StatsOptions& options);

}  // namespace nerova_zel
