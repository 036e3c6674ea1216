#include "calibration/colour_series.h"

namespace nerova_zel {

namespace {

PerPlane<CalibrationSeries> series_at(const ColourMosaic& mosaic, MosaicLayout layout) {
  const auto series = [&](ColourPlane plane) { return CalibrationSeries(layout, mosaic.plane_origin(plane)); };
  return {series(ColourPlane::red), series(ColourPlane::green1), series(ColourPlane::green2),
          series(ColourPlane::blue)};
}

}  // namespace

// Where the planes begin does not depend on the frame's size.
ColourCalibrationSeries::ColourCalibrationSeries(ColourPattern pattern, MosaicLayout layout, const Origin& origin)
    : pattern_(pattern), origin_(origin), series_(series_at({pattern, origin, {8, 8}}, layout)) {}

template <class Action>
void ColourCalibrationSeries::for_each_plane(const std::string& name, const RawFrame& frame, const Action& action) {
  split_frame({pattern_, origin_, {frame.width, frame.height}}, frame, planes_);
  for (std::size_t i = 0; i < colour_plane_count; ++i) {
    action(series_[i], name + " (" + name_of(colour_planes[i]) + ")", planes_[i]);
  }
}

void ColourCalibrationSeries::add(const std::string& name, double angle_degrees, const RawFrame& frame, int bit_depth) {
  for_each_plane(name, frame, [&](CalibrationSeries& series, const std::string& plane_name, const RawFrame& plane) {
    series.add(plane_name, angle_degrees, plane, bit_depth);
  });
}

void ColourCalibrationSeries::set_dark(const std::string& name, const RawFrame& frame, int bit_depth) {
  for_each_plane(name, frame, [&](CalibrationSeries& series, const std::string& plane_name, const RawFrame& plane) {
    series.set_dark(plane_name, plane, bit_depth);
  });
}

}  // namespace nerova_zel
