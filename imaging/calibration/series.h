#pragma once

#include <string>
#include <vector>

#include "calibration/calibration.h"
#include "calibration/uniform_frame.h"

namespace nerova_zel {

/** Frames of a uniform source behind a linear polarizer, from which a calibration is made. */
class CalibrationSeries {
 public:
  /** `origin` is that of all frames. */
  CalibrationSeries(MosaicLayout layout, Origin origin) : layout_(layout), origin_(origin) {}

  /**
   * Adds a frame taken with the source's polarizer at an angle; `name` is what failures call it. Throws Failure when it
   * has not the size and bit depth of the first, is too small or has values beyond its full scale.
   */
  void add(const std::string& name, double angle_degrees, const RawFrame& frame, int bit_depth);

  /** The frame without light, after all others. Throws Failure as add does, and if a frame is darker than it. */
  void set_dark(const std::string& name, const RawFrame& frame, int bit_depth);

  /**
   * Throws Failure if a frame is overexposed, shows no light of the source, or no uniform one. Returns a sentence for
   * each frame whose light is uneven enough to make the calibration worse.
   */
  std::vector<std::string> check_light() const;

  /** Throws Failure when the angles or signals do not determine the responses, or contradict the layout. */
  PolarizerFit fit(bool steady_source) const;

  /** A sentence for each frame that departs from the fit more than it should, and one if all polarizers are turned. */
  std::vector<std::string> doubtful_frames(const PolarizerFit& fit, bool steady_source) const;

  CameraCalibration calibration(const PolarizerFit& fit) const {
    return {calibration_matrices(fit.responses), dark_, bit_depth_};
  }

  std::size_t size() const { return frames_.size(); }
  /** Degrees, by frame. */
  const std::vector<double>& angles() const { return angles_; }
  /** Mean of the dark levels. */
  double dark_level() const;

 private:
  UniformFrame measure(const std::string& name, const RawFrame& frame, int bit_depth) const;
  double brightest() const;

  MosaicLayout layout_;
  Origin origin_;
  std::vector<double> angles_;
  std::vector<UniformFrame> frames_;
  PerPolarizer dark_{};
  int bit_depth_ = 0;
};

}  // namespace nerova_zel
