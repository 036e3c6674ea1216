#include "polarize_demux_element.h"

#include <gst/base/gstflowcombiner.h>
#include <gst/video/video.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <vector>

#include "demux_branch.h"
#include "live_processor.h"
#include "video_caps.h"

using nerova_zel::DemuxBranch;
using nerova_zel::LiveProcessor;
using nerova_zel::VideoOutput;
using Branches = std::vector<std::shared_ptr<DemuxBranch>>;

namespace {

enum PropertyNumber : guint { property_route = nerova_zel::first_own_property, property_frame_time };

/** What an element keeps beside GObject's part. */
struct State {
  LiveProcessor processor;
  GstPad* sink = nullptr;
  /** Guarded by the object's lock, as pads may be asked for while frames flow. */
  Branches branches;
  GstFlowCombiner* flows = gst_flow_combiner_new();
  // Used by the thread of the frames only.
  GstVideoInfo info{};
  bool has_caps = false;
  GstSegment segment{};

  ~State() { gst_flow_combiner_free(flows); }
};

struct NerovaZelPolarizeDemux {
  GstElement parent;
  State* state;
};

struct NerovaZelPolarizeDemuxClass {
  GstElementClass parent_class;
};

GstStaticPadTemplate sink_template =
    GST_STATIC_PAD_TEMPLATE("sink", GST_PAD_SINK, GST_PAD_ALWAYS, GST_STATIC_CAPS(NEROVA_ZEL_SINK_CAPS));

}  // namespace

G_DEFINE_TYPE(NerovaZelPolarizeDemux, nerova_zel_polarize_demux, GST_TYPE_ELEMENT)

namespace {

NerovaZelPolarizeDemux* self_of(void* object) { return static_cast<NerovaZelPolarizeDemux*>(object); }

Branches branches_of(NerovaZelPolarizeDemux* self) {
  GST_OBJECT_LOCK(self);
  Branches branches = self->state->branches;
  GST_OBJECT_UNLOCK(self);
  return branches;
}

void set_property(GObject* object, guint number, const GValue* value, GParamSpec* description) {
  if (!self_of(object)->state->processor.set(number, value)) {
    G_OBJECT_WARN_INVALID_PROPERTY_ID(object, number, description);
  }
}

void get_property(GObject* object, guint number, GValue* value, GParamSpec* description) {
  const LiveProcessor& processor = self_of(object)->state->processor;
  if (number == property_route) {
    g_value_set_string(value, processor.route().c_str());
  } else if (number == property_frame_time) {
    g_value_set_uint64(value, processor.frame_time());
  } else if (!processor.get(number, value)) {
    G_OBJECT_WARN_INVALID_PROPERTY_ID(object, number, description);
  }
}

/** Buffers of the outputs that a frame is computed for; those that are not sent in the end go back. */
class WantedBuffers {
 public:
  ~WantedBuffers() {
    for (const auto& branch : taken_) {
      branch->drop();
    }
  }

  GstFlowReturn take(const std::shared_ptr<DemuxBranch>& branch, GstBuffer* source) {
    const GstFlowReturn flow = branch->take_buffer(source);
    if (flow == GST_FLOW_OK) {
      pictures_[static_cast<std::size_t>(branch->output())] = branch->picture();
      taken_.push_back(branch);
    }
    return flow;
  }

  bool empty() const { return taken_.empty(); }
  const nerova_zel::VideoPictures& pictures() const { return pictures_; }
  Branches& taken() { return taken_; }

