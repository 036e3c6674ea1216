#include "frame_pictures.h"

#include "azimuth_legend.h"
#include "azimuth_picture.h"
#include "picture_sheet.h"

namespace nerova_zel {

cv::Mat FramePictures::draw(OutputKind kind) {
  switch (kind) {
    case OutputKind::azimuth_picture:
      return draw_azimuth_picture(content_, style_.azimuth, scales());
    case OutputKind::azimuth_legend:
      return draw_azimuth_legend(style_.azimuth, scales());
    default:
      return draw_sheet(content_, planes(), style_.azimuth, scales());
  }
}

const SheetPlanes& FramePictures::planes() {
  if (!planes_) {
    planes_ = make_planes(content_, sheet_panel());
  }
  return *planes_;
}

PictureScales FramePictures::scales() {
  PictureScales scales = style_.ends;
  if (scales.degree == 0.0) {
    scales.degree = degree_end(planes());
  }
  if (scales.power == 0.0) {
    scales.power = light_end(planes().power);
  }
  return scales;
}

}  // namespace nerova_zel
