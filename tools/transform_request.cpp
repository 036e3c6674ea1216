#include "transform_request.h"

#include <algorithm>
#include <thread>

#include "failure.h"

namespace nerova_zel {

namespace {

constexpr int most_jobs = 1024;

}  // namespace

TransformRequest read_options(const TransformOptions& options) {
  check_layout(options.layout);
  check_range("--output-max", options.output_maximum, 1, 65535);
  if (options.repeat) {
    check_range("--repeat", *options.repeat, 1, 100'000);
  }
  if (options.jobs) {
    check_range("--jobs", *options.jobs, 1, most_jobs);
  }
  if (options.bit_depth) {
    check_range("--bit-depth", *options.bit_depth, 1, 16);
  }
  if (options.azimuth_brightness != "degree" && options.azimuth_brightness != "full") {
    throw Failure("--azimuth-brightness " + options.azimuth_brightness + " is unknown; it must be degree or full.");
  }
  if (options.degree_limit && !(*options.degree_limit > 0.0 && *options.degree_limit <= 1.0)) {
    throw Failure("--degree-max must be above 0 and at most 1.");
  }
  TransformRequest request;
  request.headerless = parse_headerless(options.raw, options.pixel_format);
  request.layout = MosaicLayout(options.layout);
  request.origin = parse_origin(options.origin);
  if (options.region) {
    request.region = parse_region(*options.region);
  }
  request.bit_depth = options.bit_depth;
  request.output_maximum = options.output_maximum;
  request.outputs = parse_outputs(options.outputs);
  request.files = output_files(request.outputs, options.format);
  request.directory = options.directory;
  request.sheet_style = {options.azimuth_brightness == "degree", options.degree_limit.value_or(0.0)};
  request.repeat = options.repeat.value_or(0);
  request.jobs = options.jobs.value_or(std::clamp(static_cast<int>(std::thread::hardware_concurrency()), 1, most_jobs));
  request.overwrite = options.overwrite;
  if (options.calibration) {
    request.calibration = read_calibration(*options.calibration);
    request.calibrated = std::filesystem::last_write_time(*options.calibration);
  }
  return request;
}

}  // namespace nerova_zel
