#include "aravis.h"

#include <dlfcn.h>

#include <string>

#include "failure.h"

namespace nerova_zel {

namespace {

constexpr const char* library_name = "libaravis-0.8.so.0";

class Functions {
 public:
  Functions() : library_(dlopen(library_name, RTLD_NOW | RTLD_LOCAL)) {
    if (library_ == nullptr) {
      throw Failure(std::string("cameras need Aravis, and ") + library_name +
                    " cannot be loaded; Debian's package is libaravis-0.8-0.");
    }
  }

  /** Found in the library or in those that it is linked with. */
  template <class Function>
  void find(Function& function, const char* name) const {
    function = reinterpret_cast<Function>(dlsym(library_, name));
    if (function == nullptr) {
      throw Failure(std::string(library_name) + " has no function " + name + ".");
    }
  }

 private:
  void* library_;  // never unloaded: GLib keeps types and threads
};

Aravis load() {
  const Functions library;
  Aravis found{};
#define NEROVA_FIND(name) library.find(found.name, "arv_" #name)
  NEROVA_FIND(update_device_list);
  NEROVA_FIND(get_n_devices);
  NEROVA_FIND(get_device_id);
  NEROVA_FIND(get_device_vendor);
  NEROVA_FIND(get_device_model);
  NEROVA_FIND(get_device_serial_nbr);
  NEROVA_FIND(get_device_address);
  NEROVA_FIND(camera_new);
  NEROVA_FIND(camera_get_device);
  NEROVA_FIND(camera_get_device_id);
  NEROVA_FIND(camera_get_region);
  NEROVA_FIND(camera_get_pixel_format);
  NEROVA_FIND(camera_get_pixel_format_as_string);
  NEROVA_FIND(camera_set_pixel_format_from_string);
  NEROVA_FIND(camera_is_exposure_time_available);
  NEROVA_FIND(camera_get_exposure_time);
  NEROVA_FIND(camera_set_exposure_time);
  NEROVA_FIND(camera_is_gain_available);
  NEROVA_FIND(camera_get_gain);
  NEROVA_FIND(camera_set_gain);
  NEROVA_FIND(camera_set_frame_rate);
  NEROVA_FIND(camera_set_acquisition_mode);
  NEROVA_FIND(camera_get_payload);
  NEROVA_FIND(camera_create_stream);
  NEROVA_FIND(camera_start_acquisition);
  NEROVA_FIND(camera_stop_acquisition);
  NEROVA_FIND(stream_push_buffer);
  NEROVA_FIND(stream_timeout_pop_buffer);
  NEROVA_FIND(stream_get_n_buffers);
  NEROVA_FIND(buffer_new_allocate);
  NEROVA_FIND(buffer_get_status);
  NEROVA_FIND(buffer_get_image_data);
  NEROVA_FIND(buffer_get_image_region);
  NEROVA_FIND(buffer_get_image_padding);
  NEROVA_FIND(buffer_get_image_pixel_format);
  NEROVA_FIND(buffer_get_frame_id);
  NEROVA_FIND(buffer_get_timestamp);
#undef NEROVA_FIND
  library.find(found.object_unref, "g_object_unref");
  library.find(found.error_free, "g_error_free");
  library.find(found.signal_connect_data, "g_signal_connect_data");
  library.find(found.signal_handlers_disconnect_matched, "g_signal_handlers_disconnect_matched");
  return found;
}

}  // namespace

const Aravis& aravis() {
  static const Aravis functions = load();
  return functions;
}

}  // namespace nerova_zel
