#pragma once

#include <mutex>
#include <vector>

#include "batch/frame_inputs.h"
#include "image.h"

namespace nerova_zel {

/** One frame of a batch. */
struct FrameTicket {
  /** Place among all frames. */
  std::uint64_t index = 0;
  const FrameInput* input = nullptr;
  /** Place among the frames of its input. */
  std::uint64_t number = 0;

  std::string name() const { return input->frame_name(number); }
};

/**
 * Hands out the frames of a batch one by one, in order, to any number of threads. Frames of standard input are read
 * while they are handed out, so no more of them are in memory than are being worked on.
 */
class FrameSequence {
 public:
  FrameSequence(std::vector<FrameInput> inputs, std::optional<HeaderlessLayout> headerless);

  const std::vector<FrameInput>& inputs() const { return inputs_; }
  const std::optional<HeaderlessLayout>& headerless() const { return headerless_; }

  /** Whether all there is to do is a single frame, not one of a stream. */
  bool is_lone_frame() const { return inputs_.size() == 1 && !inputs_.front().is_numbered(); }

  /** The number of frames; unknown when standard input without an end is among them. */
  std::optional<std::uint64_t> total() const;

  /**
   * The next frame, and if it comes from standard input its bytes, as many as there are. False when there is none.
   * Throws Failure when standard input cannot be read, which ends it.
   */
  bool next(FrameTicket& ticket, Bytes& bytes);

 private:
  const std::vector<FrameInput> inputs_;
  const std::optional<HeaderlessLayout> headerless_;
  std::mutex mutex_;
  /** Reads the next frame of standard input, and first what comes before; false where it ends. */
  bool read_stream(Bytes& bytes);

  std::size_t input_ = 0;
  /** Of the next frame among the wanted ones of its input. */
  std::uint64_t number_ = 0;
  std::uint64_t index_ = 0;
};

}  // namespace nerova_zel
