#include "frame_pictures.h"

#include <optional>

#include "azimuth_colours.h"
#include "azimuth_legend.h"
#include "drawn_picture.h"
#include "picture_images.h"
#include "picture_sheet.h"
#include "sheet_planes.h"

namespace nerova_zel {

class FramePictures::Drawing {
 public:
  Drawing(const PictureContent& content, const PictureStyle& style)
      : content_(content), images_(content), style_(style) {}

  Picture draw(PictureKind kind) {
    switch (kind) {
      case PictureKind::azimuth_picture:
        return azimuth_picture();
      case PictureKind::azimuth_legend:
        return drawn_picture([&] { return draw_azimuth_legend(style_.azimuth, scales()); });
      default:
        return drawn_picture([&] { return draw_sheet(images_, planes(), style_.azimuth, scales()); });
    }
  }

 private:
  /** A pixel for each of the frame, as docs/pictures.md defines it to the last bit. */
  Picture azimuth_picture() {
    const PictureScales ends = scales();
    const OutputImages& outputs = content_.outputs;
    Picture picture{outputs.width(), outputs.height(), {}};
    const std::size_t pixels = static_cast<std::size_t>(picture.width) * static_cast<std::size_t>(picture.height);
    picture.pixels.resize(3 * pixels);
    AzimuthColours(style_.azimuth, {content_.output_maximum, ends.degree, ends.power})
        .paint(outputs.values(Output::azimuth), outputs.values(Output::dolp), outputs.values(Output::power), pixels,
               picture.pixels.data());
    return picture;
  }

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

  const PictureContent& content_;
  const PictureImages images_;
  const PictureStyle& style_;
  std::optional<SheetPlanes> planes_;
};

FramePictures::FramePictures(const PictureContent& content, const PictureStyle& style)
    : drawing_(std::make_unique<Drawing>(content, style)) {}

FramePictures::~FramePictures() = default;

Picture FramePictures::draw(PictureKind kind) { return drawing_->draw(kind); }

}  // namespace nerova_zel