 private:
  nerova_zel::VideoPictures pictures_{};
  Branches taken_;
};

GstFlowReturn send(NerovaZelPolarizeDemux* self, GstBuffer* source) {
  State& state = *self->state;
  const GstClockTime running_time =
      gst_segment_to_running_time(&state.segment, GST_FORMAT_TIME, GST_BUFFER_PTS(source));
  WantedBuffers wanted;
  for (const auto& branch : branches_of(self)) {
    if (branch->is_late(running_time) || !gst_pad_is_linked(branch->pad())) {
      continue;
    }
    if (!branch->is_agreed(state.info) && !branch->agree(state.info)) {
      return GST_FLOW_NOT_NEGOTIATED;
    }
    if (const GstFlowReturn flow = wanted.take(branch, source); flow != GST_FLOW_OK) {
      return flow;
    }
  }
  if (wanted.empty()) {
    return GST_FLOW_OK;
  }
  GstVideoFrame frame;
  if (gst_video_frame_map(&frame, &state.info, source, GST_MAP_READ) == FALSE) {
    GST_ELEMENT_ERROR(self, STREAM, FORMAT, ("A buffer is smaller than a frame of its format."), (nullptr));
    return GST_FLOW_ERROR;
  }
  const bool done = state.processor.transform(GST_ELEMENT_CAST(self), frame, wanted.pictures());
  gst_video_frame_unmap(&frame);
  if (!done) {
    return GST_FLOW_ERROR;
  }
  GstFlowReturn flow = GST_FLOW_OK;
  while (!wanted.taken().empty()) {
    const std::shared_ptr<DemuxBranch> branch = wanted.taken().back();
    wanted.taken().pop_back();
    flow = gst_flow_combiner_update_pad_flow(state.flows, branch->pad(), branch->push());
  }
  return flow;
}

GstFlowReturn chain(GstPad*, GstObject* object, GstBuffer* buffer) {
  NerovaZelPolarizeDemux* const self = self_of(object);
  const GstFlowReturn flow = self->state->has_caps ? send(self, buffer) : GST_FLOW_NOT_NEGOTIATED;
  gst_buffer_unref(buffer);
  return flow;
}

gboolean accept_caps(NerovaZelPolarizeDemux* self, GstCaps* caps) {
  State& state = *self->state;
  state.has_caps = gst_video_info_from_caps(&state.info, caps) != FALSE;
  bool agreed = state.has_caps;
  for (const auto& branch : branches_of(self)) {
    agreed = agreed && branch->agree(state.info);
  }
  return agreed ? TRUE : FALSE;
}

/** Each pad has a stream of its own. */
void start_stream(GstPad* pad, GstElement* element, GstEvent* like) {
  gchar* const name = gst_pad_create_stream_id(pad, element, GST_PAD_NAME(pad));
  GstEvent* const event = gst_event_new_stream_start(name);
  g_free(name);
  guint group = 0;
  if (gst_event_parse_group_id(like, &group) != FALSE) {
    gst_event_set_group_id(event, group);
  }
  gst_pad_push_event(pad, event);
}

gboolean sink_event(GstPad* pad, GstObject* object, GstEvent* event) {
  NerovaZelPolarizeDemux* const self = self_of(object);
  gboolean done = TRUE;
  switch (GST_EVENT_TYPE(event)) {
    case GST_EVENT_CAPS: {
      GstCaps* caps = nullptr;
      gst_event_parse_caps(event, &caps);
      done = accept_caps(self, caps);
      break;
    }
    case GST_EVENT_STREAM_START:
      for (const auto& branch : branches_of(self)) {
        start_stream(branch->pad(), GST_ELEMENT_CAST(self), event);
      }
      break;
    case GST_EVENT_SEGMENT:
      gst_event_copy_segment(event, &self->state->segment);
      return gst_pad_event_default(pad, object, event);
    case GST_EVENT_FLUSH_STOP:
      gst_segment_init(&self->state->segment, GST_FORMAT_TIME);
      gst_flow_combiner_reset(self->state->flows);
      for (const auto& branch : branches_of(self)) {
        branch->forget_lateness();
      }
      return gst_pad_event_default(pad, object, event);
    default:
      return gst_pad_event_default(pad, object, event);
  }
  gst_event_unref(event);
  return done;
}

gboolean sink_query(GstPad* pad, GstObject* object, GstQuery* query) {
  if (GST_QUERY_TYPE(query) == GST_QUERY_ALLOCATION) {
    // Rows may lie apart.
    gst_query_add_allocation_meta(query, GST_VIDEO_META_API_TYPE, nullptr);
    return TRUE;
  }
  return gst_pad_query_default(pad, object, query);
}

std::shared_ptr<DemuxBranch> branch_of(NerovaZelPolarizeDemux* self, GstPad* pad) {
  const Branches branches = branches_of(self);
  const auto found =
      std::find_if(branches.begin(), branches.end(), [pad](const auto& branch) { return branch->pad() == pad; });
  return found == branches.end() ? nullptr : *found;
}

gboolean source_event(GstPad* pad, GstObject* object, GstEvent* event) {
  if (GST_EVENT_TYPE(event) == GST_EVENT_QOS) {
    GstQOSType type = GST_QOS_TYPE_OVERFLOW;
    gdouble proportion = 1.0;
    GstClockTimeDiff late = 0;
    GstClockTime timestamp = GST_CLOCK_TIME_NONE;
    gst_event_parse_qos(event, &type, &proportion, &late, &timestamp);
    const std::shared_ptr<DemuxBranch> branch = branch_of(self_of(object), pad);
    if (branch && GST_CLOCK_TIME_IS_VALID(timestamp)) {
      // The next frame cannot be in time either until the lateness is made up for.
      const auto earliest = static_cast<GstClockTimeDiff>(timestamp) + (late > 0 ? 2 * late : late);
      branch->note_lateness(earliest > 0 ? static_cast<GstClockTime>(earliest) : 0);
    }
    // One branch's lateness is no reason for upstream to drop frames of the others.
    gst_event_unref(event);
    return TRUE;
  }
  return gst_pad_event_default(pad, object, event);
}

/** Tells a new branch what came before its pad was requested. */
gboolean repeat_event(GstPad*, GstEvent** event, gpointer data) {
  auto* const branch = static_cast<DemuxBranch*>(data);
  switch (GST_EVENT_TYPE(*event)) {
    case GST_EVENT_STREAM_START: {
      GstElement* const element = gst_pad_get_parent_element(branch->pad());
      start_stream(branch->pad(), element, *event);
      gst_object_unref(element);
      break;
    }
    case GST_EVENT_CAPS: {
      GstCaps* caps = nullptr;
      gst_event_parse_caps(*event, &caps);
      GstVideoInfo info;
      if (gst_video_info_from_caps(&info, caps) != FALSE) {
        branch->agree(info);
      }
      break;
    }
    default:
      gst_pad_push_event(branch->pad(), gst_event_ref(*event));
  }
  return TRUE;
}

std::optional<VideoOutput> output_named(const gchar* name) {
  for (const nerova_zel::VideoOutputDescription& description : nerova_zel::video_output_table) {
    if (g_strcmp0(description.name, name) == 0) {
      return description.output;
    }
  }
  return std::nullopt;
}

GstPad* request_pad(GstElement* element, GstPadTemplate* pad_template, const gchar*, const GstCaps*) {
  NerovaZelPolarizeDemux* const self = self_of(element);
  State& state = *self->state;
  const std::optional<VideoOutput> output = output_named(GST_PAD_TEMPLATE_NAME_TEMPLATE(pad_template));
  if (!output) {
    return nullptr;
  }
  GstPad* const pad = gst_pad_new_from_template(pad_template, GST_PAD_TEMPLATE_NAME_TEMPLATE(pad_template));
  gst_pad_set_event_function(pad, source_event);
  gst_pad_set_active(pad, TRUE);
  if (gst_element_add_pad(element, pad) == FALSE) {
    return nullptr;  // there is one already
  }
  const auto branch = std::make_shared<DemuxBranch>(pad, *output);
  gst_pad_sticky_events_foreach(state.sink, repeat_event, branch.get());
  gst_flow_combiner_add_pad(state.flows, pad);
  GST_OBJECT_LOCK(self);
  state.branches.push_back(branch);
  GST_OBJECT_UNLOCK(self);
  return pad;
}

void release_pad(GstElement* element, GstPad* pad) {
  NerovaZelPolarizeDemux* const self = self_of(element);
  State& state = *self->state;
  GST_OBJECT_LOCK(self);
  Branches& all = state.branches;
  all.erase(std::remove_if(all.begin(), all.end(), [pad](const auto& branch) { return branch->pad() == pad; }),
            all.end());
  GST_OBJECT_UNLOCK(self);
  gst_flow_combiner_remove_pad(state.flows, pad);
  gst_pad_set_active(pad, FALSE);
  gst_element_remove_pad(element, pad);
}

GstStateChangeReturn change_state(GstElement* element, GstStateChange change) {
  NerovaZelPolarizeDemux* const self = self_of(element);
  State& state = *self->state;
  if (change == GST_STATE_CHANGE_READY_TO_PAUSED) {
    gst_segment_init(&state.segment, GST_FORMAT_TIME);
    gst_flow_combiner_reset(state.flows);
    if (!state.processor.start(element)) {
      return GST_STATE_CHANGE_FAILURE;
    }
  }
  const GstStateChangeReturn result =
      GST_ELEMENT_CLASS(nerova_zel_polarize_demux_parent_class)->change_state(element, change);
  if (change == GST_STATE_CHANGE_PAUSED_TO_READY) {
    state.processor.stop();
    state.has_caps = false;
    for (const auto& branch : branches_of(self)) {
      branch->forget_lateness();
    }
  }
  return result;
}

void finalize(GObject* object) {
  delete self_of(object)->state;
  G_OBJECT_CLASS(nerova_zel_polarize_demux_parent_class)->finalize(object);
}

void add_source_templates(GstElementClass* element) {
  for (const nerova_zel::VideoOutputDescription& description : nerova_zel::video_output_table) {
    GstCaps* const caps = gst_caps_from_string(
        description.pixels == nerova_zel::VideoPixels::rgb ? NEROVA_ZEL_RGB_CAPS : NEROVA_ZEL_GREY_CAPS);
    gst_element_class_add_pad_template(element,
                                       gst_pad_template_new(description.name, GST_PAD_SRC, GST_PAD_REQUEST, caps));
    gst_caps_unref(caps);
  }
}

}  // namespace

