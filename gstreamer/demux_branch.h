#pragma once

#include <gst/gst.h>
#include <gst/video/video.h>

#include "video/video_transformer.h"

namespace nerova_zel {

/** One output of the demultiplexer: its pad and the buffers that go there. */
class DemuxBranch {
 public:
  DemuxBranch(GstPad* pad, VideoOutput output) : pad_(pad), output_(output) {}
  ~DemuxBranch() { release_pool(); }
  DemuxBranch(const DemuxBranch&) = delete;
  DemuxBranch& operator=(const DemuxBranch&) = delete;

  GstPad* pad() const { return pad_; }
  VideoOutput output() const { return output_; }

  /** Announces frames like those of the input, and prepares a pool for them; false where downstream refuses. */
  bool agree(const GstVideoInfo& input);
  bool is_agreed(const GstVideoInfo& input) const;

  /** A mapped buffer with the times of `source`. The flow result where there is none. */
  GstFlowReturn take_buffer(GstBuffer* source);
  VideoPicture picture() const;
  /** Sends the buffer that was taken on. */
  GstFlowReturn push();
  /** Gives it back unsent. */
  void drop();

  /** Notes how late downstream is. Thread-safe. */
  void note_lateness(GstClockTime earliest);
  /** Whether a frame of that running time would arrive too late. */
  bool is_late(GstClockTime running_time) const;
  void forget_lateness() { note_lateness(GST_CLOCK_TIME_NONE); }

 private:
  void release_pool();

  GstPad* pad_;
  VideoOutput output_;
  GstVideoInfo info_{};
  GstBufferPool* pool_ = nullptr;
  GstVideoFrame frame_{};
  GstBuffer* buffer_ = nullptr;
  /** Guarded by the pad's lock. */
  GstClockTime earliest_ = GST_CLOCK_TIME_NONE;
};

}  // namespace nerova_zel
