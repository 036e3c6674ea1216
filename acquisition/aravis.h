#pragma once

#include <arv.h>

namespace nerova_zel {

/**
 * The functions of libaravis 0.8 that acquisition uses. The library is loaded when a camera is first asked for, so that
 * programs start, and are installed, without it.
 */
struct Aravis {
  decltype(&arv_update_device_list) update_device_list;
  decltype(&arv_get_n_devices) get_n_devices;
  decltype(&arv_get_device_id) get_device_id;
  decltype(&arv_get_device_vendor) get_device_vendor;
  decltype(&arv_get_device_model) get_device_model;
  decltype(&arv_get_device_serial_nbr) get_device_serial_nbr;
  decltype(&arv_get_device_address) get_device_address;
  decltype(&arv_camera_new) camera_new;
  decltype(&arv_camera_get_device) camera_get_device;
  decltype(&arv_camera_get_device_id) camera_get_device_id;
  decltype(&arv_camera_get_region) camera_get_region;
  decltype(&arv_camera_get_pixel_format) camera_get_pixel_format;
  decltype(&arv_camera_get_pixel_format_as_string) camera_get_pixel_format_as_string;
  decltype(&arv_camera_set_pixel_format_from_string) camera_set_pixel_format_from_string;
  decltype(&arv_camera_is_exposure_time_available) camera_is_exposure_time_available;
  decltype(&arv_camera_get_exposure_time) camera_get_exposure_time;
  decltype(&arv_camera_set_exposure_time) camera_set_exposure_time;
  decltype(&arv_camera_is_gain_available) camera_is_gain_available;
  decltype(&arv_camera_get_gain) camera_get_gain;
  decltype(&arv_camera_set_gain) camera_set_gain;
  decltype(&arv_camera_set_frame_rate) camera_set_frame_rate;
  decltype(&arv_camera_set_acquisition_mode) camera_set_acquisition_mode;
  decltype(&arv_camera_get_payload) camera_get_payload;
  decltype(&arv_camera_create_stream) camera_create_stream;
  decltype(&arv_camera_start_acquisition) camera_start_acquisition;
  decltype(&arv_camera_stop_acquisition) camera_stop_acquisition;
  decltype(&arv_stream_push_buffer) stream_push_buffer;
  decltype(&arv_stream_timeout_pop_buffer) stream_timeout_pop_buffer;
  decltype(&arv_stream_get_n_buffers) stream_get_n_buffers;
  decltype(&arv_buffer_new_allocate) buffer_new_allocate;
  decltype(&arv_buffer_get_status) buffer_get_status;
  decltype(&arv_buffer_get_image_data) buffer_get_image_data;
  decltype(&arv_buffer_get_image_region) buffer_get_image_region;
  decltype(&arv_buffer_get_image_padding) buffer_get_image_padding;
  decltype(&arv_buffer_get_image_pixel_format) buffer_get_image_pixel_format;
  decltype(&arv_buffer_get_frame_id) buffer_get_frame_id;
  decltype(&arv_buffer_get_timestamp) buffer_get_timestamp;
  // Of GLib, on which it stands.
  decltype(&g_object_unref) object_unref;
  decltype(&g_error_free) error_free;
  decltype(&g_signal_connect_data) signal_connect_data;
  decltype(&g_signal_handlers_disconnect_matched) signal_handlers_disconnect_matched;
};

/** Loads them at the first call. Throws Failure where the library is missing or another. Thread-safe. */
const Aravis& aravis();

}  // namespace nerova_zel
