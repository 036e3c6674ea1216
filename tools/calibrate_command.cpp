#include "calibrate_command.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <numeric>
#include <opencv2/core.hpp>

#include "calibration_file.h"
#include "calibration_plot.h"
#include "failure.h"
#include "file_set.h"
#include "frame_reader.h"
#include "image_encoder.h"
#include "option_values.h"
#include "polarizer_fit.h"
#include "quiet_errors.h"
#include "source_list.h"
#include "uniform_frame.h"

namespace nerova_zel {

namespace {

namespace fs = std::filesystem;

constexpr const char* extension = ".json";

/** The frames of a calibration, measured and found to go together. */
struct Series {
  std::vector<SourceFile> sources;
  std::vector<UniformFrame> frames;
  PerPolarizer dark{};
  int bit_depth = 0;
};

double mean_of(const PerPolarizer& values) { return std::accumulate(values.begin(), values.end(), 0.0) / 4.0; }

/** Reads frames one after the other; each must have the size and bit depth of the first. */
class SeriesReader {
 public:
  explicit SeriesReader(const CalibrateOptions& options)
      : options_(options),
        origin_(parse_origin(options.origin)),
        headerless_(parse_headerless(options.raw, options.pixel_format)) {}

  UniformFrame read(const std::string& path) {
    const RawFrame pixels = read_only_frame(path, headerless_);
    const int bits = bit_depth_of(pixels, options_.bit_depth, path);
    if (first_.empty()) {
      first_ = path;
      size_ = {pixels.width, pixels.height};
      bit_depth_ = bits;
    }
    if (pixels.width != size_.width || pixels.height != size_.height || bits != bit_depth_) {
      throw Failure(path + " has " + form(pixels.width, pixels.height, bits) + ", but " + first_ + " has " +
                    form(size_.width, size_.height, bit_depth_) + ".");
    }
    return measure_uniform_frame(path, pixels, {MosaicLayout(options_.layout), origin_.x, origin_.y, bits});
  }

  int bit_depth() const { return bit_depth_; }

 private:
  static std::string form(int width, int height, int bits) {
    return std::to_string(width) + " x " + std::to_string(height) + " pixels of " + std::to_string(bits) + " bits";
  }

