#include "live_processor.h"

#include <utility>

#include "failure.h"
#include "formatted.h"
#include "frames/bit_depth.h"
#include "library_beside_plugin.h"

namespace nerova_zel {

namespace {

/** A copy without the rows' padding, whose bit depth nothing states. */
RawFrame raw_frame(const VideoFrame& frame) {
  RawFrame raw;
  raw.width = frame.size.width;
  raw.height = frame.size.height;
  raw.storage_bits = 8 * frame.bytes_per_sample;
  raw.depth_is_stated = false;
  const auto width = static_cast<std::size_t>(raw.width);
  raw.pixels.reserve(width * static_cast<std::size_t>(raw.height));
  for (int y = 0; y < frame.size.height; ++y) {
    const std::uint8_t* const row = frame.rows + frame.stride * static_cast<std::size_t>(y);
    for (std::size_t x = 0; x < width; ++x) {
      const int sample = frame.bytes_per_sample == 1 ? row[x] : row[2 * x] | row[2 * x + 1] << 8;
      raw.pixels.push_back(static_cast<std::uint16_t>(sample));
    }
  }
  return raw;
}

void warn(GstElement* element, const std::string& text) {
  GST_ELEMENT_WARNING(element, STREAM, FORMAT, ("%s", text.c_str()), (nullptr));
}

VideoFrame video_frame(const GstVideoFrame& frame) {
  VideoFrame rows;
  rows.size = {GST_VIDEO_FRAME_WIDTH(&frame), GST_VIDEO_FRAME_HEIGHT(&frame)};
  rows.rows = static_cast<const std::uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&frame, 0));
  rows.stride = static_cast<std::size_t>(GST_VIDEO_FRAME_PLANE_STRIDE(&frame, 0));
  rows.bytes_per_sample = GST_VIDEO_FRAME_FORMAT(&frame) == GST_VIDEO_FORMAT_GRAY8 ? 1 : 2;
  return rows;
}

void post_error(GstElement* element, const std::exception& error) {
  GST_ELEMENT_ERROR(element, STREAM, FAILED, ("Frames cannot be transformed: %s", error.what()), (nullptr));
}

}  // namespace

bool LiveProcessor::set(guint number, const GValue* value) {
  const std::lock_guard<std::mutex> lock(mutex_);
  const bool known = set_polarize_property(properties_, number, value);
  changed_ = changed_ || known;
  return known;
}

bool LiveProcessor::get(guint number, GValue* value) const {
  const std::lock_guard<std::mutex> lock(mutex_);
  return get_polarize_property(properties_, number, value);
}

bool LiveProcessor::start(GstElement* element) {
  try {
    layout_warned_ = false;
    prepare(element);
    return true;
  } catch (const std::exception& error) {
    post_error(element, error);
    return false;
  }
}

void LiveProcessor::stop() { transformer_.reset(); }

void LiveProcessor::prepare(GstElement* element) {
  PolarizeProperties properties;
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (transformer_ && !changed_) {
      return;
    }
    properties = properties_;
    changed_ = false;
  }
  transformer_.reset();
  transformer_ = std::make_unique<VideoTransformer>(video_settings(properties), library_beside_plugin());
  samples_checked_ = {};
  if (properties.layout == PolarizeProperties::layout_not_set && !std::exchange(layout_warned_, true)) {
    GST_ELEMENT_WARNING(element, RESOURCE, SETTINGS,
                        ("Layout %d is assumed. Set the property layout: a wrong one gives wrong angles.",
                         PolarizeProperties::assumed_layout),
                        (nullptr));
  }
  const std::lock_guard<std::mutex> lock(mutex_);
  route_ = transformer_->route();
}

void LiveProcessor::note_doubtful_depth(GstElement* element, const VideoFrame& frame) {
  if (std::exchange(samples_checked_[frame.bytes_per_sample == 2 ? 1 : 0], true)) {
    return;
  }
  const VideoSettings& settings = transformer_->settings();
  const RawFrame first = raw_frame(frame);
  const int bits = settings.bit_depth > 0 ? settings.bit_depth : first.storage_bits;
  if (bits > first.storage_bits) {
    return;  // to be refused
  }
  const int full_scale = ((1 << bits) - 1) << (settings.left_aligned ? first.storage_bits - bits : 0);
  const PixelCounts counts = counts_of(first, full_scale);
  if (counts.above > 0) {
    warn(element,
         formatted("The first frame has samples up to %d, more than %d bits hold: set bit-depth or left-aligned.",
                   counts.greatest, bits));
    return;
  }
  // Cameras of 8 bits use them all: a dim frame of theirs is only dim.
  const auto doubt = settings.bit_depth == 0 && bits == 16 ? doubt_bit_depth(counts, first) : std::nullopt;
  if (doubt && doubt->reason == DepthDoubt::Reason::small_values) {
    warn(element,
         formatted("The samples of the first frame are at most %d of %d: if the camera has fewer than 16 bits, "
                   "set bit-depth=%d.",
                   doubt->greatest, full_scale, doubt->likely_depth));
  } else if (doubt) {
    warn(element, formatted("The lowest %d bits of all samples of the first frame are 0: if they are left-aligned, set "
                            "bit-depth=%d left-aligned=true.",
                            doubt->zero_bits, doubt->likely_depth));
  }
}

bool LiveProcessor::transform(GstElement* element, const GstVideoFrame& frame, const VideoPictures& wanted) {
  try {
    prepare(element);
    const VideoFrame rows = video_frame(frame);
    note_doubtful_depth(element, rows);
    const GstClockTime start = gst_util_get_timestamp();
    transformer_->transform(rows, wanted);
    const GstClockTime time = gst_util_get_timestamp() - start;
    const std::lock_guard<std::mutex> lock(mutex_);
    frame_time_ = time;
    return true;
  } catch (const std::exception& error) {
    post_error(element, error);
    return false;
  }
}

std::string LiveProcessor::route() const {
  const std::lock_guard<std::mutex> lock(mutex_);
  return route_;
}

GstClockTime LiveProcessor::frame_time() const {
  const std::lock_guard<std::mutex> lock(mutex_);
  return frame_time_;
}

}  // namespace nerova_zel
