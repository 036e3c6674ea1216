// Frames of a camera, to look at while they come.
#include <chrono>

#include "camera.h"
#include "commands/frame_stream.h"
#include "frames/headerless_frame.h"

namespace nerova_zel {

namespace {

/** Few, so that what is shown is new. */
constexpr int buffers = 4;
constexpr std::chrono::milliseconds longest_wait{100};

class AravisFeed : public CameraFeed {
 public:
  explicit AravisFeed(const std::string& name) : camera_(name, {}) {}

  const Recording& description() const override { return camera_.description(); }

  void run(FrameStream& stream, const std::atomic<bool>& stop) override {
    const HeaderlessLayout layout{description().size, description().format};
    const std::size_t length = frame_bytes(layout);
    camera_.start(buffers);
    for (std::uint64_t number = 0; !stop;) {
      if (const std::optional<CameraFrame> frame = camera_.receive(longest_wait)) {
        RawFrame raw;
        unpack_frame("a frame of the camera", {frame->bytes, frame->bytes + length}, layout, raw);
        stream.add(number++, std::move(raw));
      }
    }
    camera_.stop();
  }

 private:
  Camera camera_;
};

}  // namespace

std::unique_ptr<CameraFeed> open_camera_feed(const std::string& name) { return std::make_unique<AravisFeed>(name); }

}  // namespace nerova_zel
