#pragma once

#include <string>

#include "frame_outputs.h"
#include "frame_sequence.h"
#include "library.h"
#include "transform_request.h"

namespace nerova_zel {

/** What became of a frame. */
struct FrameReport {
  enum class Result { done, skipped, failed };
  Result result = Result::failed;
  /** One line for the user; of a failure, its sentence. */
  std::string line;
  /** Something to know about a frame that is done, or empty. */
  std::string note;
  /** Pixels transformed. */
  std::uint64_t pixels = 0;
};

/** Reads, transforms and writes frames, one at a time: one for each thread. Keeps its memory from frame to frame. */
class FrameJob {
 public:
  /** All are shared and must outlive it; `directory`, where outputs go, must exist. */
  FrameJob(const TransformRequest& request, const Library& library);

  /** Where the bytes of the next frame of standard input go. */
  Bytes& bytes() { return bytes_; }

  /** Never throws: what goes wrong is reported. */
  FrameReport run(const FrameTicket& ticket);

 private:
  struct Timing {
    double first_ms;
    double best_ms;
  };

  FrameReport work(const FrameTicket& ticket);
  bool is_finished(const FrameTicket& ticket) const;
  void read(const FrameTicket& ticket);
  /** Leaves the wanted region. */
  void crop(const std::string& name);
  /** Without their dark level where a calibration says it. */
  const std::vector<std::uint16_t>& pixels_to_transform(int bit_depth);
  Timing transform(int bit_depth);
  void write(const FrameTicket& ticket, int bit_depth);
  FrameReport describe(const std::string& name, int bit_depth, const Timing& timing) const;

  const TransformRequest& request_;
  const Library& library_;
  Bytes bytes_;
  RawFrame frame_;
  /** The frame without its dark level. */
  std::vector<std::uint16_t> calibrated_;
  /** Of the frame, or of the wanted region of it. */
  Origin origin_;
  FrameOutputs outputs_;
};

}  // namespace nerova_zel
