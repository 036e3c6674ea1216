#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "frames/colour_mosaic.h"
#include "frames/mosaic_layout.h"
#include "frames/pixel_formats.h"
#include "frames/raw_frame.h"

namespace nerova_zel {

/**
 * What a file of headerless frames holds, as the JSON file beside it says: NAME.raw.json for NAME.raw. The frames
 * follow each other without gaps. docs/cameras.md lists the members of the file.
 */
struct Recording {
  PixelFormat format = PixelFormat::mono8;
  FrameSize size{};
  /** Sensor coordinates of the top-left pixel. */
  Origin origin{};
  MosaicLayout layout{90};
  /** Of a sensor with colour filters. */
  std::optional<ColourPattern> colour;
  std::uint64_t frames = 0;

  // What follows is for people; empty where the camera does not say.
  std::string camera;
  std::optional<double> exposure_us;
  std::optional<double> gain;
  /** Nanoseconds of the camera's clock, of each frame. */
  std::vector<std::uint64_t> timestamps_ns;
  /** Frames that the camera sent and the file lacks. */
  std::uint64_t incomplete_frames = 0;
  std::uint64_t dropped_frames = 0;
};

/** Ending of the description's name after that of the recording. */
constexpr const char* recording_ending = ".json";

/** The text of a description. */
std::string encode_recording(const Recording& recording);

/**
 * Reads that text; what it does not know is ignored. `name` is what failures call the file. Throws Failure, saying what
 * is wrong with it.
 */
Recording parse_recording(const std::string& text, const std::string& name);

}  // namespace nerova_zel
