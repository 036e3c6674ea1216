#include "colour_pictures.h"

#include <algorithm>

#include "colour_sheet.h"
#include "drawn_picture.h"

namespace nerova_zel {

namespace {

ColourPower power_of(const ColourPictureContent& content) {
  const auto power = [&](std::size_t i) { return content.planes[i].outputs.values(Output::power); };
  const OutputImages& outputs = content.planes.front().outputs;
  const std::size_t last = content.planes.size() - 1;
  return {power(0), power(1), power(last - 1), power(last),
          static_cast<std::size_t>(outputs.width()) * static_cast<std::size_t>(outputs.height())};
}

}  // namespace

class ColourPictures::Drawing {
 public:
  Drawing(const ColourPictureContent& content, const PictureStyle& style) : content_(content), style_(style) {}

  Picture sheet() {
    return drawn_picture([&] { return draw_colour_sheet(content_, planes(), balance(), style_.azimuth, scales()); });
  }

  Picture power() {
    const OutputImages& outputs = content_.planes.front().outputs;
    Picture picture{outputs.width(), outputs.height(), {}};
    const ColourPower power = power_of(content_);
    picture.pixels.resize(3 * power.pixels);
    PowerColours(balance(), content_.planes.front().output_maximum, scales().power).paint(power, picture.pixels.data());
    return picture;
  }

 private:
  /** Taken from the power only when a picture is drawn: without one, the power may be missing. */
  const WhiteBalance& balance() {
    if (!balance_) {
      balance_ =
          content_.balance ? *content_.balance : grey_world(power_of(content_), content_.planes.front().output_maximum);
    }
    return *balance_;
  }

  const std::vector<SheetPlanes>& planes() {
    if (planes_.empty()) {
      for (const PictureContent& plane : content_.planes) {
        planes_.push_back(make_planes(PictureImages(plane), colour_sheet_panel(content_.planes.size())));
      }
    }
    return planes_;
  }

  PictureScales scales() {
    PictureScales scales = style_.ends;
    if (scales.degree == 0.0) {
      for (const SheetPlanes& plane : planes()) {
        scales.degree = std::max(scales.degree, degree_end(plane));
      }
    }
    if (scales.power == 0.0) {
      scales.power = light_end(brightest_power(planes(), balance()));
    }
    return scales;
  }

  const ColourPictureContent& content_;
  const PictureStyle& style_;
  std::optional<WhiteBalance> balance_;
  std::vector<SheetPlanes> planes_;
};

ColourPictures::ColourPictures(const ColourPictureContent& content, const PictureStyle& style)
    : drawing_(std::make_unique<Drawing>(content, style)) {}

ColourPictures::~ColourPictures() = default;

Picture ColourPictures::sheet() { return drawing_->sheet(); }

Picture ColourPictures::power() { return drawing_->power(); }

}  // namespace nerova_zel
