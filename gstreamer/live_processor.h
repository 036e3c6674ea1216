#pragma once

#include <gst/gst.h>
#include <gst/video/video.h>

#include <array>
#include <memory>
#include <mutex>
#include <string>

#include "polarize_properties.h"
#include "video/video_transformer.h"

namespace nerova_zel {

/**
 * What both elements do with their properties and frames. Properties may be set at any time and from any thread; they
 * serve from the next frame on. start, stop and transform are for one thread at a time.
 */
class LiveProcessor {
 public:
  /** As set_polarize_property and get_polarize_property. */
  bool set(guint number, const GValue* value);
  bool get(guint number, GValue* value) const;

  /** Opens what frames need, so that wrong settings show before the first. Posts an error and returns false then. */
  bool start(GstElement* element);
  void stop();

  /** Transforms a mapped frame. Posts an error on the element and returns false where that fails. */
  bool transform(GstElement* element, const GstVideoFrame& frame, const VideoPictures& wanted);

  /** What computes the frames; empty before start. */
  std::string route() const;
  /** What the last frame took; 0 before the first. */
  GstClockTime frame_time() const;

 private:
  /** Has the transformer follow the properties. Throws Failure. */
  void prepare(GstElement* element);
  /** A warning where the samples of a first frame do not suit the bit depth: nothing in their format tells it. */
  void note_doubtful_depth(GstElement* element, const VideoFrame& frame);

  /** Guards these four. */
  mutable std::mutex mutex_;
  PolarizeProperties properties_;
  bool changed_ = true;
  std::string route_;
  GstClockTime frame_time_ = 0;

  std::unique_ptr<VideoTransformer> transformer_;
  bool layout_warned_ = false;
  /** By bytes of a sample, less 1. */
  std::array<bool, 2> samples_checked_{};
};

}  // namespace nerova_zel