static void nerova_zel_polarize_demux_class_init(NerovaZelPolarizeDemuxClass* type) {
  auto* const object = G_OBJECT_CLASS(type);
  object->set_property = set_property;
  object->get_property = get_property;
  object->finalize = finalize;
  nerova_zel::install_polarize_properties(object);
  nerova_zel::install_measurements(object, property_route, property_frame_time);

  auto* const element = GST_ELEMENT_CLASS(type);
  element->request_new_pad = request_pad;
  element->release_pad = release_pad;
  element->change_state = change_state;
  gst_element_class_add_static_pad_template(element, &sink_template);
  add_source_templates(element);
  gst_element_class_set_static_metadata(element, "Polarization of light, several outputs", "Filter/Demuxer/Video",
                                        "Turns each raw frame of a polarization camera into every output that a pad "
                                        "is requested for, in one computation",
                                        "Nerova Zel");
}

static void nerova_zel_polarize_demux_init(NerovaZelPolarizeDemux* self) {
  self->state = new State;
  GstPad* const sink = gst_pad_new_from_static_template(&sink_template, "sink");
  gst_pad_set_chain_function(sink, chain);
  gst_pad_set_event_function(sink, sink_event);
  gst_pad_set_query_function(sink, sink_query);
  gst_element_add_pad(GST_ELEMENT_CAST(self), sink);
  self->state->sink = sink;
}
