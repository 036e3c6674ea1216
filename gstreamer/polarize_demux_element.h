#pragma once

#include <glib-object.h>

/** The type of the element nerovapolarizedemux: one computation for each frame, a source pad for each output. */
GType nerova_zel_polarize_demux_get_type();
