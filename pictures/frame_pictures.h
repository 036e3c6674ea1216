#pragma once

#include <memory>
#include <set>
#include <string>

#include "azimuth_colours.h"
#include "frames/mosaic_layout.h"
#include "frames/raw_frame.h"
#include "picture.h"
#include "processor/output_images.h"

namespace nerova_zel {

/** What pictures for looking at are drawn from. Frame and outputs must outlive it. */
struct PictureContent {
  std::string name;
  MosaicLayout layout;
  Origin origin;
  int bit_depth;
  int output_maximum;
  const RawFrame& frame;
  const OutputImages& outputs;
  /** Whether the output maximum of the power is twice full scale. */
  bool power_headroom = false;
};

/** The outputs that content must have. */
inline std::set<Output> outputs_for_pictures() {
  return {Output::stokes, Output::power, Output::azimuth, Output::dolp};
}

/** Where colour scales end: above 0, at most 1. */
struct PictureScales {
  double degree;
  double power;  ///< as a share of full scale
};

/** What a user chooses. */
struct PictureStyle {
  AzimuthStyle azimuth = AzimuthStyle::dark;
  /** 0 chooses the end of a scale from the picture. */
  PictureScales ends{0.0, 0.0};
};

enum class PictureKind {
  sheet,            ///< everything on a page
  azimuth_picture,  ///< the azimuth in colour at the frame's size
  azimuth_legend,   ///< what its colours mean
  power_picture,    ///< the power in colour, of a colour sensor's frames: ColourPictures draws it
};

/** Draws the pictures of a frame. What they share is computed once, when first needed. Throws Failure. */
class FramePictures {
 public:
  /** Both must outlive it. */
  FramePictures(const PictureContent& content, const PictureStyle& style);
  ~FramePictures();
  FramePictures(const FramePictures&) = delete;
  FramePictures& operator=(const FramePictures&) = delete;

  Picture draw(PictureKind kind);

 private:
  class Drawing;
  std::unique_ptr<Drawing> drawing_;
};

}  // namespace nerova_zel
