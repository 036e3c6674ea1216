#include "transform_command.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <opencv2/core.hpp>
#include <set>
#include <vector>

#include "calibration_file.h"
#include "failure.h"
#include "file_set.h"
#include "frame_reader.h"
#include "image_encoder.h"
#include "library.h"
#include "mosaic_layout.h"
#include "option_values.h"
#include "picture_sheet.h"

namespace nerova_zel {

namespace {

namespace fs = std::filesystem;

/** Options read and found possible. */
struct Request {
  std::optional<FrameSize> raw_size;
  Origin origin{};
  MosaicLayout layout{90};
  std::set<OutputKind> outputs;
  SheetStyle sheet_style;

  bool wants(OutputKind kind) const { return outputs.count(kind) != 0; }
};

/** Pictures of the outputs; empty where neither wanted nor needed for the sheet. */
struct Results {
  cv::Mat stokes;
  cv::Mat power;
  cv::Mat hv;
  cv::Mat diagonal;
  cv::Mat azimuth;
  cv::Mat dolp;
};

struct Timing {
  double first_ms;
  double best_ms;
};

Request read_options(const TransformOptions& options) {
  check_layout(options.layout);
  check_range("--output-max", options.output_maximum, 1, 65535);
  check_range("--repeat", options.repeat, 1, 100'000);
  if (options.bit_depth) {
    check_range("--bit-depth", *options.bit_depth, 1, 16);
  }
  if (options.format != "png" && options.format != "tiff") {
    throw Failure("--format " + options.format + " is unknown; it must be png or tiff.");
  }
  if (options.azimuth_brightness != "degree" && options.azimuth_brightness != "full") {
    throw Failure("--azimuth-brightness " + options.azimuth_brightness + " is unknown; it must be degree or full.");
  }
  if (options.degree_limit && !(*options.degree_limit > 0.0 && *options.degree_limit <= 1.0)) {
    throw Failure("--degree-max must be above 0 and at most 1.");
  }
  Request request;
  if (options.raw) {
    request.raw_size = parse_size("--raw", *options.raw);
  }
  request.origin = parse_origin(options.origin);
  request.layout = MosaicLayout(options.layout);
  request.outputs = parse_outputs(options.outputs);
  request.sheet_style = {options.azimuth_brightness == "degree", options.degree_limit.value_or(0.0)};
  return request;
}

Results allocate(const Request& request, const RawFrame& frame) {
  const bool sheet = request.wants(OutputKind::sheet);
  const auto picture = [&](OutputKind kind, bool for_sheet, int type) {
    return request.wants(kind) || (sheet && for_sheet) ? cv::Mat(frame.height, frame.width, type) : cv::Mat();
  };
  Results results;
  results.stokes = picture(OutputKind::stokes, true, CV_32FC2);
  results.power = picture(OutputKind::power, true, CV_16U);
  results.hv = picture(OutputKind::hv, false, CV_16U);
  results.diagonal = picture(OutputKind::diagonal, false, CV_16U);
  results.azimuth = picture(OutputKind::azimuth, true, CV_16U);
  results.dolp = picture(OutputKind::dolp, true, CV_16U);
  return results;
}

/** Has the library use the calibration that the options name; returns the frame's pixels without their dark level. */
std::vector<std::uint16_t> calibrate(Library& library, const TransformOptions& options, const FrameGeometry& geometry,
                                     const RawFrame& frame) {
  const Calibration calibration = read_calibration(*options.calibration);
  if (!library.calibrates_every_pixel()) {
    std::fprintf(stderr,
                 "nerova-polarize: note: the calibration %s reaches only the last columns and rows of %s: no vector "
                 "plugin serves this computer, and the built-in kernels compute the other pixels with the default "
                 "calibration.\n",
                 options.calibration->c_str(), options.frame.c_str());
  }
  library.set_calibration(calibration.matrices);
  return without_dark_level(frame, geometry, calibration);
}

template <class Element>
Element* pointer(cv::Mat& picture) {
  return picture.empty() ? nullptr : picture.ptr<Element>();
}

Timing transform(const Library& library, const TransformInput& input, Results& results, int repeat) {
  const TransformOutput output{pointer<float>(results.stokes),          pointer<std::uint16_t>(results.power),
                               pointer<std::uint16_t>(results.hv),      pointer<std::uint16_t>(results.diagonal),
                               pointer<std::uint16_t>(results.azimuth), pointer<std::uint16_t>(results.dolp)};
  Timing timing{};
  for (int i = 0; i < repeat; ++i) {
    const auto start = std::chrono::steady_clock::now();
    library.transform(input, output);
    const std::chrono::duration<double, std::milli> elapsed = std::chrono::steady_clock::now() - start;
    if (i == 0) {
      timing = {elapsed.count(), elapsed.count()};
    }
    timing.best_ms = std::min(timing.best_ms, elapsed.count());
  }
  return timing;
}

/** Puts the wanted outputs into `files`, named after the frame; returns how many. */
int write_results(FileSet& files, const TransformOptions& options, const Request& request, const Results& results,
                  const SheetContent& sheet) {
  const fs::path directory(options.directory);
  const std::string stem = fs::path(options.frame).stem().string();
  int count = 0;
  const auto add = [&](OutputKind kind, const std::string& name, const std::string& extension, const auto& picture) {
    if (request.wants(kind)) {
      files.write(directory / (stem + name + extension), encode_picture(picture(), extension));
      ++count;
    }
  };
  const auto component = [&](int channel) {
    return [&results, channel] {
      cv::Mat single;
      cv::extractChannel(results.stokes, single, channel);
      return single;
    };
  };
  const std::string extension = "." + options.format;
  files.make_directory(directory);
  add(OutputKind::stokes, "_s1", ".tiff", component(0));
  add(OutputKind::stokes, "_s2", ".tiff", component(1));
  add(OutputKind::power, "_power", extension, [&] { return results.power; });
  add(OutputKind::hv, "_hv", extension, [&] { return results.hv; });
  add(OutputKind::diagonal, "_diagonal", extension, [&] { return results.diagonal; });
  add(OutputKind::azimuth, "_azimuth", extension, [&] { return results.azimuth; });
  add(OutputKind::dolp, "_dolp", extension, [&] { return results.dolp; });
  add(OutputKind::sheet, "_sheet", ".png", [&] { return draw_sheet(sheet, request.sheet_style); });
  return count;
}

void report(const TransformOptions& options, const RawFrame& frame, int bit_depth, const Timing& timing, int files) {
  const int full_scale = (1 << bit_depth) - 1;
  const auto share = [&](auto condition) {
    return 100.0 * static_cast<double>(std::count_if(frame.pixels.begin(), frame.pixels.end(), condition)) /
           static_cast<double>(frame.pixels.size());
  };
  const double above = share([&](int pixel) { return pixel > full_scale; });
  if (above > 0.0) {
    std::fprintf(stderr, "nerova-polarize: note: %.1f %% of the pixels of %s exceed %d, the full scale of %d bits.\n",
                 above, options.frame.c_str(), full_scale, bit_depth);
  }
  const double megapixels = static_cast<double>(frame.pixels.size()) / 1e6;
  std::printf(
      "%s: %d x %d, %d-bit, %.1f %% saturated; transform %.2f ms (%.0f Mpixel/s) at best of %d, %.2f ms (%.0f "
      "Mpixel/s) "
      "at first; %d %s in %s\n",
      options.frame.c_str(), frame.width, frame.height, bit_depth,
      share([&](int pixel) { return pixel >= full_scale; }), timing.best_ms, megapixels / timing.best_ms * 1e3,
      options.repeat, timing.first_ms, megapixels / timing.first_ms * 1e3, files, files == 1 ? "file" : "files",
      options.directory.c_str());
}

}  // namespace

void run_transform(const TransformOptions& options) {
  const Request request = read_options(options);
  RawFrame frame = read_frame(options.frame, request.raw_size);
  if (frame.width < 2 || frame.height < 2) {
    throw Failure(options.frame + " is " + std::to_string(frame.width) + " x " + std::to_string(frame.height) +
                  " pixels; a mosaic frame has at least 2 x 2.");
  }
  const int bit_depth = bit_depth_of(frame, options.bit_depth, options.frame);
  Library library(options.library);
  std::vector<std::uint16_t> calibrated;
  if (options.calibration) {
    calibrated = calibrate(library, options, {request.layout, request.origin.x, request.origin.y, bit_depth}, frame);
  }
  Results results = allocate(request, frame);
  const Timing timing = transform(
      library,
      {request.layout.phase(), (calibrated.empty() ? frame.pixels : calibrated).data(), request.origin.x,
       request.origin.y, frame.width, frame.height, bit_depth, static_cast<std::uint16_t>(options.output_maximum)},
      results, options.repeat);

  SheetContent sheet;
  sheet.name = fs::path(options.frame).filename().string();
  sheet.layout = request.layout;
  sheet.origin_x = request.origin.x;
  sheet.origin_y = request.origin.y;
  sheet.bit_depth = bit_depth;
  sheet.output_maximum = options.output_maximum;
  sheet.frame = cv::Mat(frame.height, frame.width, CV_16U, frame.pixels.data());
  sheet.normalized_stokes = results.stokes;
  sheet.total_power = results.power;
  sheet.azimuth = results.azimuth;
  sheet.degree = results.dolp;
  FileSet files;
  const int count = write_results(files, options, request, results, sheet);
  files.commit();
  report(options, frame, bit_depth, timing, count);
}

}  // namespace nerova_zel
