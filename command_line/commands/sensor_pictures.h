#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "colour_pictures.h"
#include "commands/output_files.h"
#include "frame_pictures.h"
#include "processor/sensor_transformer.h"

namespace nerova_zel {

/** Draws the pictures of a frame, with or without colours. */
class SensorPictures {
 public:
  /** What a user chooses. */
  struct Style : PictureStyle {
    /** Of power in colour; else the grey world's. */
    std::optional<WhiteBalance> balance;
  };

  /** Everything but `name` must outlive it; `name` is the frame's, for its page. */
  SensorPictures(const std::string& name, const TransformSettings& settings,
                 const std::optional<ColourSettings>& colour, const SensorTransformer& transformer, const Style& style);

  /** The picture that the file holds. Throws Failure. */
  Picture draw(const OutputFile& file);

 private:
  const Style& style_;
  std::vector<PictureContent> planes_;
  std::vector<std::unique_ptr<FramePictures>> pictures_;  ///< by plane
  std::optional<ColourPictureContent> content_;
  std::optional<ColourPictures> colours_;
};

}  // namespace nerova_zel
