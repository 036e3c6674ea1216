#include "frame_request.h"

#include <algorithm>
#include <thread>

#include "quiet_errors.h"

namespace nerova_zel {

namespace {

constexpr int most_jobs = 1024;

}  // namespace

void read_frame_options(const FrameOptions& options, FrameRequest& request) {
  check_layout(options.layout);
  if (options.jobs) {
    check_range("--jobs", *options.jobs, 1, most_jobs);
  }
  if (options.bit_depth) {
    check_range("--bit-depth", *options.bit_depth, 1, 16);
  }
  request.headerless = parse_headerless(options.raw, options.pixel_format);
  request.layout = MosaicLayout(options.layout);
  request.origin = parse_origin(options.origin);
  if (options.region) {
    request.region = parse_region(*options.region);
  }
  request.bit_depth = options.bit_depth;
  if (options.calibration) {
    request.calibration = read_calibration(*options.calibration);
    request.calibration_file = *options.calibration;
  }
  request.jobs = options.jobs.value_or(std::clamp(static_cast<int>(std::thread::hardware_concurrency()), 1, most_jobs));
}

void use_calibration(Library& library, const FrameRequest& request) {
  if (!request.calibration) {
    return;
  }
  if (!library.calibrates_every_pixel()) {
    note("the calibration " + request.calibration_file +
         " reaches only the last columns and rows of a frame: no vector plugin serves this computer, and the built-in "
         "kernels compute the other pixels with the default calibration.");
  }
  library.set_calibration(request.calibration->matrices);
}

}  // namespace nerova_zel
