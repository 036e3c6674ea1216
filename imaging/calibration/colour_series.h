#pragma once

#include <string>

#include "calibration/series.h"
#include "frames/colour_mosaic.h"

namespace nerova_zel {

/** Frames of a colour sensor, from which a calibration of each colour is made. */
class ColourCalibrationSeries {
 public:
  /** `origin` is that of all frames. */
  ColourCalibrationSeries(ColourPattern pattern, MosaicLayout layout, const Origin& origin);

  /** As CalibrationSeries does it; failures name the colour too. Throws Failure. */
  void add(const std::string& name, double angle_degrees, const RawFrame& frame, int bit_depth);
  void set_dark(const std::string& name, const RawFrame& frame, int bit_depth);

  /** The frames of one colour. */
  const CalibrationSeries& plane(ColourPlane plane) const { return series_[static_cast<std::size_t>(plane)]; }

 private:
  template <class Action>
  void for_each_plane(const std::string& name, const RawFrame& frame, const Action& action);

  ColourPattern pattern_;
  Origin origin_;
  PerPlane<CalibrationSeries> series_;
  PerPlane<RawFrame> planes_;  ///< of one frame
};

}  // namespace nerova_zel
