#pragma once

#include <glib-object.h>

#include <string>

#include "video/video_transformer.h"

namespace nerova_zel {

/** The values of the properties that both elements have. */
struct PolarizeProperties {
  /** Top-left angle in degrees; not_set where the user named none. */
  int layout = layout_not_set;
  Origin origin{};
  /** A ColourPattern, or no_colour. */
  int colour = no_colour;
  /** 0 for all bits of a sample. */
  int bit_depth = 0;
  bool left_aligned = false;
  int output_maximum = 65535;
  AzimuthStyle style = AzimuthStyle::dark;
  double degree_end = 1.0;
  double power_end = 1.0;
  /** Empty for none. */
  std::string calibration_file;
  int threads = 1;

  static constexpr int layout_not_set = -1;
  static constexpr int no_colour = -1;
  static constexpr int assumed_layout = 90;
};

/** Adds the properties to an element's class; their numbers lie below first_own_property. */
void install_polarize_properties(GObjectClass* element);
constexpr guint first_own_property = 32;

/** Adds the read-only properties route and frame-time with numbers of the element's own. */
void install_measurements(GObjectClass* element, guint route, guint frame_time);

/** Sets a property by its number; false where the number is none of theirs. */
bool set_polarize_property(PolarizeProperties& properties, guint number, const GValue* value);

/** Gives a property by its number; false where the number is none of theirs. */
bool get_polarize_property(const PolarizeProperties& properties, guint number, GValue* value);

/** What the properties mean. Reads the calibration. Throws Failure. */
VideoSettings video_settings(const PolarizeProperties& properties);

/** Registered type of a property that chooses a VideoOutput. */
GType video_output_type();

}  // namespace nerova_zel
