#pragma once

#include <glib-object.h>

/** The type of the element nerovapolarize: frames of a polarization camera in, one output out. */
GType nerova_zel_polarize_get_type();
