#include "batch/frame_sequence.h"

#include <utility>

#include "input_bytes.h"

namespace nerova_zel {

FrameSequence::FrameSequence(std::vector<FrameInput> inputs, std::optional<HeaderlessLayout> headerless)
    : inputs_(std::move(inputs)), headerless_(headerless) {}

std::optional<std::uint64_t> FrameSequence::total() const {
  std::uint64_t sum = 0;
  for (const FrameInput& input : inputs_) {
    if (!input.frames) {
      return std::nullopt;
    }
    sum += *input.frames;
  }
  return sum;
}

bool FrameSequence::next(FrameTicket& ticket, Bytes& bytes) {
  const std::lock_guard<std::mutex> lock(mutex_);
  while (input_ < inputs_.size()) {
    const FrameInput& input = inputs_[input_];
    bool ended = false;
    if (input.is_standard_input()) {
      const std::size_t needed = frame_bytes(*headerless_);
      read_standard_input(needed, bytes);
      ended = bytes.empty();
    } else {
      ended = number_ == *input.frames;
    }
    if (!ended) {
      ticket = {index_++, &input, number_++};
      return true;
    }
    ++input_;
    number_ = 0;
  }
  return false;
}

}  // namespace nerova_zel
