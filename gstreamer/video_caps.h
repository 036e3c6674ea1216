#pragma once

#include <gst/gst.h>
#include <gst/video/video.h>

#include <initializer_list>

#include "video/video_transformer.h"

namespace nerova_zel {

#define NEROVA_ZEL_SINK_CAPS GST_VIDEO_CAPS_MAKE("{ GRAY8, GRAY16_LE }")
#define NEROVA_ZEL_GREY_CAPS GST_VIDEO_CAPS_MAKE("GRAY16_LE")
#define NEROVA_ZEL_RGB_CAPS GST_VIDEO_CAPS_MAKE("RGB")

/** The format of an output's frames. */
constexpr GstVideoFormat format_of(VideoOutput output) {
  return describe(output).pixels == VideoPixels::rgb ? GST_VIDEO_FORMAT_RGB : GST_VIDEO_FORMAT_GRAY16_LE;
}

/** Caps like the given ones (sizes, rates) with other formats. The caller owns them. */
GstCaps* caps_with_formats(const GstCaps* caps, std::initializer_list<GstVideoFormat> formats);

/** Where the frame's plane lies. */
VideoPicture picture_of(const GstVideoFrame& frame);

}  // namespace nerova_zel
