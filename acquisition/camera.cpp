#include "camera.h"

#include <atomic>
#include <utility>

#include "aravis.h"
#include "camera_formats.h"
#include "failure.h"

namespace nerova_zel {

namespace {

/** Frees GLib's objects by the functions that were loaded. */
struct Unref {
  template <class Object>
  void operator()(Object* object) const {
    aravis().object_unref(object);
  }
};
template <class Object>
using Owner = std::unique_ptr<Object, Unref>;

/** Calls a function whose last argument takes an error. Throws what it says. */
template <class Function, class... Arguments>
auto checked(const std::string& camera, Function function, Arguments... arguments) {
  GError* error = nullptr;
  const auto fail = [&] {
    if (error != nullptr) {
      const std::string reason = error->message;
      aravis().error_free(error);
      throw Failure("the camera " + camera + " fails: " + reason + ".");
    }
  };
  if constexpr (std::is_void_v<decltype(function(arguments..., &error))>) {
    function(arguments..., &error);
    fail();
  } else {
    const auto result = function(arguments..., &error);
    fail();
    return result;
  }
}

std::string text_or_nothing(const char* text) { return text != nullptr ? text : ""; }

/** A value that a camera need not have. */
template <class Available, class Get>
std::optional<double> value_if_available(const std::string& camera, ArvCamera* handle, Available available, Get get) {
  if (checked(camera, available, handle) == FALSE) {
    return std::nullopt;
  }
  return checked(camera, get, handle);
}

std::string only_camera() {
  const std::vector<CameraDescription> cameras = list_cameras();
  if (cameras.empty()) {
    throw Failure("no camera answers.");
  }
  if (cameras.size() > 1) {
    std::string names;
    for (const CameraDescription& camera : cameras) {
      names += (names.empty() ? "" : ", ") + camera.id;
    }
    throw Failure("there are several cameras: " + names + ". Name one of them.");
  }
  return cameras.front().id;
}

}  // namespace

std::vector<CameraDescription> list_cameras() {
  const Aravis& functions = aravis();
  functions.update_device_list();
  std::vector<CameraDescription> cameras;
  for (unsigned i = 0; i < functions.get_n_devices(); ++i) {
    cameras.push_back({text_or_nothing(functions.get_device_id(i)), text_or_nothing(functions.get_device_vendor(i)),
                       text_or_nothing(functions.get_device_model(i)),
                       text_or_nothing(functions.get_device_serial_nbr(i)),
                       text_or_nothing(functions.get_device_address(i))});
  }
  return cameras;
}

struct Camera::Device {
  Owner<ArvCamera> camera;
  Owner<ArvStream> stream;
  /** The buffer of the frame that was received last; it goes back before the next. */
  Owner<ArvBuffer> buffer;
  ArvPixelFormat pixel_format = 0;
  std::atomic<bool> lost{false};
  bool started = false;

  static void note_loss(ArvDevice*, void* device) { static_cast<Device*>(device)->lost = true; }

