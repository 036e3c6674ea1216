#include "polarize_properties.h"

#include <gst/gst.h>

#include <memory>

#include "calibration/calibration_file.h"
#include "failure.h"

namespace nerova_zel {

namespace {

enum PropertyNumber : guint {
  layout = 1,
  origin_x,
  origin_y,
  colour,
  bit_depth,
  left_aligned,
  output_maximum,
  style,
  degree_end,
  power_end,
  calibration,
  threads
};

constexpr int most_threads = 64;
constexpr double least_scale_end = 1e-6;
constexpr auto flags = static_cast<GParamFlags>(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS | GST_PARAM_MUTABLE_PLAYING);

/** Registers an enumeration once; GObject keeps the values for the life of the process. */
template <std::size_t Count>
GType register_choices(const char* name, const std::array<GEnumValue, Count>& choices) {
  return g_enum_register_static(name, choices.data());
}

GType layout_type() {
  static const std::array<GEnumValue, 6> choices = {
      {{PolarizeProperties::layout_not_set, "90 is assumed, with a warning", "not-set"},
       {0, "0, 135 / 45, 90 degrees", "0"},
       {45, "45, 90 / 0, 135 degrees", "45"},
       {90, "90, 45 / 135, 0 degrees", "90"},
       {135, "135, 0 / 90, 45 degrees", "135"},
       {0, nullptr, nullptr}}};
  static const GType type = register_choices("NerovaZelLayout", choices);
  return type;
}

GType colour_type() {
  static const std::array<GEnumValue, colour_patterns.size() + 2> choices = [] {
    std::array<GEnumValue, colour_patterns.size() + 2> all{};
    all[0] = {PolarizeProperties::no_colour, "No colour filters", "none"};
    for (std::size_t i = 0; i < colour_patterns.size(); ++i) {
      all[i + 1] = {static_cast<gint>(colour_patterns[i].second), "Cells of 2 x 2 pixels have these colours",
                    colour_patterns[i].first};
    }
    return all;
  }();
  static const GType type = register_choices("NerovaZelColourPattern", choices);
  return type;
}

GType style_type() {
  static const std::array<GEnumValue, azimuth_styles.size() + 1> choices = [] {
    constexpr std::array<const char*, azimuth_styles.size()> meanings = {
        "The angle alone", "The degree as saturation: white where there is none",
        "The degree as brightness: black where there is none", "The degree as saturation, the power as brightness"};
    std::array<GEnumValue, azimuth_styles.size() + 1> all{};
    for (std::size_t i = 0; i < azimuth_styles.size(); ++i) {
      all[i] = {static_cast<gint>(i), meanings[i], azimuth_styles[i].name};
    }
    return all;
  }();
  static const GType type = register_choices("NerovaZelAzimuthStyle", choices);
  return type;
}

std::string read_text(const std::string& path) {
  gchar* text = nullptr;
  gsize length = 0;
  GError* error = nullptr;
  if (g_file_get_contents(path.c_str(), &text, &length, &error) == FALSE) {
    const std::string reason = error->message;
    g_error_free(error);
    throw Failure("the calibration cannot be read: " + reason + ".");
  }
  const std::unique_ptr<gchar, decltype(&g_free)> owner(text, &g_free);
  return {text, length};
}

}  // namespace

GType video_output_type() {
  static const std::array<GEnumValue, video_output_table.size() + 1> choices = [] {
    std::array<GEnumValue, video_output_table.size() + 1> all{};
    for (std::size_t i = 0; i < video_output_table.size(); ++i) {
      all[i] = {static_cast<gint>(i), video_output_table[i].content, video_output_table[i].name};
    }
    return all;
  }();
  static const GType type = register_choices("NerovaZelVideoOutput", choices);
  return type;
}

void install_polarize_properties(GObjectClass* element) {
  const PolarizeProperties start;
  const auto install = [element](guint number, GParamSpec* description) {
    g_object_class_install_property(element, number, description);
  };
  install(layout, g_param_spec_enum("layout", "Layout",
                                    "Polarizer angle in degrees of the pixel at even sensor coordinates; it names the "
                                    "2 x 2 pattern, which nothing in a frame tells",
                                    layout_type(), start.layout, flags));
  install(origin_x, g_param_spec_int("origin-x", "Origin x", "Sensor column of the first pixel of a frame", 0, G_MAXINT,
                                     start.origin.x, flags));
  install(origin_y, g_param_spec_int("origin-y", "Origin y", "Sensor row of the first pixel of a frame", 0, G_MAXINT,
                                     start.origin.y, flags));
  install(colour, g_param_spec_enum("colour", "Colour",
                                    "Colour filters over the polarizers, by the cell at sensor coordinates 0, 0; each "
                                    "colour is computed alone and its pixels stay where they are",
                                    colour_type(), start.colour, flags));
  install(bit_depth, g_param_spec_int("bit-depth", "Bit depth",
                                      "Significant bits of a sample; 0 for all 8 or 16 bits. A camera with 12 bits in "
                                      "GRAY16_LE needs 12",
                                      0, 16, start.bit_depth, flags));
  install(left_aligned,
          g_param_spec_boolean("left-aligned", "Left aligned",
                               "Whether the significant bits are the upper bits of a sample", FALSE, flags));
  install(output_maximum,
          g_param_spec_int("output-maximum", "Output maximum", "Value of full scale in GRAY16_LE outputs", 1, 65535,
                           start.output_maximum, flags));
  install(style, g_param_spec_enum("style", "Style", "What the coloured angle shows beside the angle", style_type(),
                                   static_cast<gint>(start.style), flags));
  install(degree_end, g_param_spec_double("degree-end", "End of the degree's scale",
                                          "Degree of polarization that pictures show in full", least_scale_end, 1.0,
                                          start.degree_end, flags));
  install(power_end,
          g_param_spec_double("power-end", "End of the power's scale", "Share of full scale that pictures show in full",
                              least_scale_end, 1.0, start.power_end, flags));
  install(calibration, g_param_spec_string("calibration", "Calibration", "File written by nerova-polarize calibrate",
                                           nullptr, flags));
  install(threads, g_param_spec_int("threads", "Threads", "Threads that compute one frame; results are the same", 1,
                                    most_threads, start.threads, flags));
}

void install_measurements(GObjectClass* element, guint route, guint frame_time) {
  constexpr auto read_only = static_cast<GParamFlags>(G_PARAM_READABLE | G_PARAM_STATIC_STRINGS);
  g_object_class_install_property(
      element, route,
      g_param_spec_string("route", "Route", "What computes the frames; empty before the first", nullptr, read_only));
  g_object_class_install_property(
      element, frame_time,
      g_param_spec_uint64("frame-time", "Frame time", "Nanoseconds that the last frame took, 0 before the first", 0,
                          G_MAXUINT64, 0, read_only));
}

bool set_polarize_property(PolarizeProperties& properties, guint number, const GValue* value) {
  switch (number) {
    case layout:
      properties.layout = g_value_get_enum(value);
      return true;
    case origin_x:
      properties.origin.x = g_value_get_int(value);
      return true;
    case origin_y:
      properties.origin.y = g_value_get_int(value);
      return true;
    case colour:
      properties.colour = g_value_get_enum(value);
      return true;
    case bit_depth:
      properties.bit_depth = g_value_get_int(value);
      return true;
    case left_aligned:
      properties.left_aligned = g_value_get_boolean(value) != FALSE;
      return true;
    case output_maximum:
      properties.output_maximum = g_value_get_int(value);
      return true;
    case style:
      properties.style = static_cast<AzimuthStyle>(g_value_get_enum(value));
      return true;
    case degree_end:
      properties.degree_end = g_value_get_double(value);
      return true;
    case power_end:
      properties.power_end = g_value_get_double(value);
      return true;
    case calibration: {
      const gchar* const path = g_value_get_string(value);
      properties.calibration_file = path != nullptr ? path : "";
      return true;
    }
    case threads:
      properties.threads = g_value_get_int(value);
      return true;
    default:
      return false;
  }
}

bool get_polarize_property(const PolarizeProperties& properties, guint number, GValue* value) {
  switch (number) {
    case layout:
      g_value_set_enum(value, properties.layout);
      return true;
    case origin_x:
      g_value_set_int(value, properties.origin.x);
      return true;
    case origin_y:
      g_value_set_int(value, properties.origin.y);
      return true;
    case colour:
      g_value_set_enum(value, properties.colour);
      return true;
    case bit_depth:
      g_value_set_int(value, properties.bit_depth);
      return true;
    case left_aligned:
      g_value_set_boolean(value, properties.left_aligned ? TRUE : FALSE);
      return true;
    case output_maximum:
      g_value_set_int(value, properties.output_maximum);
      return true;
    case style:
      g_value_set_enum(value, static_cast<gint>(properties.style));
      return true;
    case degree_end:
      g_value_set_double(value, properties.degree_end);
      return true;
    case power_end:
      g_value_set_double(value, properties.power_end);
      return true;
    case calibration:
      g_value_set_string(value, properties.calibration_file.empty() ? nullptr : properties.calibration_file.c_str());
      return true;
    case threads:
      g_value_set_int(value, properties.threads);
      return true;
    default:
      return false;
  }
}

VideoSettings video_settings(const PolarizeProperties& properties) {
  VideoSettings settings;
  settings.layout = MosaicLayout(
      properties.layout == PolarizeProperties::layout_not_set ? PolarizeProperties::assumed_layout : properties.layout);
  settings.origin = properties.origin;
  if (properties.colour != PolarizeProperties::no_colour) {
    settings.colour = static_cast<ColourPattern>(properties.colour);
  }
  settings.bit_depth = properties.bit_depth;
  settings.left_aligned = properties.left_aligned;
  settings.output_maximum = properties.output_maximum;
  settings.style = properties.style;
  settings.degree_end = properties.degree_end;
  settings.power_end = properties.power_end;
  if (!properties.calibration_file.empty()) {
    const std::string text = read_text(properties.calibration_file);
    if (settings.colour) {
      settings.colour_calibrations = parse_colour_calibration(text, properties.calibration_file);
    } else {
      settings.calibration = parse_calibration(text, properties.calibration_file);
    }
  }
  settings.threads = properties.threads;
  return settings;
}

}  // namespace nerova_zel
