#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "camera.h"
#include "frames/recording.h"

namespace nerova_zel {

/** What is to be recorded, and where. */
struct RecordingRequest {
  std::string file;
  bool replace = false;
  /** Nothing records until `stop` says so. */
  std::optional<std::uint64_t> frames;
  MosaicLayout layout{90};
  /** Of a sensor with colour filters that the pixel format does not tell. */
  std::optional<ColourPattern> colour;
  /** Without a frame for so long the recording ends. */
  std::chrono::milliseconds patience{5000};
};

/** What a recording tells while it runs. All are called on the recorder's thread and may be empty. */
struct RecordingObserver {
  /** Whether to end; asked several times a second. */
  std::function<bool()> stop;
  /** After each frame. */
  std::function<void(const Recording&)> frame;
  /** A sentence on what goes wrong while the recording goes on. */
  std::function<void(const std::string&)> warn;
};

/**
 * Records the camera's frames and describes them in the JSON file beside. Both are valid however it ends, unless not
 * one frame came: then neither is there. Returns the description. Throws Failure after what was recorded is safe: the
 * camera is lost or silent, the disk is full.
 */
Recording record(Camera& camera, const RecordingRequest& request, const RecordingObserver& observer);

}  // namespace nerova_zel