  ~Device() {
    buffer.reset();
    stream.reset();
    if (camera) {
      aravis().signal_handlers_disconnect_matched(aravis().camera_get_device(camera.get()), G_SIGNAL_MATCH_DATA, 0, 0,
                                                  nullptr, nullptr, this);
    }
  }
};

Camera::Camera(const std::string& name, const CameraChoices& choices)
    : device_(std::make_unique<Device>()), name_(name.empty() ? only_camera() : name) {
  const Aravis& functions = aravis();
  device_->camera.reset(checked(name_, functions.camera_new, name_.c_str()));
  ArvCamera* const camera = device_->camera.get();
  if (camera == nullptr) {
    throw Failure("there is no camera " + name_ + ".");
  }
  functions.signal_connect_data(functions.camera_get_device(camera), "control-lost",
                                reinterpret_cast<GCallback>(&Device::note_loss), device_.get(), nullptr,
                                static_cast<GConnectFlags>(0));
  if (choices.pixel_format) {
    checked(name_, functions.camera_set_pixel_format_from_string, camera, choices.pixel_format->c_str());
  }
  if (choices.exposure_us) {
    checked(name_, functions.camera_set_exposure_time, camera, *choices.exposure_us);
  }
  if (choices.gain) {
    checked(name_, functions.camera_set_gain, camera, *choices.gain);
  }
  if (choices.frame_rate) {
    checked(name_, functions.camera_set_frame_rate, camera, *choices.frame_rate);
  }
  const std::string format_name = text_or_nothing(checked(name_, functions.camera_get_pixel_format_as_string, camera));
  device_->pixel_format = checked(name_, functions.camera_get_pixel_format, camera);
  const std::optional<CameraFormat> format = find_camera_format(format_name, device_->pixel_format);
  if (!format) {
    throw Failure("the camera " + name_ + " sends the pixel format " + format_name +
                  ", which is none of those that can be read. Choose another.");
  }
  description_.format = format->format;
  description_.colour = format->colour;
  checked(name_, functions.camera_get_region, camera, &description_.origin.x, &description_.origin.y,
          &description_.size.width, &description_.size.height);
  frame_bytes_ = byte_count(description_.format, static_cast<std::size_t>(description_.size.width) *
                                                     static_cast<std::size_t>(description_.size.height));
  description_.exposure_us = value_if_available(name_, camera, functions.camera_is_exposure_time_available,
                                                functions.camera_get_exposure_time);
  description_.gain = value_if_available(name_, camera, functions.camera_is_gain_available, functions.camera_get_gain);
  description_.camera = text_or_nothing(checked(name_, functions.camera_get_device_id, camera));
}

Camera::~Camera() { stop(); }

void Camera::start(int buffers) {
  const Aravis& functions = aravis();
  ArvCamera* const camera = device_->camera.get();
  const unsigned payload = checked(name_, functions.camera_get_payload, camera);
  device_->stream.reset(checked(name_, functions.camera_create_stream, camera, nullptr, nullptr));
  if (!device_->stream) {
    throw Failure("the camera " + name_ + " opens no stream.");
  }
  for (int i = 0; i < buffers; ++i) {
    functions.stream_push_buffer(device_->stream.get(), functions.buffer_new_allocate(payload));
  }
  checked(name_, functions.camera_set_acquisition_mode, camera, ARV_ACQUISITION_MODE_CONTINUOUS);
  checked(name_, functions.camera_start_acquisition, camera);
  device_->started = true;
}

void Camera::stop() noexcept {
  if (std::exchange(device_->started, false) && !device_->lost) {
    GError* error = nullptr;
    aravis().camera_stop_acquisition(device_->camera.get(), &error);
    if (error != nullptr) {
      aravis().error_free(error);  // a camera that is gone has stopped
    }
  }
}

std::optional<CameraFrame> Camera::receive(std::chrono::milliseconds wait) {
  const auto end = std::chrono::steady_clock::now() + wait;
  for (;;) {
    if (device_->buffer) {
      aravis().stream_push_buffer(device_->stream.get(), device_->buffer.release());
    }
    const auto left = std::chrono::duration_cast<std::chrono::microseconds>(end - std::chrono::steady_clock::now());
    device_->buffer.reset(aravis().stream_timeout_pop_buffer(
        device_->stream.get(), static_cast<guint64>(left.count() > 0 ? left.count() : 0)));
    if (!device_->buffer) {
      if (device_->lost) {
        throw Failure("the camera " + name_ + " is gone.");
      }
      return std::nullopt;
    }
    if (const std::optional<CameraFrame> frame = check_frame()) {
      return frame;
    }
  }
}

std::optional<CameraFrame> Camera::check_frame() {
  const Aravis& functions = aravis();
  ArvBuffer* const buffer = device_->buffer.get();
  const ArvBufferStatus status = functions.buffer_get_status(buffer);
  if (status == ARV_BUFFER_STATUS_CLEARED || status == ARV_BUFFER_STATUS_ABORTED) {
    return std::nullopt;  // nothing was sent into it
  }
  const std::uint64_t number = functions.buffer_get_frame_id(buffer);
  count_gap(number);
  std::size_t size = 0;
  const void* const bytes = functions.buffer_get_image_data(buffer, &size);
  if (status != ARV_BUFFER_STATUS_SUCCESS || bytes == nullptr || size < frame_bytes_) {
    ++incomplete_;
    return std::nullopt;
  }
  if (functions.buffer_get_image_pixel_format(buffer) != device_->pixel_format) {
    throw Failure("the camera " + name_ + " changes the pixel format of its frames.");
  }
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
  functions.buffer_get_image_region(buffer, &x, &y, &width, &height);
  if (width != description_.size.width || height != description_.size.height) {
    throw Failure("the camera " + name_ + " changes the size of its frames to " + std::to_string(width) + " x " +
                  std::to_string(height) + ".");
  }
  int x_padding = 0;
  int y_padding = 0;
  functions.buffer_get_image_padding(buffer, &x_padding, &y_padding);
  if (x_padding != 0) {
    throw Failure("the camera " + name_ + " pads the rows of its frames, which is not read. Choose another width.");
  }
  return CameraFrame{static_cast<const unsigned char*>(bytes), number, functions.buffer_get_timestamp(buffer)};
}

void Camera::count_gap(std::uint64_t number) {
  constexpr std::uint64_t greatest_short_number = 65535;  // of GigE Vision 1, after which comes 1
  if (last_number_ && number <= *last_number_) {
    const std::uint64_t back = *last_number_ - number;
    if (back < greatest_short_number / 2) {
      dropped_ -= dropped_ > 0 ? 1 : 0;  // it came after a later one, and was taken for lost
      return;
    }
    dropped_ += greatest_short_number - back - 1;
  } else if (last_number_) {
    dropped_ += number - *last_number_ - 1;
  }
  last_number_ = number;
}

int Camera::waiting_frames() const {
  int empty = 0;
  int full = 0;
  aravis().stream_get_n_buffers(device_->stream.get(), &empty, &full);
  return full;
}

}  // namespace nerova_zel
