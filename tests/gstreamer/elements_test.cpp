// The elements in pipelines of one: what they agree on, what they give and how they refuse. Values are compared with
// the video transformer's, which has tests of its own.
#include <gst/check/gstharness.h>
#include <gst/video/video.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "support/frame_images.h"
#include "video/video_transformer.h"

namespace nerova_zel::test {
namespace {

using Harness = std::unique_ptr<GstHarness, decltype(&gst_harness_teardown)>;
using BufferOwner = std::unique_ptr<GstBuffer, decltype(&gst_buffer_unref)>;

/** The text of the first message of that type, or nothing. */
std::string message_of(GstBus* bus, GstMessageType type) {
  GstMessage* const message = gst_bus_pop_filtered(bus, type);
  if (message == nullptr) {
    return {};
  }
  GError* error = nullptr;
  (type == GST_MESSAGE_ERROR ? gst_message_parse_error : gst_message_parse_warning)(message, &error, nullptr);
  std::string text = error->message;
  g_error_free(error);
  gst_message_unref(message);
  return text;
}

/** An element of that description, what it posts, and pads on either side. */
class Filter {
 public:
  explicit Filter(const std::string& line) : element_(gst_parse_launch(line.c_str(), nullptr)), bus_(gst_bus_new()) {
    gst_element_set_bus(element_, bus_);
    harness_.reset(gst_harness_new_with_element(element_, "sink", "src"));
  }
  ~Filter() {
    harness_.reset();
    gst_element_set_bus(element_, nullptr);
    gst_object_unref(element_);
    gst_object_unref(bus_);
  }

  GstHarness* get() const { return harness_.get(); }
  GstHarness* operator->() const { return harness_.get(); }
  std::string next_message(GstMessageType type) { return message_of(bus_, type); }

 private:
  GstElement* element_;
  GstBus* bus_;
  Harness harness_{nullptr, &gst_harness_teardown};
};

GstVideoInfo info_of(GstVideoFormat format, int width, int height) {
  GstVideoInfo info;
  gst_video_info_set_format(&info, format, static_cast<guint>(width), static_cast<guint>(height));
  return info;
}

void set_input(GstHarness* filter, const GstVideoInfo& info) {
  gst_harness_set_src_caps(filter, gst_video_info_to_caps(&info));
}

/** A frame of mixed 12-bit or 8-bit samples, with GStreamer's own gaps between its rows. */
GstBuffer* input_buffer(const GstVideoInfo& info, unsigned shift = 0) {
  GstBuffer* const buffer = gst_buffer_new_allocate(nullptr, GST_VIDEO_INFO_SIZE(&info), nullptr);
  GstVideoFrame frame;
  gst_video_frame_map(&frame, &info, buffer, GST_MAP_WRITE);
  const auto width = static_cast<std::size_t>(GST_VIDEO_INFO_WIDTH(&info));
  const std::vector<std::uint16_t> samples =
      mixed_samples(width * static_cast<std::size_t>(GST_VIDEO_INFO_HEIGHT(&info)));
  for (std::size_t i = 0; i < samples.size(); ++i) {
    auto* const row = static_cast<std::uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&frame, 0)) +
                      static_cast<std::size_t>(GST_VIDEO_FRAME_PLANE_STRIDE(&frame, 0)) * (i / width);
    if (GST_VIDEO_INFO_FORMAT(&info) == GST_VIDEO_FORMAT_GRAY8) {
      row[i % width] = static_cast<std::uint8_t>(samples[i]);
    } else {
      reinterpret_cast<std::uint16_t*>(row)[i % width] = static_cast<std::uint16_t>(samples[i] << shift);
    }
  }
  gst_video_frame_unmap(&frame);
  return buffer;
}

/** The rows of a buffer without gaps. */
std::vector<std::uint8_t> rows_of(GstBuffer* buffer, const GstVideoInfo& info) {
  GstVideoFrame frame;
  EXPECT_TRUE(gst_video_frame_map(&frame, &info, buffer, GST_MAP_READ));
  const std::size_t row_bytes =
      static_cast<std::size_t>(GST_VIDEO_INFO_WIDTH(&info) * GST_VIDEO_INFO_COMP_PSTRIDE(&info, 0));
  std::vector<std::uint8_t> rows;
  for (int y = 0; y < GST_VIDEO_INFO_HEIGHT(&info); ++y) {
    const auto* const row = static_cast<const std::uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&frame, 0)) +
                            GST_VIDEO_FRAME_PLANE_STRIDE(&frame, 0) * y;
    rows.insert(rows.end(), row, row + row_bytes);
  }
  gst_video_frame_unmap(&frame);
  return rows;
}

