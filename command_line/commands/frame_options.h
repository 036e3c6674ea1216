#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cli_classes.h"
#include "commands/colour_options.h"
#include "frames/headerless_frame.h"
#include "frames/recording.h"
#include "processor/frame_transformer.h"

namespace nerova_zel {

/** What the commands that transform frames have in common. */
struct FrameRequest : TransformSettings {
  /** Whether the user said the layout. */
  bool layout_is_given = false;
  /** As the user named them. */
  std::vector<std::string> frames;
  /** Folders stand for the frames of the folders in them, too. */
  bool recursive = false;
  std::optional<HeaderlessLayout> headerless;
  /** Of a colour sensor; with the calibrations of its colours in place of the settings' one. */
  std::optional<ColourSettings> colour;
  FrameRange range;
  std::string calibration_file;
  /** What tells the calibration from another. */
  std::string calibration_mark;
  /** Frames worked on at once. */
  int jobs = 1;
  std::string library;
};

/** Options of a sensor and of headerless pixels, which calibrate takes too. All refer to what must outlive parsing. */
void add_layout(CLI::App* command, MosaicLayout& layout, bool* is_given = nullptr);
CLI::Option* add_origin(CLI::App* command, Origin& origin, const std::string& frame);
void add_bit_depth(CLI::App* command, std::optional<int>& bit_depth, const std::string& help);

/** --raw, --pixel-format, --header and --stride, which belong together. */
class HeaderlessOptions {
 public:
  void declare(CLI::App* command, const std::string& raw_help, const std::string& format_help);

  /** Nothing without --raw. Throws Failure for another of them alone. */
  std::optional<HeaderlessLayout> layout() const;

  /** The pattern that the name of the pixel format says, if any. */
  const std::optional<ColourPattern>& pattern() const { return pattern_; }

 private:
  std::optional<FrameSize> size_;
  std::optional<PixelFormat> format_;
  std::optional<ColourPattern> pattern_;
  std::optional<std::uint64_t> header_;
  std::optional<std::uint64_t> stride_;
};

/** The options of the commands that transform frames. */
class FrameOptions {
 public:
  /** `request` must live as long as the command. */
  void declare(CLI::App* command, FrameRequest& request, bool needs_frames = true);

  /**
   * Completes the request when all is parsed: reads the calibration. Frames are those of the camera, if one is
   * described. Throws Failure.
   */
  void finish(FrameRequest& request, const Recording* camera = nullptr) const;

 private:
  /** What is not said by options is taken from the description of a recording, the pattern of its colours too. */
  void take_recording(FrameRequest& request, std::optional<ColourPattern>& pattern) const;

  /** What cameras and recordings tell. */
  void take_description(const Recording& recording, FrameRequest& request, std::optional<ColourPattern>& pattern) const;

  HeaderlessOptions headerless_;
  ColourOptions colour_;
  const CLI::Option* origin_option_ = nullptr;
  std::optional<int> jobs_;
};

/** What the user is told who did not say the layout. */
std::string layout_assumption(const MosaicLayout& layout);

/** Tells the user where the calibration, if any, will not do for a whole frame. */
void check_calibration(Library& library, const FrameRequest& request);

}  // namespace nerova_zel
