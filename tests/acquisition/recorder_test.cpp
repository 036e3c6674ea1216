// Recordings of a camera that speaks GigE Vision on the loopback interface.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "failure.h"
#include "recorder.h"
#include "served_camera.h"

namespace nerova_zel::test {
namespace {

namespace fs = std::filesystem;

std::string content(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

class Recorder : public testing::Test {
 protected:
  Recorder() : folder_(fs::path(testing::TempDir()) / "recorder_test") {
    fs::remove_all(folder_);
    fs::create_directories(folder_);
    camera_ = std::make_unique<ServedCamera>(folder_.string());
    request_.file = (folder_ / "recording.raw").string();
  }
  ~Recorder() override {
    camera_.reset();
    fs::remove_all(folder_);
  }

  static Recording record_with(const RecordingRequest& request, const RecordingObserver& observer = {},
                               const CameraChoices& choices = {}) {
    Camera camera(ServedCamera::address, choices);
    return record(camera, request, observer);
  }

  /** Whether the file holds frames of the camera, one after the other, and the description is theirs. */
  void check_recording(std::uint64_t frames, PixelFormat format) const {
    const Recording recording = parse_recording(content(request_.file + recording_ending), "description");
    EXPECT_EQ(recording.frames, frames);
    EXPECT_EQ(recording.format, format);
    EXPECT_EQ(recording.size.width, 512);
    EXPECT_EQ(recording.timestamps_ns.size(), frames);
    const std::string file = content(request_.file);
    const std::size_t frame = byte_count(format, 512 * 512);
    ASSERT_EQ(file.size(), frames * frame);
    std::uint32_t first = 0;
    std::memcpy(&first, file.data(), sizeof(first));
    std::uint64_t lost = 0;
    for (std::size_t i = 0; i < frames; ++i) {
      std::uint32_t number = 0;
      std::memcpy(&number, &file[i * frame], sizeof(number));
      const std::vector<unsigned char> sent = ServedCamera::frame_bytes(number, frame);
      EXPECT_EQ(std::memcmp(sent.data(), &file[i * frame], frame), 0) << i;
      lost = number - first - i;
    }
    EXPECT_EQ(lost, recording.dropped_frames + recording.incomplete_frames);
  }

  fs::path folder_;
  std::unique_ptr<ServedCamera> camera_;
  RecordingRequest request_;
};

TEST_F(Recorder, KeepsTheFramesOfEveryFormat) {
  EXPECT_FALSE(list_cameras().empty());
  request_.frames = 3;
  request_.replace = true;
  request_.layout = MosaicLayout(135);
  for (const auto& [name, format] : {std::pair<const char*, PixelFormat>{"Mono8", PixelFormat::mono8},
                                     {"Mono16", PixelFormat::mono16},
                                     {"Mono10p", PixelFormat::mono10p},
                                     {"Mono12p", PixelFormat::mono12p},
                                     {"Mono10Packed", PixelFormat::mono10_packed},
                                     {"Mono12Packed", PixelFormat::mono12_packed},
                                     // Known by its number only, and by its name only.
                                     {"PolarizedMono", PixelFormat::mono12p},
                                     {"BayerRGPolarized12p", PixelFormat::mono12p}}) {
    SCOPED_TRACE(name);
    const Recording recording = record_with(request_, {}, {name, 2000.0, std::nullopt, std::nullopt});
    EXPECT_EQ(recording.layout.phase(), MosaicLayout(135).phase());
    EXPECT_EQ(recording.exposure_us, 2000.0);
    EXPECT_EQ(recording.colour.has_value(), name[0] == 'B');
    check_recording(3, format);
  }
}

TEST_F(Recorder, EndsWhenItIsToldWithAValidFile) {
  int told = 0;
  RecordingObserver observer;
  observer.frame = [&](const Recording& recording) { told = static_cast<int>(recording.frames); };
  observer.stop = [&] { return told == 4; };
  record_with(request_, observer);
  check_recording(4, PixelFormat::mono8);
  EXPECT_THROW(record_with(request_), Failure);  // the file is there, and stays
  check_recording(4, PixelFormat::mono8);
}

TEST_F(Recorder, KeepsWhatCameBeforeTheCameraWasGone) {
  request_.patience = std::chrono::milliseconds(2000);
  RecordingObserver observer;
  observer.frame = [&](const Recording& recording) {
    if (recording.frames == 2) {
      camera_->end();
    }
  };
  EXPECT_THROW(record_with(request_, observer), Failure);
  const Recording recording = parse_recording(content(request_.file + recording_ending), "description");
  EXPECT_GE(recording.frames, 2U);
  check_recording(recording.frames, PixelFormat::mono8);
}

TEST_F(Recorder, RefusesInOneSentence) {
  request_.frames = 1;
  EXPECT_THROW(Camera("192.0.2.1", {}), Failure);
  EXPECT_THROW(record_with(request_, {}, {"Unheard10", std::nullopt, std::nullopt, std::nullopt}), Failure);
  EXPECT_THROW(record_with(request_, {}, {"Mono13", std::nullopt, std::nullopt, std::nullopt}), Failure);
  EXPECT_FALSE(fs::exists(request_.file));
  request_.replace = true;
  const CameraChoices known{"Mono8", std::nullopt, std::nullopt, std::nullopt};
  for (const std::string place : {"/dev/full", "/nowhere/recording.raw"}) {
    request_.file = place;
    EXPECT_THROW(record_with(request_, {}, known), Failure);
  }
  EXPECT_TRUE(fs::exists("/dev/full"));
}

// A limit on the size of files stands in for a full disk.
TEST_F(Recorder, KeepsWholeFramesWhereTheDiskIsFullAndEarlierFilesWhereNoneCame) {
  request_.frames = 5;
  request_.replace = true;
  const CameraChoices choices{"Mono8", std::nullopt, std::nullopt, std::nullopt};
  const auto record_with_room = [&](double frames) {
    signal(SIGXFSZ, SIG_IGN);
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    const rlimit room{static_cast<rlim_t>(frames * 512 * 512), before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &room);
    EXPECT_THROW(record_with(request_, {}, choices), Failure);
    setrlimit(RLIMIT_FSIZE, &before);
  };
  record_with_room(2.5);
  check_recording(2, PixelFormat::mono8);
  const std::string earlier = content(request_.file);
  record_with_room(0.5);
  EXPECT_TRUE(content(request_.file) == earlier);
  check_recording(2, PixelFormat::mono8);
}

}  // namespace
}  // namespace nerova_zel::test
