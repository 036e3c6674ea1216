#include "frame_pictures.h"

#include <optional>

#include "azimuth_legend.h"
#include "azimuth_picture.h"
#include "drawn_picture.h"
#include "picture_images.h"
#include "picture_sheet.h"
#include "sheet_planes.h"

namespace nerova_zel {

class FramePictures::Drawing {
 public:
  Drawing(const PictureContent& content, const PictureStyle& style) : images_(content), style_(style) {}

  cv::Mat draw(PictureKind kind) {
    switch (kind) {
      case PictureKind::azimuth_picture:
        return draw_azimuth_picture(images_, style_.azimuth, scales());
      case PictureKind::azimuth_legend:
        return draw_azimuth_legend(style_.azimuth, scales());
      default:
        return draw_sheet(images_, planes(), style_.azimuth, scales());
    }
  }

 private:
  const SheetPlanes& planes() {
    if (!planes_) {
      planes_ = make_planes(images_, sheet_panel());
    }
    return *planes_;
  }

  PictureScales scales() {
    PictureScales scales = style_.ends;
    if (scales.degree == 0.0) {
      scales.degree = degree_end(planes());
    }
    if (scales.power == 0.0) {
      scales.power = light_end(planes().power);
    }
    return scales;
  }

  const PictureImages images_;
  const PictureStyle& style_;
  std::optional<SheetPlanes> planes_;
};

FramePictures::FramePictures(const PictureContent& content, const PictureStyle& style)
    : drawing_(std::make_unique<Drawing>(content, style)) {}

FramePictures::~FramePictures() = default;

Picture FramePictures::draw(PictureKind kind) {
  return drawn_picture([&] { return drawing_->draw(kind); });
}

}  // namespace nerova_zel
