#include "calibration/series.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "failure.h"
#include "formatted.h"

namespace nerova_zel {

namespace {

double mean_of(const PerPolarizer& values) { return std::accumulate(values.begin(), values.end(), 0.0) / 4.0; }

std::string form(int width, int height, int bits) {
  return formatted("%d x %d pixels of %d bits", width, height, bits);
}

}  // namespace

UniformFrame CalibrationSeries::measure(const std::string& name, const RawFrame& frame, int bit_depth) const {
  if (!frames_.empty()) {
    const UniformFrame& first = frames_.front();
    if (frame.width != first.width || frame.height != first.height || bit_depth != bit_depth_) {
      throw Failure(name + " has " + form(frame.width, frame.height, bit_depth) + ", but " + first.name + " has " +
                    form(first.width, first.height, bit_depth_) + ".");
    }
  }
  return measure_uniform_frame(name, frame, {layout_, origin_, bit_depth});
}

void CalibrationSeries::add(const std::string& name, double angle_degrees, const RawFrame& frame, int bit_depth) {
  frames_.push_back(measure(name, frame, bit_depth));
  angles_.push_back(angle_degrees);
  bit_depth_ = bit_depth;
}

// Nothing is darker than darkness, save for noise.
void CalibrationSeries::set_dark(const std::string& name, const RawFrame& frame, int bit_depth) {
  constexpr double tolerance = 0.02;
  const UniformFrame dark = measure(name, frame, bit_depth);
  for (const UniformFrame& lit : frames_) {
    for (std::size_t k = 0; k < 4; ++k) {
      if (dark.level[k] > lit.level[k] + tolerance * brightest()) {
        throw Failure(formatted(
            "%s is no dark frame of this series: under the %d degree polarizer its mean is %.1f, and that of %s %.1f.",
            dark.name.c_str(), static_cast<int>(45 * k), dark.level[k], lit.name.c_str(), lit.level[k]));
      }
    }
  }
  dark_ = dark.level;
}

double CalibrationSeries::brightest() const {
  double brightest = 0.0;
  for (const UniformFrame& frame : frames_) {
    brightest = std::max(brightest, mean_of(frame.level));
  }
  return brightest;
}

double CalibrationSeries::dark_level() const { return mean_of(dark_); }

std::vector<std::string> CalibrationSeries::check_light() const {
  constexpr double most_saturated = 0.001;
  constexpr double least_light = 0.02;
  constexpr double uneven = 0.15;
  constexpr double no_source = 0.5;
  const double brightest_light = brightest() - dark_level();
  std::vector<std::string> doubts;
  for (const UniformFrame& frame : frames_) {
    if (frame.saturated > most_saturated) {
      throw Failure(formatted("%s is overexposed: %.1f %% of its pixels are saturated; take it with less light.",
                              frame.name.c_str(), 100.0 * frame.saturated));
    }
    const double light = mean_of(frame.level) - dark_level();
    if (!(light > least_light * brightest_light)) {
      throw Failure(formatted("%s shows no light of the source: its mean is %.1f pixel values above the dark level.",
                              frame.name.c_str(), light));
    }
    const double spread = unevenness(frame, dark_);
    if (spread > no_source) {
      throw Failure(formatted("%s is no uniform source: its light differs by %.0f %% over the frame.",
                              frame.name.c_str(), 100.0 * spread));
    }
    if (spread > uneven) {
      doubts.push_back(
          formatted("the light in %s differs by %.0f %% over the frame; a more even source calibrates better.",
                    frame.name.c_str(), 100.0 * spread));
    }
  }
  return doubts;
}

PolarizerFit CalibrationSeries::fit(bool steady_source) const {
  constexpr double most_turned = 22.5;  // beyond it the next orientation is nearer
  std::vector<SourceSample> samples;
  for (std::size_t i = 0; i < frames_.size(); ++i) {
    SourceSample sample{angles_[i], frames_[i].level};
    for (std::size_t k = 0; k < 4; ++k) {
      sample.signal[k] -= dark_[k];
    }
    samples.push_back(sample);
  }
  PolarizerFit result = fit_polarizers(samples, steady_source);
  for (std::size_t k = 0; k < 4; ++k) {
    if (std::abs(result.angle_error(k)) > most_turned) {
      const double angle = result.responses[k].angle_degrees();
      throw Failure(formatted("the pixels under the %d degree polarizer pass light at %.1f degrees.",
                              static_cast<int>(45 * k), angle < 0.0 ? angle + 180.0 : angle),
                    Fact::wrong_orientation);
    }
  }
  return result;
}

std::vector<std::string> CalibrationSeries::doubtful_frames(const PolarizerFit& fit, bool steady_source) const {
  constexpr double doubtful_residual = 0.01;
  std::vector<std::string> doubts;
  for (std::size_t i = 0; i < frames_.size(); ++i) {
    if (fit.residual_of_frame(i) > doubtful_residual) {
      doubts.push_back(
          formatted("%s departs from the fit by %.1f %% of the source; is its angle of %g degrees right%s?",
                    frames_[i].name.c_str(), 100.0 * fit.residual_of_frame(i), angles_[i],
                    steady_source ? ", and the source steady" : ""));
    }
  }
  constexpr double doubtful_turn = 0.2;  // degrees
  const double common = fit.common_angle_error();
  double spread = 0.0;
  for (std::size_t k = 0; k < 4; ++k) {
    spread = std::max(spread, std::abs(fit.angle_error(k) - common));
  }
  if (std::abs(common) > std::max(doubtful_turn, spread)) {
    doubts.push_back(
        formatted("all four polarizers are turned by about %+.2f degrees; check the zero of the source's "
                  "polarizer and how the camera is turned.",
                  common));
  }
  return doubts;
}

}  // namespace nerova_zel
