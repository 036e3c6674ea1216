#pragma once

#include <set>
#include <string>
#include <vector>

#include "frame_outputs.h"
#include "frame_request.h"
#include "frame_sequence.h"

namespace nerova_zel {

/** Reads and transforms frames, one at a time: one for each thread. Keeps its memory from frame to frame. */
class FrameTransformer {
 public:
  struct Timing {
    double first_ms;
    double best_ms;
  };

  /** Request and library are shared and must outlive it. */
  FrameTransformer(const FrameRequest& request, const Library& library, std::set<OutputKind> wanted);

  /** Where the bytes of the next frame of standard input go. */
  Bytes& bytes() { return bytes_; }

  /** Throws Failure. */
  Timing run(const FrameTicket& ticket);

  // Of the frame that was transformed last; the wanted region of it, if one is wanted.
  const RawFrame& frame() const { return frame_; }
  const Origin& origin() const { return origin_; }
  int bit_depth() const { return bit_depth_; }
  int full_scale() const { return (1 << bit_depth_) - 1; }
  const FrameOutputs& outputs() const { return outputs_; }

 private:
  void read(const FrameTicket& ticket);
  /** Leaves the wanted region. */
  void crop(const std::string& name);
  /** Without their dark level where a calibration says it. */
  const std::vector<std::uint16_t>& pixels_to_transform();
  Timing transform();

  const FrameRequest& request_;
  const Library& library_;
  Bytes bytes_;
  RawFrame frame_;
  /** The frame without its dark level. */
  std::vector<std::uint16_t> calibrated_;
  Origin origin_;
  int bit_depth_ = 16;
  FrameOutputs outputs_;
};

}  // namespace nerova_zel
