#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "frames/recording.h"

namespace nerova_zel {

/** A camera that answers. */
struct CameraDescription {
  std::string id;  ///< to open it by
  std::string vendor;
  std::string model;
  std::string serial_number;
  std::string address;
};

/** The cameras on the network and on USB. Takes about a second. Throws Failure without Aravis. */
std::vector<CameraDescription> list_cameras();

/** What is asked of a camera before it starts; all else stays as it is. */
struct CameraChoices {
  std::optional<std::string> pixel_format;
  std::optional<double> exposure_us;
  std::optional<double> gain;
  std::optional<double> frame_rate;
};

/** One frame in the camera's pixel format. */
struct CameraFrame {
  const unsigned char* bytes;  ///< byte_count of them; valid until the next receive
  std::uint64_t number;        ///< as the camera counts
  std::uint64_t timestamp_ns;  ///< of the camera's clock
};

/** A camera with GenICam's interface (GigE Vision, USB3 Vision). For one thread. */
class Camera {
 public:
  /**
   * Opens the camera of that id, serial number or address; an empty name stands for the only one that there is. Throws
   * Failure: no such camera, one that refuses what is asked, a pixel format that is unknown.
   */
  Camera(const std::string& name, const CameraChoices& choices);
  ~Camera();
  Camera(const Camera&) = delete;
  Camera& operator=(const Camera&) = delete;

  /** Format, size, origin, exposure, gain and name; the layout, which no camera tells, and the frames are missing. */
  const Recording& description() const { return description_; }

  /** Starts to send frames, into so many buffers. Throws Failure. */
  void start(int buffers);
  void stop() noexcept;

  /**
   * The next frame; nothing if none came in that time. Incomplete ones are counted and passed over. Throws Failure
   * where the camera is lost, or sends frames of another size or format.
   */
  std::optional<CameraFrame> receive(std::chrono::milliseconds wait);

  std::uint64_t incomplete_frames() const { return incomplete_; }
  /** Frames that never came, by the gaps in the camera's numbers. */
  std::uint64_t dropped_frames() const { return dropped_; }
  /** Frames that came and were not received yet. */
  int waiting_frames() const;

 private:
  struct Device;

  std::optional<CameraFrame> check_frame();
  void count_gap(std::uint64_t number);

  std::unique_ptr<Device> device_;
  std::string name_;
  Recording description_;
  std::size_t frame_bytes_ = 0;
  std::optional<std::uint64_t> last_number_;
  std::uint64_t incomplete_ = 0;
  std::uint64_t dropped_ = 0;
};

}  // namespace nerova_zel
