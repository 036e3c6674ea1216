#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "frame_pictures.h"
#include "frames/colour_mosaic.h"
#include "power_colours.h"

namespace nerova_zel {

/** What the pictures of a colour sensor's frame are drawn from. Frame and outputs must outlive it. */
struct ColourPictureContent {
  std::string name;
  ColourPattern pattern;
  MosaicLayout layout;
  Origin origin;
  const RawFrame& frame;  ///< the whole, before its colours were taken apart
  /** Red, green 1 and 2 or one green, and blue; of equal size. Each is called as its colour. */
  std::vector<PictureContent> planes;
  /** Else the grey world's. */
  std::optional<WhiteBalance> balance;
};

/** Draws what shows all colours of a frame together; FramePictures draws those of one. Throws Failure. */
class ColourPictures {
 public:
  /** Both must outlive it. */
  ColourPictures(const ColourPictureContent& content, const PictureStyle& style);
  ~ColourPictures();
  ColourPictures(const ColourPictures&) = delete;
  ColourPictures& operator=(const ColourPictures&) = delete;

  /** One page: the power in colour, the frame, and the angle and the degree of each colour side by side. */
  Picture sheet();
  /** The power in colour, one pixel for each pixel of a plane. */
  Picture power();

 private:
  class Drawing;
  std::unique_ptr<Drawing> drawing_;
};

}  // namespace nerova_zel
