// A pipeline from a camera that speaks GigE Vision on the loopback interface to a file.
#include <gst/gst.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "served_camera.h"
#include "video/video_transformer.h"

namespace nerova_zel::test {
namespace {

namespace fs = std::filesystem;

/** What the pipeline's end is: "", or the text of the error. */
std::string run(const std::string& line) {
  GError* error = nullptr;
  GstElement* const pipeline = gst_parse_launch(line.c_str(), &error);
  EXPECT_EQ(error, nullptr) << error->message;
  gst_element_set_state(pipeline, GST_STATE_PLAYING);
  GstBus* const bus = gst_element_get_bus(pipeline);
  GstMessage* message = gst_bus_timed_pop_filtered(bus, 60 * GST_SECOND,
                                                   static_cast<GstMessageType>(GST_MESSAGE_EOS | GST_MESSAGE_ERROR));
  std::string text = message == nullptr ? "no end after a minute" : "";
  if (message != nullptr && GST_MESSAGE_TYPE(message) == GST_MESSAGE_ERROR) {
    gst_message_parse_error(message, &error, nullptr);
    text = error->message;
    g_error_free(error);
  }
  gst_clear_message(&message);
  gst_element_set_state(pipeline, GST_STATE_NULL);
  gst_object_unref(bus);
  gst_object_unref(pipeline);
  return text;
}

TEST(Camera, FramesInAPipelineAreTheTransformers) {
  const fs::path folder = fs::path(testing::TempDir()) / "gstreamer_camera_test";
  fs::create_directories(folder);
  ServedCamera camera(folder.string());
  camera.repeat_frame();
  const struct {
    const char* format;
    int bytes;
  } formats[] = {{"GRAY8", 1}, {"GRAY16_LE", 2}};
  for (const auto& format : formats) {
    const std::vector<unsigned char> sent =
        ServedCamera::frame_bytes(0, 512U * 512U * static_cast<unsigned>(format.bytes));
    std::vector<std::uint8_t> expected(3 * 512 * 512);
    VideoPictures wanted{};
    wanted[static_cast<std::size_t>(VideoOutput::azimuth_picture)] = {expected.data(), 3 * 512};
    VideoTransformer(VideoSettings{}, NEROVA_LIBRARY)
        .transform({{512, 512}, sent.data(), 512U * static_cast<unsigned>(format.bytes), format.bytes}, wanted);

    const std::string file = (folder / "frames").string();
    ASSERT_EQ(run(std::string("aravissrc camera-name=") + ServedCamera::address +
                  " num-buffers=2 ! video/x-raw,format=" + format.format +
                  " ! nerovapolarize layout=90 output=azimuth-picture ! filesink location=" + file),
              "");
    std::ifstream stream(file, std::ios::binary);
    std::vector<std::uint8_t> received{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    std::vector<std::uint8_t> twice = expected;
    twice.insert(twice.end(), expected.begin(), expected.end());
    EXPECT_TRUE(received == twice) << format.format;
  }
  fs::remove_all(folder);
}

}  // namespace
}  // namespace nerova_zel::test
