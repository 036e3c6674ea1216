#include "batch/frame_sequence.h"

#include <algorithm>
#include <utility>

#include "input_bytes.h"

namespace nerova_zel {

FrameSequence::FrameSequence(std::vector<FrameInput> inputs, std::optional<HeaderlessLayout> headerless)
    : inputs_(std::move(inputs)), headerless_(headerless) {}

std::optional<std::uint64_t> FrameSequence::total() const {
  std::uint64_t sum = 0;
  for (const FrameInput& input : inputs_) {
    const std::optional<std::uint64_t> wanted = input.wanted_frames();
    if (!wanted) {
      return std::nullopt;
    }
    sum += *wanted;
  }
  return sum;
}

bool FrameSequence::read_stream(Bytes& bytes) {
  const std::size_t length = frame_bytes(*headerless_);
  if (number_ == 0) {
    std::uint64_t skipped = frame_offset(*headerless_, inputs_[input_].range.first);
    while (skipped > 0) {
      const std::uint64_t part = std::min<std::uint64_t>(skipped, std::uint64_t{1} << 20U);
      read_standard_input(static_cast<std::size_t>(part), bytes);
      if (bytes.empty()) {
        return false;
      }
      skipped -= bytes.size();
    }
  }
  read_standard_input(length, bytes);
  return !bytes.empty();
}

bool FrameSequence::next(FrameTicket& ticket, Bytes& bytes) {
  const std::lock_guard<std::mutex> lock(mutex_);
  while (input_ < inputs_.size()) {
    const FrameInput& input = inputs_[input_];
    const std::optional<std::uint64_t> wanted = input.wanted_frames();
    const bool ended = number_ == wanted || (input.is_standard_input() && !read_stream(bytes));
    if (!ended) {
      ticket = {index_++, &input, input.range.first + number_++};
      return true;
    }
    ++input_;
    number_ = 0;
  }
  return false;
}

}  // namespace nerova_zel
