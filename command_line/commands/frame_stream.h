#pragma once

#include <atomic>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <string>

#include "frames/raw_frame.h"
#include "frames/recording.h"

namespace nerova_zel {

/** Frames as they come, of which the last ones are kept that fit into a bound, and always the last one. Thread-safe. */
class FrameStream {
 public:
  /** `name` is what failures call it. */
  FrameStream(std::string name, std::size_t most_bytes) : name_(std::move(name)), most_bytes_(most_bytes) {}

  /** Frames come with numbers that follow each other. */
  void add(std::uint64_t number, RawFrame frame);
  /** No more will come; `error` says why, or is empty. */
  void end(const std::string& error);

  struct State {
    std::uint64_t first = 0;
    std::uint64_t frames = 0;
    bool is_live = true;
    std::string error;
    /** How often any of it has changed. */
    std::uint64_t revision = 0;
  };
  State state() const;

  /** Throws Failure for a frame that is not kept. */
  RawFrame read(std::uint64_t number) const;

 private:
  const std::string name_;
  const std::size_t most_bytes_;
  mutable std::mutex mutex_;
  State state_;
  std::deque<std::shared_ptr<const RawFrame>> frames_;
  std::size_t bytes_ = 0;
};

/** What fills a stream. */
class FrameFeed {
 public:
  FrameFeed() = default;
  virtual ~FrameFeed() = default;
  FrameFeed(const FrameFeed&) = delete;
  FrameFeed& operator=(const FrameFeed&) = delete;

  /** Adds frames until there are no more or `stop` is set. Throws any exception where that fails. */
  virtual void run(FrameStream& stream, const std::atomic<bool>& stop) = 0;
};

/** A camera. */
class CameraFeed : public FrameFeed {
 public:
  /** Of its frames, without layout. */
  virtual const Recording& description() const = 0;
};

/** Opens a camera as Camera does. Throws Failure. */
std::unique_ptr<CameraFeed> open_camera_feed(const std::string& name);

}  // namespace nerova_zel