std::vector<std::uint8_t> expected_rows(const GstVideoInfo& input, VideoOutput output, const VideoSettings& settings) {
  const BufferOwner buffer(input_buffer(input), &gst_buffer_unref);
  const std::vector<std::uint8_t> samples = rows_of(buffer.get(), input);
  const FrameSize size{GST_VIDEO_INFO_WIDTH(&input), GST_VIDEO_INFO_HEIGHT(&input)};
  const int bytes = GST_VIDEO_INFO_COMP_PSTRIDE(&input, 0);
  const std::size_t row = bytes_per_pixel(describe(output).pixels) * static_cast<std::size_t>(size.width);
  std::vector<std::uint8_t> rows(row * static_cast<std::size_t>(size.height));
  VideoPictures wanted{};
  wanted[static_cast<std::size_t>(output)] = {rows.data(), row};
  VideoTransformer(settings, NEROVA_LIBRARY)
      .transform({size, samples.data(), static_cast<std::size_t>(bytes * size.width), bytes}, wanted);
  return rows;
}

GstVideoInfo agreed_info(GstPad* pad) {
  GstVideoInfo info{};
  GstCaps* caps = gst_pad_get_current_caps(pad);
  EXPECT_TRUE(caps != nullptr && gst_video_info_from_caps(&info, caps));
  gst_clear_caps(&caps);
  return info;
}

TEST(Polarize, GivesTheTransformersFramesWhateverTheSizeAndFormat) {
  VideoSettings settings;
  settings.layout = MosaicLayout(45);
  settings.origin = {1, 0};
  for (const VideoOutputDescription& output : video_output_table) {
    const std::string line = std::string("nerovapolarize layout=45 origin-x=1 threads=2 output=") + output.name;
    const Filter filter(line);
    // Sizes and formats change while it plays; rows of odd widths have gaps.
    for (const auto& [format, width, height] :
         std::vector<std::tuple<GstVideoFormat, int, int>>{{GST_VIDEO_FORMAT_GRAY8, 33, 21},
                                                           {GST_VIDEO_FORMAT_GRAY16_LE, 33, 21},
                                                           {GST_VIDEO_FORMAT_GRAY16_LE, 640, 400}}) {
      const GstVideoInfo input = info_of(format, width, height);
      set_input(filter.get(), input);
      const BufferOwner received(gst_harness_push_and_pull(filter.get(), input_buffer(input)), &gst_buffer_unref);
      ASSERT_TRUE(received);
      const GstVideoInfo agreed = agreed_info(filter->sinkpad);
      EXPECT_STREQ(GST_VIDEO_INFO_NAME(&agreed), output.pixels == VideoPixels::rgb ? "RGB" : "GRAY16_LE");
      EXPECT_EQ(rows_of(received.get(), agreed), expected_rows(input, output.output, settings))
          << output.name << ", " << width << " x " << height;
    }
  }
}

TEST(Polarize, PropertiesServeFromTheNextFrameOn) {
  const Filter filter("nerovapolarize layout=90 output=power");
  const GstVideoInfo input = info_of(GST_VIDEO_FORMAT_GRAY16_LE, 64, 32);
  set_input(filter.get(), input);
  gst_buffer_unref(gst_harness_push_and_pull(filter.get(), input_buffer(input)));
  gst_util_set_object_arg(G_OBJECT(filter->element), "output", "azimuth-picture");
  gst_util_set_object_arg(G_OBJECT(filter->element), "layout", "0");
  g_object_set(filter->element, "bit-depth", 12, "degree-end", 0.25, nullptr);
  const BufferOwner received(gst_harness_push_and_pull(filter.get(), input_buffer(input)), &gst_buffer_unref);
  VideoSettings settings;
  settings.layout = MosaicLayout(0);
  settings.bit_depth = 12;
  settings.degree_end = 0.25;
  EXPECT_EQ(rows_of(received.get(), agreed_info(filter->sinkpad)),
            expected_rows(input, VideoOutput::azimuth_picture, settings));
  gchar* route = nullptr;
  guint64 time = 0;
  g_object_get(filter->element, "route", &route, "frame-time", &time, nullptr);
  EXPECT_STRNE(route, "");
  EXPECT_GT(time, 0U);
  g_free(route);
}

