#include "recorder.h"

#include <exception>

#include "failure.h"
#include "file_set.h"
#include "raw_file.h"

namespace nerova_zel {

namespace {

constexpr int buffers = 32;
constexpr std::chrono::milliseconds look_again{100};

class Recorder {
 public:
  Recorder(Camera& camera, const RecordingRequest& request, const RecordingObserver& observer)
      : camera_(camera), request_(request), observer_(observer), recording_(camera.description()) {
    recording_.layout = request.layout;
    recording_.colour = request.colour ? request.colour : recording_.colour;
  }

  Recording run() {
    const auto pixels =
        static_cast<std::size_t>(recording_.size.width) * static_cast<std::size_t>(recording_.size.height);
    RawFile file(request_.file, byte_count(recording_.format, pixels), request_.replace);
    std::exception_ptr failure;
    try {
      camera_.start(buffers);
      receive_into(file);
      camera_.stop();
    } catch (const Failure&) {
      failure = std::current_exception();
      camera_.stop();
    }
    recording_.incomplete_frames = camera_.incomplete_frames();
    recording_.dropped_frames = camera_.dropped_frames();
    if (recording_.frames > 0) {
      file.publish();
      describe();
    }
    if (failure) {
      std::rethrow_exception(failure);
    }
    return recording_;
  }

 private:
  bool is_ended() const {
    return (request_.frames && recording_.frames >= *request_.frames) || (observer_.stop && observer_.stop());
  }

  void receive_into(RawFile& file) {
    auto last_frame = std::chrono::steady_clock::now();
    while (!is_ended()) {
      const std::optional<CameraFrame> frame = camera_.receive(look_again);
      if (!frame) {
        if (std::chrono::steady_clock::now() - last_frame > request_.patience) {
          throw Failure("the camera sent no complete frame for " +
                        std::to_string(std::chrono::duration_cast<std::chrono::seconds>(request_.patience).count()) +
                        " s.");
        }
        continue;
      }
      last_frame = std::chrono::steady_clock::now();
      file.append(frame->bytes);
      recording_.frames = file.frames();
      recording_.timestamps_ns.push_back(frame->timestamp_ns);
      watch_disk();
      if (observer_.frame) {
        observer_.frame(recording_);
      }
    }
  }

  /** Frames that wait for the disk are the first sign that some will be lost. */
  void watch_disk() {
    if (!warned_ && observer_.warn && camera_.waiting_frames() > buffers / 2) {
      warned_ = true;
      observer_.warn("frames come faster than they are written; some will be lost.");
    }
  }

  void describe() const {
    const std::string text = encode_recording(recording_);
    FileSet files;
    files.write(request_.file + recording_ending, Bytes(text.begin(), text.end()));
    files.commit();
  }

  Camera& camera_;
  const RecordingRequest& request_;
  const RecordingObserver& observer_;
  Recording recording_;
  bool warned_ = false;
};

}  // namespace

Recording record(Camera& camera, const RecordingRequest& request, const RecordingObserver& observer) {
  return Recorder(camera, request, observer).run();
}

}  // namespace nerova_zel
