#include "polarize_element.h"

#include <gst/video/gstvideofilter.h>

#include <new>

#include "live_processor.h"
#include "video_caps.h"

using nerova_zel::LiveProcessor;
using nerova_zel::VideoOutput;

namespace {

enum PropertyNumber : guint { property_output = nerova_zel::first_own_property, property_route, property_frame_time };

constexpr VideoOutput first_output = VideoOutput::azimuth_picture;

struct NerovaZelPolarize {
  GstVideoFilter parent;
  LiveProcessor* processor;
  /** As the property says; guarded by the object's lock. */
  VideoOutput output;
  /** What the caps were agreed for. */
  VideoOutput agreed_output;
};

struct NerovaZelPolarizeClass {
  GstVideoFilterClass parent_class;
};

GstStaticPadTemplate sink_template =
    GST_STATIC_PAD_TEMPLATE("sink", GST_PAD_SINK, GST_PAD_ALWAYS, GST_STATIC_CAPS(NEROVA_ZEL_SINK_CAPS));
GstStaticPadTemplate source_template = GST_STATIC_PAD_TEMPLATE(
    "src", GST_PAD_SRC, GST_PAD_ALWAYS, GST_STATIC_CAPS(GST_VIDEO_CAPS_MAKE("{ GRAY16_LE, RGB }")));

}  // namespace

G_DEFINE_TYPE(NerovaZelPolarize, nerova_zel_polarize, GST_TYPE_VIDEO_FILTER)

namespace {

NerovaZelPolarize* self_of(void* object) { return static_cast<NerovaZelPolarize*>(object); }

VideoOutput output_of(NerovaZelPolarize* self) {
  GST_OBJECT_LOCK(self);
  const VideoOutput output = self->output;
  GST_OBJECT_UNLOCK(self);
  return output;
}

void set_property(GObject* object, guint number, const GValue* value, GParamSpec* description) {
  NerovaZelPolarize* const self = self_of(object);
  if (number == property_output) {
    GST_OBJECT_LOCK(self);
    self->output = static_cast<VideoOutput>(g_value_get_enum(value));
    GST_OBJECT_UNLOCK(self);
    gst_base_transform_reconfigure_src(&self->parent.element);
  } else if (!self->processor->set(number, value)) {
    G_OBJECT_WARN_INVALID_PROPERTY_ID(object, number, description);
  }
}

void get_property(GObject* object, guint number, GValue* value, GParamSpec* description) {
  NerovaZelPolarize* const self = self_of(object);
  switch (number) {
    case property_output:
      g_value_set_enum(value, static_cast<gint>(output_of(self)));
      break;
    case property_route:
      g_value_set_string(value, self->processor->route().c_str());
      break;
    case property_frame_time:
      g_value_set_uint64(value, self->processor->frame_time());
      break;
    default:
      if (!self->processor->get(number, value)) {
        G_OBJECT_WARN_INVALID_PROPERTY_ID(object, number, description);
      }
  }
}

GstCaps* transform_caps(GstBaseTransform* base, GstPadDirection direction, GstCaps* caps, GstCaps* filter) {
  GstCaps* changed = direction == GST_PAD_SINK
                         ? nerova_zel::caps_with_formats(caps, {nerova_zel::format_of(output_of(self_of(base)))})
                         : nerova_zel::caps_with_formats(caps, {GST_VIDEO_FORMAT_GRAY8, GST_VIDEO_FORMAT_GRAY16_LE});
  if (filter != nullptr) {
    GstCaps* const both = gst_caps_intersect_full(filter, changed, GST_CAPS_INTERSECT_FIRST);
    gst_caps_unref(changed);
    changed = both;
  }
  return changed;
}

gboolean set_info(GstVideoFilter* filter, GstCaps*, GstVideoInfo*, GstCaps*, GstVideoInfo* out) {
  NerovaZelPolarize* const self = self_of(filter);
  self->agreed_output = output_of(self);
  return nerova_zel::format_of(self->agreed_output) == GST_VIDEO_INFO_FORMAT(out) ? TRUE : FALSE;
}

gboolean start(GstBaseTransform* base) {
  return self_of(base)->processor->start(GST_ELEMENT_CAST(base)) ? TRUE : FALSE;
}

gboolean stop(GstBaseTransform* base) {
  self_of(base)->processor->stop();
  return TRUE;
}

GstFlowReturn transform_frame(GstVideoFilter* filter, GstVideoFrame* in, GstVideoFrame* out) {
  NerovaZelPolarize* const self = self_of(filter);
  nerova_zel::VideoPictures wanted{};
  wanted[static_cast<std::size_t>(self->agreed_output)] = nerova_zel::picture_of(*out);
  return self->processor->transform(GST_ELEMENT_CAST(filter), *in, wanted) ? GST_FLOW_OK : GST_FLOW_ERROR;
}

void finalize(GObject* object) {
  delete self_of(object)->processor;
  G_OBJECT_CLASS(nerova_zel_polarize_parent_class)->finalize(object);
}

}  // namespace

static void nerova_zel_polarize_class_init(NerovaZelPolarizeClass* type) {
  auto* const object = G_OBJECT_CLASS(type);
  object->set_property = set_property;
  object->get_property = get_property;
  object->finalize = finalize;
  nerova_zel::install_polarize_properties(object);
  g_object_class_install_property(
      object, property_output,
      g_param_spec_enum(
          "output", "Output", "What the frames are turned into", nerova_zel::video_output_type(),
          static_cast<gint>(first_output),
          static_cast<GParamFlags>(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS | GST_PARAM_MUTABLE_PLAYING)));
  nerova_zel::install_measurements(object, property_route, property_frame_time);

  auto* const element = GST_ELEMENT_CLASS(type);
  gst_element_class_add_static_pad_template(element, &sink_template);
  gst_element_class_add_static_pad_template(element, &source_template);
  gst_element_class_set_static_metadata(
      element, "Polarization of light", "Filter/Effect/Video",
      "Turns the raw frames of a polarization camera into power, angle or degree of linear polarization", "Nerova Zel");

  auto* const base = GST_BASE_TRANSFORM_CLASS(type);
  base->transform_caps = transform_caps;
  base->start = start;
  base->stop = stop;
  auto* const filter = GST_VIDEO_FILTER_CLASS(type);
  filter->set_info = set_info;
  filter->transform_frame = transform_frame;
}

static void nerova_zel_polarize_init(NerovaZelPolarize* self) {
  self->processor = new LiveProcessor;
  self->output = first_output;
  self->agreed_output = first_output;
}
