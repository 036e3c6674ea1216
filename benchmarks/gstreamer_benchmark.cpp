// Frames per second of pipelines with the element, beside the same with identity in its place and with videoconvert.
// Prints medians of interleaved rounds, and the time that the element adds to a frame.
#include <gst/app/gstappsrc.h>
#include <gst/gst.h>
#include <gst/video/video.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "video/video_outputs.h"

namespace {

constexpr int width = 2448;
constexpr int height = 2048;
constexpr int rounds = 5;
constexpr auto round_time = std::chrono::milliseconds(240);

/** A pipeline that is fed a frame again and again, copied each time as a camera writes it, and drops what comes out. */
class Pipeline {
 public:
  Pipeline(std::string name, const std::string& element, const char* format, const char* caps_after = nullptr)
      : name_(std::move(name)) {
    const std::string line =
        "appsrc name=source block=true max-buffers=2 format=time caps=video/x-raw,format=" + std::string(format) +
        ",width=2448,height=2048,framerate=0/1 ! " + element + " name=element ! " +
        (caps_after != nullptr ? std::string(caps_after) + " ! " : "") + "fakesink sync=false qos=false";
    pipeline_ = gst_parse_launch(line.c_str(), nullptr);
    source_ = gst_bin_get_by_name(GST_BIN(pipeline_), "source");
    element_ = gst_bin_get_by_name(GST_BIN(pipeline_), "element");
    const std::size_t bytes = std::size_t{width} * height * (format[4] == '8' ? 1 : 2);
    frame_.resize(bytes);
    for (std::size_t i = 0; i < bytes; ++i) {
      // Samples of 12 bits; every pixel has light and an angle of its own.
      frame_[i] = static_cast<std::uint8_t>(i % 2 == 1 && format[4] != '8' ? 1 + i % 14 : i * 7 + i / 511);
    }
    pool_ = gst_buffer_pool_new();
    GstStructure* const config = gst_buffer_pool_get_config(pool_);
    gst_buffer_pool_config_set_params(config, nullptr, static_cast<guint>(bytes), 4, 0);
    gst_buffer_pool_set_config(pool_, config);
    gst_buffer_pool_set_active(pool_, TRUE);
    gst_element_set_state(pipeline_, GST_STATE_PLAYING);
    run();  // memory that is touched for the first time is slower
    rates_.clear();
  }

  ~Pipeline() {
    gst_element_set_state(pipeline_, GST_STATE_NULL);
    gst_buffer_pool_set_active(pool_, FALSE);
    gst_object_unref(pool_);
    gst_object_unref(element_);
    gst_object_unref(source_);
    gst_object_unref(pipeline_);
  }
  Pipeline(const Pipeline&) = delete;
  Pipeline& operator=(const Pipeline&) = delete;

  void run() {
    const auto start = std::chrono::steady_clock::now();
    auto now = start;
    int frames = 0;
    for (; now - start < round_time; now = std::chrono::steady_clock::now(), ++frames) {
      GstBuffer* buffer = nullptr;
      gst_buffer_pool_acquire_buffer(pool_, &buffer, nullptr);
      gst_buffer_fill(buffer, 0, frame_.data(), frame_.size());
      GST_BUFFER_PTS(buffer) = time_++;
      gst_app_src_push_buffer(GST_APP_SRC(source_), buffer);
    }
    rates_.push_back(frames / std::chrono::duration<double>(now - start).count());
  }

  double rate() {
    std::sort(rates_.begin(), rates_.end());
    return rates_[rates_.size() / 2];
  }

  /** Milliseconds that the element says it took for the last frame; 0 for others. */
  double frame_time() const {
    guint64 time = 0;
    if (g_object_class_find_property(G_OBJECT_GET_CLASS(element_), "frame-time") != nullptr) {
      g_object_get(element_, "frame-time", &time, nullptr);
    }
    return static_cast<double>(time) / 1e6;
  }

  const std::string& name() const { return name_; }

 private:
  std::string name_;
  GstElement* pipeline_;
  GstElement* source_;
  GstElement* element_;
  GstBufferPool* pool_;
  std::vector<std::uint8_t> frame_;
  GstClockTime time_ = 0;
  std::vector<double> rates_;
};

void compare(const std::vector<Pipeline*>& pipelines) {
  for (int round = 0; round < rounds; ++round) {
    for (Pipeline* const pipeline : pipelines) {
      pipeline->run();
    }
  }
  const double identity = pipelines.front()->rate();
  for (Pipeline* const pipeline : pipelines) {
    const double rate = pipeline->rate();
    std::printf("%-34s %8.1f frames/s %8.0f Mpixel/s  %6.3f of identity  %6.2f ms in the element\n",
                pipeline->name().c_str(), rate, rate * width * height / 1e6, rate / identity, pipeline->frame_time());
  }
}

}  // namespace

int main(int count, char** arguments) {
  gst_init(&count, &arguments);
  gst_registry_scan_path(gst_registry_get(), NEROVA_PLUGIN_DIRECTORY);
  for (const char* const format : {"GRAY16_LE", "GRAY8"}) {
    std::printf("%d x %d, %s\n", width, height, format);
    Pipeline identity("identity", "identity", format);
    Pipeline converter("videoconvert to RGB", "videoconvert", format, "video/x-raw,format=RGB");
    for (const nerova_zel::VideoOutputDescription& output : nerova_zel::video_output_table) {
      const std::string line = std::string("nerovapolarize layout=90 output=") + output.name +
                               (format[4] == '8' ? "" : " bit-depth=12") + " threads=";
      Pipeline one(std::string(output.name) + ", 1 thread", line + "1", format);
      Pipeline two(std::string(output.name) + ", 2 threads", line + "2", format);
      compare({&identity, &converter, &one, &two});
    }
  }
}
