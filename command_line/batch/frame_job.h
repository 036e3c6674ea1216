#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "batch/frame_sequence.h"

namespace nerova_zel {

/** What became of a frame. */
struct FrameReport {
  enum class Result { done, skipped, failed };
  Result result = Result::failed;
  /** What to tell the user; of a failure, its sentence. */
  std::string line;
  /** Sentences about a frame that is done. */
  std::vector<std::string> notes;
  /** Pixels transformed. */
  std::uint64_t pixels = 0;
};

/** What is done with each frame of a batch, one frame at a time: one job for each thread. */
class FrameJob {
 public:
  FrameJob() = default;
  virtual ~FrameJob() = default;
  FrameJob(const FrameJob&) = delete;
  FrameJob& operator=(const FrameJob&) = delete;

  /** Where the bytes of the next frame of standard input go. */
  Bytes& bytes() { return bytes_; }

  /** Never throws: what goes wrong is reported. */
  FrameReport run(const FrameTicket& ticket);

 private:
  virtual FrameReport work(const FrameTicket& ticket) = 0;

  Bytes bytes_;
};

}  // namespace nerova_zel