TEST(Polarize, EndsFlushesAndStartsAgain) {
  const Filter filter("nerovapolarize layout=90");
  const GstVideoInfo input = info_of(GST_VIDEO_FORMAT_GRAY8, 32, 32);
  for (int round = 0; round < 2; ++round) {
    set_input(filter.get(), input);
    gst_buffer_unref(gst_harness_push_and_pull(filter.get(), input_buffer(input)));
    gst_harness_push_event(filter.get(), gst_event_new_flush_start());
    EXPECT_EQ(gst_harness_push(filter.get(), input_buffer(input)), GST_FLOW_FLUSHING);
    gst_harness_push_event(filter.get(), gst_event_new_flush_stop(TRUE));
    GstSegment segment;
    gst_segment_init(&segment, GST_FORMAT_TIME);
    gst_harness_push_event(filter.get(), gst_event_new_segment(&segment));
    gst_buffer_unref(gst_harness_push_and_pull(filter.get(), input_buffer(input)));
    gst_element_set_state(filter->element, GST_STATE_NULL);
    gst_harness_play(filter.get());
  }
  set_input(filter.get(), input);
  gst_harness_push_event(filter.get(), gst_event_new_eos());
  EXPECT_EQ(gst_harness_push(filter.get(), input_buffer(input)), GST_FLOW_EOS);
}

TEST(Polarize, SaysWhatIsDoubtfulAndRefusesWhatIsWrong) {
  const GstVideoInfo grey8 = info_of(GST_VIDEO_FORMAT_GRAY8, 32, 32);
  const GstVideoInfo grey16 = info_of(GST_VIDEO_FORMAT_GRAY16_LE, 32, 32);
  const struct {
    const char* properties;
    const GstVideoInfo& input;
    GstMessageType type;
    const char* words;  ///< NULL where nothing is said
    unsigned shift = 0;
  } cases[] = {
      {"layout=90", grey8, GST_MESSAGE_WARNING, nullptr},
      {"", grey8, GST_MESSAGE_WARNING, "Layout 90 is assumed"},
      {"layout=90", grey16, GST_MESSAGE_WARNING, "set bit-depth"},
      {"layout=90 bit-depth=8", grey16, GST_MESSAGE_WARNING, "more than 8 bits hold"},
      {"layout=90 bit-depth=12", grey16, GST_MESSAGE_WARNING, nullptr},
      {"layout=90 bit-depth=12", grey8, GST_MESSAGE_ERROR, "bit depth 12"},
      {"layout=90", grey16, GST_MESSAGE_WARNING, "set bit-depth=12 left-aligned=true", 4},
  };
  for (const auto& example : cases) {
    SCOPED_TRACE(example.properties);
    Filter filter(std::string("nerovapolarize ") + example.properties);
    set_input(filter.get(), example.input);
    const GstFlowReturn flow = gst_harness_push(filter.get(), input_buffer(example.input, example.shift));
    EXPECT_EQ(flow, example.type == GST_MESSAGE_ERROR ? GST_FLOW_ERROR : GST_FLOW_OK);
    const std::string text = filter.next_message(example.type);
    if (example.words == nullptr) {
      EXPECT_EQ(text, "");
    } else {
      EXPECT_NE(text.find(example.words), std::string::npos) << text;
    }
  }
  for (const char* const line :
       {"nerovapolarize layout=91", "nerovapolarize output=angles", "nerovapolarize style=x"}) {
    GError* error = nullptr;
    GstElement* element = gst_parse_launch(line, &error);
    EXPECT_NE(error, nullptr) << line;
    g_clear_error(&error);
    gst_clear_object(&element);
  }
}

