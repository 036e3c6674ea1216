#pragma once

#include <chrono>
#include <mutex>
#include <thread>
#include <vector>

#include "batch/frame_inputs.h"
#include "commands/frame_options.h"
#include "commands/frame_stream.h"
#include "viewer.h"

namespace nerova_zel {

/**
 * The files, the standard input and the camera of a command line, to look at. Nothing of files is read before it is
 * asked for; streams are read by threads of their own. An Interruption must live as long.
 */
class ViewedInputs : public ViewedFrames {
 public:
  /** The request must outlive it. Without a camera that is NULL. Of streams frames of so many bytes are kept, each.
   * Throws as find_inputs does. */
  ViewedInputs(const FrameRequest& request, std::unique_ptr<CameraFeed> camera, std::size_t most_bytes);
  ~ViewedInputs() override;

  bool has_streams() const;

  std::vector<ViewedSource> sources() override;
  std::uint64_t revision() override;
  RawFrame read(std::size_t source, std::uint64_t frame) override;
  std::optional<RawFrame> read_rows(std::size_t source, std::uint64_t frame, int first_row, int end_row) override;
  std::uint64_t version(std::size_t source, std::uint64_t frame) override;
  std::string name(std::size_t source, std::uint64_t frame) const override;
  std::vector<std::string> notes(const std::string& name, const SensorTransformer& transformer) const override;
  std::string describe_failure() const override;

 private:
  using Clock = std::chrono::steady_clock;

  struct Source {
    FrameInput input;
    ViewedSource::Kind kind = ViewedSource::Kind::file;
    /** Of a stream and a camera. */
    std::shared_ptr<FrameStream> stream;
    /** Of a file of headerless frames, which may grow: its length when it was looked at last. */
    std::uint64_t bytes = 0;
    bool was_looked_at = false;
    bool is_growing = false;
    Clock::time_point grown{};
    std::uint64_t version = 0;
  };

  void add_stream(FrameInput input, ViewedSource::Kind kind, std::unique_ptr<FrameFeed> feed, std::size_t most_bytes);
  bool look_for_growth(Source& source);
  Source source_of(std::size_t source) const;

  const FrameRequest& request_;
  mutable std::mutex mutex_;
  std::vector<Source> sources_;
  std::uint64_t changes_ = 0;
  Clock::time_point looked_{};
  std::atomic<bool> stop_{false};
  std::vector<std::thread> readers_;
};

}  // namespace nerova_zel
