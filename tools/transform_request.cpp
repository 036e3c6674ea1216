#include "transform_request.h"

#include <algorithm>
#include <thread>

#include "failure.h"

namespace nerova_zel {

namespace {

constexpr int most_jobs = 1024;

double scale_end(const std::string& option, const std::optional<double>& end) {
  if (end && !(*end > 0.0 && *end <= 1.0)) {
    throw Failure(option + " must be above 0 and at most 1.");
  }
  return end.value_or(0.0);
}

PictureStyle read_picture_style(const TransformOptions& options) {
  const std::optional<AzimuthStyle> style = find_azimuth_style(options.azimuth_style);
  if (!style) {
    throw Failure("--azimuth-style " + options.azimuth_style +
                  " is unknown; it must be plain, light, dark or composite.");
  }
  return {*style, {scale_end("--degree-max", options.degree_end), scale_end("--power-max", options.power_end)}};
}

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
  request.picture_style = read_picture_style(options);
  request.files = output_files(request.outputs, options.format, request.picture_style.azimuth);
  request.directory = options.directory;
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