  const CalibrateOptions& options_;
  Origin origin_;
  std::optional<HeaderlessLayout> headerless_;
  std::string first_;
  FrameSize size_{};
  int bit_depth_ = 0;
};

void check_options(const CalibrateOptions& options) {
  check_layout(options.layout);
  if (options.bit_depth) {
    check_range("--bit-depth", *options.bit_depth, 1, 16);
  }
  if (lower_case_extension(options.file) != extension) {
    throw Failure("--out " + options.file + " should end in " + extension + "; the plot takes its name with .png.");
  }
}

/** Light falls evenly on the frame, and neither too much of it nor too little beside the `brightest` one. */
void check_light(const UniformFrame& frame, const PerPolarizer& dark, double brightest) {
  constexpr double most_saturated = 0.001;
  constexpr double least_light = 0.02;
  constexpr double uneven = 0.15;
  constexpr double no_source = 0.5;
  if (frame.saturated > most_saturated) {
    throw Failure(cv::format("%s is overexposed: %.1f %% of its pixels are saturated; take it with less light.",
                             frame.path.c_str(), 100.0 * frame.saturated));
  }
  if (!(mean_of(frame.level) - mean_of(dark) > least_light * brightest)) {
    throw Failure(cv::format("%s shows no light of the source: its mean is %.1f pixel values above the dark level.",
                             frame.path.c_str(), mean_of(frame.level) - mean_of(dark)));
  }
  const double spread = unevenness(frame, dark);
  if (spread > no_source) {
    throw Failure(cv::format("%s is no uniform source: its light differs by %.0f %% over the frame.",
                             frame.path.c_str(), 100.0 * spread));
  }
  if (spread > uneven) {
    note(cv::format("the light in %s differs by %.0f %% over the frame; a more even source calibrates better.",
                    frame.path.c_str(), 100.0 * spread));
  }
}

/** Nothing is darker than darkness, save for noise. */
void check_dark(const UniformFrame& dark, const std::vector<UniformFrame>& frames, double brightest) {
  constexpr double tolerance = 0.02;
  for (const UniformFrame& frame : frames) {
    for (std::size_t k = 0; k < 4; ++k) {
      if (dark.level[k] > frame.level[k] + tolerance * brightest) {
        throw Failure(cv::format(
            "%s is no dark frame of this series: under the %d degree polarizer its mean is %.1f, and that of %s %.1f.",
            dark.path.c_str(), static_cast<int>(45 * k), dark.level[k], frame.path.c_str(), frame.level[k]));
      }
    }
  }
}

Series read_series(const CalibrateOptions& options) {
  Series series;
  for (const std::string& frame : options.frames) {
    series.sources.push_back(parse_source(frame));
  }
  if (options.list) {
    const std::vector<SourceFile> listed = read_source_list(*options.list);
    series.sources.insert(series.sources.end(), listed.begin(), listed.end());
  }
  check_sources(series.sources);
  SeriesReader reader(options);
  double brightest = 0.0;
  for (const SourceFile& source : series.sources) {
    series.frames.push_back(reader.read(source.path));
    brightest = std::max(brightest, mean_of(series.frames.back().level));
  }
  if (options.dark) {
    const UniformFrame dark = reader.read(*options.dark);
    check_dark(dark, series.frames, brightest);
    series.dark = dark.level;
  }
  for (const UniformFrame& frame : series.frames) {
    check_light(frame, series.dark, brightest - mean_of(series.dark));
  }
  series.bit_depth = reader.bit_depth();
  return series;
}

PolarizerFit fit_series(const Series& series, bool steady) {
  std::vector<SourceSample> samples;
  for (std::size_t i = 0; i < series.frames.size(); ++i) {
    SourceSample sample{series.sources[i].angle, series.frames[i].level};
    for (std::size_t k = 0; k < 4; ++k) {
      sample.signal[k] -= series.dark[k];
    }
    samples.push_back(sample);
  }
  return fit_polarizers(samples, steady);
}

void check_fit(const PolarizerFit& fit, const Series& series, bool steady) {
  constexpr double most_turned = 22.5;  // beyond it the next orientation is nearer
  constexpr double doubtful_residual = 0.01;
  for (std::size_t k = 0; k < 4; ++k) {
    if (std::abs(fit.angle_error(k)) > most_turned) {
      const double angle = fit.responses[k].angle_degrees();
      throw Failure(cv::format(
          "the pixels under the %zu degree polarizer pass light at %.1f degrees; --layout or --origin is wrong, or "
          "the angles of the frames do not count counter-clockwise from the image's horizontal axis.",
          45 * k, angle < 0.0 ? angle + 180.0 : angle));
    }
  }
  for (std::size_t i = 0; i < series.frames.size(); ++i) {
    if (fit.residual_of_frame(i) > doubtful_residual) {
      note(cv::format("%s departs from the fit by %.1f %% of the source; is its angle of %g degrees right%s?",
                      series.frames[i].path.c_str(), 100.0 * fit.residual_of_frame(i), series.sources[i].angle,
                      steady ? ", and the source steady" : ""));
    }
  }
}

void report(const CalibrateOptions& options, const Series& series, const PolarizerFit& fit, const fs::path& plot) {
  const auto [dimmest, brightest] = std::minmax_element(fit.source.begin(), fit.source.end());
  std::printf("%zu frames, source %.0f..%.0f pixel values%s\n", series.frames.size(), *dimmest, *brightest,
              options.dark ? cv::format(", dark level %.1f", mean_of(series.dark)).c_str() : "");
  std::printf("polarizer  angle error (degrees)  extinction ratio    gain  residual (rms)\n");
  for (std::size_t k = 0; k < 4; ++k) {
    std::printf("%9zu  %8s +- %-9.3f  %16s  %6.4f  %12.4f %%\n", 45 * k, angle_error_text(fit, k).c_str(),
                fit.uncertainties[k].angle_degrees, extinction_text(fit, k).c_str(), fit.responses[k].gain(),
                100.0 * fit.residual_of(k));
  }
  std::printf("calibration in %s, plot in %s\n", options.file.c_str(), plot.string().c_str());
}

}  // namespace

void run_calibrate(const CalibrateOptions& options) {
  check_options(options);
  const Series series = read_series(options);
  const PolarizerFit fit = fit_series(series, options.steady_source);
  check_fit(fit, series, options.steady_source);

  const Calibration calibration{calibration_matrices(fit.responses), series.dark, series.bit_depth};
  std::vector<double> angles;
  for (const SourceFile& source : series.sources) {
    angles.push_back(source.angle);
  }
  const fs::path plot = fs::path(options.file).replace_extension(".png");
  FileSet files;
  files.write(options.file, encode_calibration(calibration, fit));
  files.write(plot, encode_picture(draw_calibration(fit, angles, fs::path(options.file).filename().string()), ".png"));
  files.commit();
  report(options, series, fit, plot);
}

}  // namespace nerova_zel
