#include "demux_branch.h"

#include <utility>

#include "video_caps.h"

namespace nerova_zel {

bool DemuxBranch::agree(const GstVideoInfo& input) {
  release_pool();
  gst_video_info_set_format(&info_, format_of(output_), static_cast<guint>(GST_VIDEO_INFO_WIDTH(&input)),
                            static_cast<guint>(GST_VIDEO_INFO_HEIGHT(&input)));
  GST_VIDEO_INFO_FPS_N(&info_) = GST_VIDEO_INFO_FPS_N(&input);
  GST_VIDEO_INFO_FPS_D(&info_) = GST_VIDEO_INFO_FPS_D(&input);
  GST_VIDEO_INFO_PAR_N(&info_) = GST_VIDEO_INFO_PAR_N(&input);
  GST_VIDEO_INFO_PAR_D(&info_) = GST_VIDEO_INFO_PAR_D(&input);
  GstCaps* const caps = gst_video_info_to_caps(&info_);
  bool agreed = gst_pad_push_event(pad_, gst_event_new_caps(caps)) != FALSE || !gst_pad_is_linked(pad_);
  if (agreed) {
    GstBufferPool* const pool = gst_video_buffer_pool_new();
    GstStructure* const config = gst_buffer_pool_get_config(pool);
    gst_buffer_pool_config_set_params(config, caps, static_cast<guint>(GST_VIDEO_INFO_SIZE(&info_)), 2, 0);
    agreed = gst_buffer_pool_set_config(pool, config) != FALSE && gst_buffer_pool_set_active(pool, TRUE) != FALSE;
    pool_ = pool;
  }
  gst_caps_unref(caps);
  return agreed;
}

bool DemuxBranch::is_agreed(const GstVideoInfo& input) const {
  return pool_ != nullptr && GST_VIDEO_INFO_WIDTH(&info_) == GST_VIDEO_INFO_WIDTH(&input) &&
         GST_VIDEO_INFO_HEIGHT(&info_) == GST_VIDEO_INFO_HEIGHT(&input);
}

GstFlowReturn DemuxBranch::take_buffer(GstBuffer* source) {
  const GstFlowReturn flow = gst_buffer_pool_acquire_buffer(pool_, &buffer_, nullptr);
  if (flow != GST_FLOW_OK) {
    return flow;
  }
  gst_buffer_copy_into(buffer_, source,
                       static_cast<GstBufferCopyFlags>(GST_BUFFER_COPY_FLAGS | GST_BUFFER_COPY_TIMESTAMPS), 0,
                       static_cast<gsize>(-1));
  if (gst_video_frame_map(&frame_, &info_, buffer_, GST_MAP_WRITE) == FALSE) {
    gst_clear_buffer(&buffer_);
    return GST_FLOW_ERROR;
  }
  return GST_FLOW_OK;
}

VideoPicture DemuxBranch::picture() const { return picture_of(frame_); }

GstFlowReturn DemuxBranch::push() {
  gst_video_frame_unmap(&frame_);
  return gst_pad_push(pad_, std::exchange(buffer_, nullptr));
}

void DemuxBranch::drop() {
  if (buffer_ != nullptr) {
    gst_video_frame_unmap(&frame_);
    gst_clear_buffer(&buffer_);
  }
}

void DemuxBranch::note_lateness(GstClockTime earliest) {
  GST_OBJECT_LOCK(pad_);
  earliest_ = earliest;
  GST_OBJECT_UNLOCK(pad_);
}

bool DemuxBranch::is_late(GstClockTime running_time) const {
  GST_OBJECT_LOCK(pad_);
  const bool late =
      GST_CLOCK_TIME_IS_VALID(earliest_) && GST_CLOCK_TIME_IS_VALID(running_time) && running_time <= earliest_;
  GST_OBJECT_UNLOCK(pad_);
  return late;
}

void DemuxBranch::release_pool() {
  if (pool_ != nullptr) {
    gst_buffer_pool_set_active(pool_, FALSE);
    gst_clear_object(&pool_);
  }
}

}  // namespace nerova_zel
