#include "video_caps.h"

namespace nerova_zel {

GstCaps* caps_with_formats(const GstCaps* caps, std::initializer_list<GstVideoFormat> formats) {
  GValue list = G_VALUE_INIT;
  g_value_init(&list, GST_TYPE_LIST);
  for (const GstVideoFormat format : formats) {
    GValue name = G_VALUE_INIT;
    g_value_init(&name, G_TYPE_STRING);
    g_value_set_static_string(&name, gst_video_format_to_string(format));
    gst_value_list_append_and_take_value(&list, &name);
  }
  GstCaps* const changed = gst_caps_copy(caps);
  for (guint i = 0; i < gst_caps_get_size(changed); ++i) {
    GstStructure* const structure = gst_caps_get_structure(changed, i);
    // They belong to the format that is replaced.
    gst_structure_remove_fields(structure, "colorimetry", "chroma-site", nullptr);
    gst_structure_set_value(structure, "format", formats.size() == 1 ? gst_value_list_get_value(&list, 0) : &list);
  }
  g_value_unset(&list);
  return changed;
}

VideoPicture picture_of(const GstVideoFrame& frame) {
  return {static_cast<std::uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&frame, 0)),
          static_cast<std::size_t>(GST_VIDEO_FRAME_PLANE_STRIDE(&frame, 0))};
}

}  // namespace nerova_zel
