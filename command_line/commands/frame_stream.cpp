#include "commands/frame_stream.h"

#include <utility>

#include "failure.h"

namespace nerova_zel {

namespace {

std::size_t bytes_of(const RawFrame& frame) { return frame.pixels.size() * sizeof(std::uint16_t); }

}  // namespace

void FrameStream::add(std::uint64_t number, RawFrame frame) {
  auto kept = std::make_shared<const RawFrame>(std::move(frame));
  const std::lock_guard<std::mutex> lock(mutex_);
  bytes_ += bytes_of(*kept);
  frames_.push_back(std::move(kept));
  while (frames_.size() > 1 && bytes_ > most_bytes_) {
    bytes_ -= bytes_of(*frames_.front());
    frames_.pop_front();
  }
  state_.frames = frames_.size();
  state_.first = number + 1 - state_.frames;
  ++state_.revision;
}

void FrameStream::end(const std::string& error) {
  const std::lock_guard<std::mutex> lock(mutex_);
  state_.is_live = false;
  state_.error = error;
  ++state_.revision;
}

FrameStream::State FrameStream::state() const {
  const std::lock_guard<std::mutex> lock(mutex_);
  return state_;
}

RawFrame FrameStream::read(std::uint64_t number) const {
  std::shared_ptr<const RawFrame> frame;
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (number < state_.first || number >= state_.first + state_.frames) {
      throw Failure(name_ + " frame " + std::to_string(number) + " is not kept any more; --memory keeps more of them.");
    }
    frame = frames_[static_cast<std::size_t>(number - state_.first)];
  }
  return *frame;
}

}  // namespace nerova_zel
