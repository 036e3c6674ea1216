#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "azimuth_colours.h"
#include "calibration/calibration.h"
#include "frames/colour_mosaic.h"
#include "frames/mosaic_layout.h"
#include "frames/raw_frame.h"
#include "processor/library.h"
#include "video/video_outputs.h"

namespace nerova_zel {

/** How the frames of a stream are transformed. */
struct VideoSettings {
  MosaicLayout layout{90};
  /** Sensor coordinates of the top-left pixel. */
  Origin origin{};
  /** Significant bits of a sample, 1 to 16; 0 for all that it has room for. */
  int bit_depth = 0;
  /** Whether the significant bits are the upper ones of a sample. */
  bool left_aligned = false;
  int output_maximum = 65535;
  std::optional<CameraCalibration> calibration;
  /** Of a sensor with colour filters: each colour is computed alone, and its pixels stay where they are. */
  std::optional<ColourPattern> colour;
  /** By colour; in place of the calibration of all. */
  std::optional<PerPlane<CameraCalibration>> colour_calibrations{};
  AzimuthStyle style = AzimuthStyle::dark;
  /** Where the scales of pictures end: a degree, and a share of full scale; above 0, at most 1. */
  double degree_end = 1.0;
  double power_end = 1.0;
  /** Threads that compute one frame, at least 1. */
  int threads = 1;
};

/** One frame as a camera or a pipeline hands it over. */
struct VideoFrame {
  FrameSize size{};
  /** The first row. 16-bit samples are in the byte order of this computer and aligned to 2 bytes. */
  const std::uint8_t* rows = nullptr;
  /** Bytes from one row to the next: at least those of a row, even for 16-bit samples. */
  std::size_t stride = 0;
  /** Of a sample: 1 or 2. */
  int bytes_per_sample = 2;
};

/** Where an output goes: rows of the frame's size, which overlap nothing else. */
struct VideoPicture {
  /** NULL where the output is not wanted. */
  std::uint8_t* rows = nullptr;
  /** Bytes from one row to the next, as for VideoFrame. */
  std::size_t stride = 0;
};

/** By VideoOutput. */
using VideoPictures = std::array<VideoPicture, video_output_table.size()>;

/**
 * Transforms the frames of a stream, whose size and sample format may change from frame to frame. Keeps its memory.
 * Rows without gaps are read and written in place; else the work is done in strips of rows that stay in the cache. The
 * 16-bit outputs are the library's, to the last bit. One thread may call it at a time.
 */
class VideoTransformer {
 public:
  /** Opens the library at `library_path`, or as Library does where that is empty. Throws Failure. */
  VideoTransformer(VideoSettings settings, const std::string& library_path);

  /**
   * Computes the wanted outputs. Throws Failure where the settings do not suit the frame (its size, its bit depth);
   * nothing is written then.
   */
  void transform(const VideoFrame& frame, const VideoPictures& wanted);

  const VideoSettings& settings() const { return settings_; }

  /** What computes the frames, in words. */
  const std::string& route() const { return route_; }

 private:
  class Work;

  VideoSettings settings_;
  Library library_;
  std::string route_;
  AzimuthColours colours_;
  /** Of each thread: the samples and images of a strip; with colours, of a frame and of its planes. */
  std::vector<std::vector<std::uint16_t>> rooms_;
  /** With colours, one for each. */
  std::vector<std::unique_ptr<VideoTransformer>> planes_;
};

}  // namespace nerova_zel
