#pragma once

#include <optional>

#include "frame_outputs.h"
#include "picture_content.h"
#include "sheet_planes.h"

namespace nerova_zel {

/** Draws the pictures of a frame that are for looking at. What they share is computed once, when first needed. */
class FramePictures {
 public:
  /** `content` and `style` must outlive it. */
  FramePictures(const PictureContent& content, const PictureStyle& style) : content_(content), style_(style) {}

  /** Of kind sheet, azimuth_picture or azimuth_legend. */
  cv::Mat draw(OutputKind kind);

 private:
  const SheetPlanes& planes();
  PictureScales scales();

  const PictureContent& content_;
  const PictureStyle& style_;
  std::optional<SheetPlanes> planes_;
};

}  // namespace nerova_zel
