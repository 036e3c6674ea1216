#pragma once

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "frames/bit_depth.h"
#include "frames/colour_mosaic.h"
#include "processor/frame_transformer.h"

namespace nerova_zel {

/** What the colours of a frame are to become. */
struct ColourSettings {
  ColourPattern pattern = ColourPattern::rggb;
  /** One green plane, the mean of both, in place of two. */
  bool merge_green = false;
  /** Planes of the frame's size, interpolated, in place of half of it. */
  bool full_size = false;
  /** By plane; in place of the calibration of all. */
  std::optional<PerPlane<CameraCalibration>> calibrations{};

  /** How many planes come out: 4, or 3 with one green. */
  std::size_t plane_count() const { return merge_green ? 3 : 4; }
  /** The plane that comes out in place `i`; a merged green is green1. */
  ColourPlane plane(std::size_t i) const;
  /** "R", "G1", "G2", "B" or "G". */
  const char* name(std::size_t i) const;
  /** Of the plane in place `i`; of a merged green the mean of both. Nothing without calibrations. */
  std::optional<CameraCalibration> calibration(std::size_t i) const;
};

/** The library, with a processor for each calibration that there is. */
class SensorLibraries {
 public:
  /**
   * Opens the library at `path` as Library does, and has it use the settings' calibration, or those of the colours.
   * Throws Failure.
   */
  SensorLibraries(const std::string& path, const TransformSettings& settings,
                  const std::optional<ColourSettings>& colour);

  /** For the plane in place `i` of the colours; without colours for the frame. */
  const Library& of(std::size_t i) const { return *libraries_[libraries_.size() == 1 ? 0 : i]; }
  Library& first() { return *libraries_.front(); }

 private:
  std::vector<std::unique_ptr<Library>> libraries_;
};

/**
 * Transforms the frames of a sensor with or without colours, one frame at a time: one for each thread. Without colours
 * the frame is the only plane. The planes of colours are cut to the part that all of them have, so that equal pixels
 * are of one 4 x 4 pattern. Keeps its memory from frame to frame.
 */
class SensorTransformer {
 public:
  /** Settings and libraries are shared and must outlive it. */
  SensorTransformer(const TransformSettings& settings, const std::optional<ColourSettings>& colour,
                    const SensorLibraries& libraries, const std::set<Output>& wanted);

  /** The frame to transform next, for the caller to fill in; after run, the wanted region of it. */
  RawFrame& frame() { return colour_ ? frame_ : planes_.front()->transformer.frame(); }

  /**
   * Transforms frame(); `name` is what failures call it. The times include taking colours out of the frame. Throws
   * Failure, also when planes have less than 2 x 2 pixels in common.
   */
  FrameTransformer::Timing run(const std::string& name);

  // Of the frame that was transformed last.
  const RawFrame& frame() const { return colour_ ? frame_ : planes_.front()->transformer.frame(); }
  const Origin& origin() const { return origin_; }
  int bit_depth() const { return planes_.front()->transformer.bit_depth(); }
  int full_scale() const { return planes_.front()->transformer.full_scale(); }
  /** Of the pixels of frame(), before any dark level is taken off. */
  const PixelCounts& counts() const { return colour_ ? counts_ : planes_.front()->transformer.counts(); }
  std::size_t plane_count() const { return planes_.size(); }
  const FrameTransformer& plane(std::size_t i) const { return planes_[i]->transformer; }
  FrameTransformer& plane(std::size_t i) { return planes_[i]->transformer; }

 private:
  struct Plane {
    Plane(const TransformSettings& plane_settings, const Library& library, const std::set<Output>& wanted)
        : settings(plane_settings), transformer(settings, library, wanted) {}

    const TransformSettings settings;
    FrameTransformer transformer;
  };

  void settle_pixels(const std::string& name);
  void take_apart(const std::string& name);
  void take_plane(const ColourMosaic& mosaic, ColourPlane plane, const std::string& name, RawFrame& frame);

  const TransformSettings& settings_;
  const std::optional<ColourSettings> colour_;
  Origin origin_;
  std::vector<std::unique_ptr<Plane>> planes_;
  // With colours:
  RawFrame frame_;
  int colour_bits_ = 16;
  PixelCounts counts_;
  PerPlane<RawFrame> raw_;  ///< the planes before they are cut or interpolated
  RawFrame other_green_;    ///< of greens to merge
};

}  // namespace nerova_zel
