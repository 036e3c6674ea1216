#pragma once

#include <array>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "calibration/calibration.h"
#include "frames/bit_depth.h"
#include "frames/mosaic_layout.h"
#include "frames/raw_frame.h"
#include "processor/library.h"
#include "processor/output_images.h"
#include "processor/sampling.h"

namespace nerova_zel {

/** How frames are to be transformed. */
struct TransformSettings {
  MosaicLayout layout{90};
  /** Sensor coordinates of the top-left pixel of a whole frame. */
  Origin origin{};
  /** The part of a frame to transform, as if the camera had read out no more. */
  std::optional<Region> region;
  DepthChoice depth;
  /** Transform frames with many pixels beyond full scale, too. */
  bool allow_overflow = false;
  /** Scale the 16-bit power for twice full scale, which P can reach: as the library does for one bit more. */
  bool power_headroom = false;
  Sampling sampling = Sampling::window;
  int output_maximum = 65535;
  std::optional<CameraCalibration> calibration;
  /** Transforms of each frame, for the time of the best. */
  int repeat = 1;
  /** Threads that compute a frame; their number does not change a bit. */
  int threads = 1;
};

/** Transforms frames, one at a time: one for each thread. Keeps its memory from frame to frame. */
class FrameTransformer {
 public:
  struct Timing {
    double first_ms;
    double best_ms;
  };

  /** Settings and library are shared and must outlive it. */
  FrameTransformer(const TransformSettings& settings, const Library& library, std::set<Output> wanted);

  /** The frame to transform next, for the caller to fill in; after run, the wanted region of it. */
  RawFrame& frame() { return frame_; }

  /** Transforms frame(); `name` is what failures call it. Throws Failure. */
  Timing run(const std::string& name);

  // Of the frame that was transformed last.
  const RawFrame& frame() const { return frame_; }
  const Origin& origin() const { return origin_; }
  int bit_depth() const { return bit_depth_; }
  int full_scale() const { return (1 << bit_depth_) - 1; }
  /** Of its pixels, before any dark level is taken off. */
  const PixelCounts& counts() const { return counts_; }
  const OutputImages& outputs() const { return outputs_; }
  OutputImages& outputs() { return outputs_; }
  /** Share of the pixels whose power is the output maximum, because it ends there; 0 without a power image. */
  double clipped_power() const;

 private:
  /** Without their dark level where a calibration has one. */
  const std::vector<std::uint16_t>& pixels_to_transform();
  Timing transform();
  void compute(const Frame& frame, ImageBuffers images);
  void compute_bilinear_images(const Frame& frame, const ImageBuffers& images);

  const TransformSettings& settings_;
  const Library& library_;
  RawFrame frame_;
  /** The frame without its dark level. */
  std::vector<std::uint16_t> calibrated_;
  /** Planes of P, S1 and S2, of which bilinear images are made. */
  std::array<std::vector<float>, 3> windows_;
  Origin origin_;
  int bit_depth_ = 16;
  PixelCounts counts_;
  OutputImages outputs_;
};

}  // namespace nerova_zel