TEST(Polarize, MissingCalibrationEndsTheStart) {
  for (const char* const name : {"nerovapolarize", "nerovapolarizedemux"}) {
    GstElement* element = gst_element_factory_make(name, nullptr);
    GstBus* const bus = gst_bus_new();
    gst_element_set_bus(element, bus);
    g_object_set(element, "calibration", "/nowhere/camera.json", nullptr);
    EXPECT_EQ(gst_element_set_state(element, GST_STATE_PAUSED), GST_STATE_CHANGE_FAILURE);
    EXPECT_NE(message_of(bus, GST_MESSAGE_ERROR).find("calibration"), std::string::npos);
    gst_element_set_bus(element, nullptr);
    gst_element_set_state(element, GST_STATE_NULL);
    gst_object_unref(bus);
    gst_object_unref(element);
  }
}

/** The demultiplexer with a receiver for each named output. */
class Demux {
 public:
  Demux() : element(gst_element_factory_make("nerovapolarizedemux", nullptr)) {
    gst_util_set_object_arg(G_OBJECT(element), "layout", "90");
    input.reset(gst_harness_new_with_element(element, "sink", nullptr));
  }
  ~Demux() {
    outputs.clear();
    input.reset();
    gst_object_unref(element);
  }

  GstHarness* want(const char* output) {
    outputs.emplace_back(gst_harness_new_with_element(element, nullptr, output), &gst_harness_teardown);
    return outputs.back().get();
  }

  GstElement* element;
  Harness input{nullptr, &gst_harness_teardown};
  std::vector<Harness> outputs;
};

TEST(PolarizeDemux, GivesEveryOutputThatIsRequestedOfOneComputation) {
  Demux demux;
  GstHarness* const power = demux.want("power");
  const GstVideoInfo grey8 = info_of(GST_VIDEO_FORMAT_GRAY8, 33, 21);
  const auto check = [](GstHarness* receiver, const GstVideoInfo& input, VideoOutput output) {
    const BufferOwner received(gst_harness_pull(receiver), &gst_buffer_unref);
    ASSERT_TRUE(received);
    EXPECT_EQ(GST_BUFFER_PTS(received.get()), 7 * GST_SECOND);
    EXPECT_EQ(rows_of(received.get(), agreed_info(receiver->sinkpad)), expected_rows(input, output, {}));
  };
  const auto push = [&](const GstVideoInfo& input) {
    GstBuffer* const buffer = input_buffer(input);
    GST_BUFFER_PTS(buffer) = 7 * GST_SECOND;
    return gst_harness_push(demux.input.get(), buffer);
  };
  set_input(demux.input.get(), grey8);
  ASSERT_EQ(push(grey8), GST_FLOW_OK);
  check(power, grey8, VideoOutput::power);

  // A pad that is requested later gets the frames from then on, and all follow a change of size.
  GstHarness* const picture = demux.want("azimuth-picture");
  const GstVideoInfo grey16 = info_of(GST_VIDEO_FORMAT_GRAY16_LE, 64, 10);
  for (const GstVideoInfo& input : {grey8, grey16}) {
    set_input(demux.input.get(), input);
    ASSERT_EQ(push(input), GST_FLOW_OK);
    check(power, input, VideoOutput::power);
    check(picture, input, VideoOutput::azimuth_picture);
  }

  // What downstream is too late for is left out there and not elsewhere.
  gst_harness_push_upstream_event(picture, gst_event_new_qos(GST_QOS_TYPE_UNDERFLOW, 2.0, GST_SECOND, 6 * GST_SECOND));
  ASSERT_EQ(push(grey16), GST_FLOW_OK);
  check(power, grey16, VideoOutput::power);
  EXPECT_EQ(gst_harness_try_pull(picture), nullptr);

  gst_harness_push_event(demux.input.get(), gst_event_new_eos());
  for (GstHarness* const receiver : {power, picture}) {
    bool ended = false;
    while (GstEvent* const event = gst_harness_try_pull_event(receiver)) {
      ended = ended || GST_EVENT_TYPE(event) == GST_EVENT_EOS;
      gst_event_unref(event);
    }
    EXPECT_TRUE(ended);
  }
}

}  // namespace
}  // namespace nerova_zel::test
