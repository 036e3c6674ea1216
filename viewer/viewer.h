#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "azimuth_colours.h"
#include "viewing/computed_frames.h"

namespace nerova_zel {

/** A file, stream or camera, as the page is told of it. */
struct ViewedSource {
  enum class Kind { file, stream, camera };

  std::string name;
  Kind kind = Kind::file;
  /** Frames have the numbers first to first + frames - 1. */
  std::uint64_t first = 0;
  std::uint64_t frames = 1;
  /** Where it is known before a frame is read. */
  std::optional<FrameSize> size;
  std::optional<int> bit_depth;
  /** More frames may come. */
  bool live = false;
  /** Why nothing comes any more; empty where all is well. */
  std::string error;
};

/** What there is to look at. Thread-safe. */
class ViewedFrames : public FrameProvider {
 public:
  virtual std::vector<ViewedSource> sources() = 0;
  /** How often sources have changed. Looks for changes, so it may take a moment. */
  virtual std::uint64_t revision() = 0;
  /** The sentence for the exception that is being handled, as the program prints it. */
  virtual std::string describe_failure() const = 0;
};

struct ViewSettings {
  ComputedFrames::Options frames;
  bool layout_is_given = false;
  /** The calibration to begin with. */
  std::size_t calibration = 0;
  AzimuthStyle style = AzimuthStyle::dark;
  /** Where scales end; chosen by the page for each frame if not said. */
  std::optional<double> degree_end;
  std::optional<double> power_end;
  /** Of the loopback interface; 0 is one that is free. */
  int port = 0;
  /** End with the last page: when none has been open for some time after one was. */
  bool once = false;
  std::chrono::milliseconds closed_time{5000};
  std::string version;
  /** Sentences to begin with. */
  std::vector<std::string> notes;
  /** Called with each address that opens a page: one at the start, another when that was used twice. Any thread. */
  std::function<void(const std::string&)> tell_address;
};

/** Serves a page that shows frames, to browsers of this computer. Ends with its destructor. */
class Viewer {
 public:
  Viewer() = default;
  virtual ~Viewer() = default;
  Viewer(const Viewer&) = delete;
  Viewer& operator=(const Viewer&) = delete;

  /** Whether it serves no more: with `once`, no page has been open for some seconds after one was. Thread-safe. */
  virtual bool is_over() const = 0;
};

/** `frames` must outlive the viewer. Throws Failure where the port is taken or the library cannot be loaded. */
std::unique_ptr<Viewer> start_viewer(ViewSettings settings, ViewedFrames& frames);

}  // namespace nerova_zel
