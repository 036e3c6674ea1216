#include "transform_request.h"

#include "failure.h"

namespace nerova_zel {

namespace {

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

TransformRequest read_transform_options(const TransformOptions& options) {
  check_range("--output-max", options.output_maximum, 1, 65535);
  if (options.repeat) {
    check_range("--repeat", *options.repeat, 1, 100'000);
  }
  TransformRequest request;
  read_frame_options(options, request);
  if (options.calibration) {
    request.calibrated = std::filesystem::last_write_time(*options.calibration);
  }
  request.output_maximum = options.output_maximum;
  request.repeat = options.repeat.value_or(1);
  request.outputs = parse_outputs(options.outputs);
  request.picture_style = read_picture_style(options);
  request.files = output_files(request.outputs, options.format, request.picture_style.azimuth);
  request.directory = options.directory;
  request.overwrite = options.overwrite;
  return request;
}

}  // namespace nerova_zel
