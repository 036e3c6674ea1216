#include <gst/gst.h>

#include "polarize_demux_element.h"
#include "polarize_element.h"

namespace {

gboolean register_elements(GstPlugin* plugin) {
  return gst_element_register(plugin, "nerovapolarize", GST_RANK_NONE, nerova_zel_polarize_get_type()) != FALSE &&
                 gst_element_register(plugin, "nerovapolarizedemux", GST_RANK_NONE,
                                      nerova_zel_polarize_demux_get_type()) != FALSE
             ? TRUE
             : FALSE;
}

}  // namespace

// The licence is the owner's to choose; GStreamer knows this word for one that is none of its list.
GST_PLUGIN_DEFINE(GST_VERSION_MAJOR, GST_VERSION_MINOR, nerovazel, "Pictures of polarization from raw camera frames",
                  register_elements, NEROVA_VERSION, "unknown", "Nerova Zel polarization processor",
                  "https://example.invalid/")
