// Frames computed in bands against the same in one call, bit for bit: whatever the size, the bands and the route.
#include <gtest/gtest.h>

#include <cstring>
#include <mutex>
#include <set>
#include <thread>

#include "processor/bands.h"
#include "processor/frame_images.h"
#include "processor/library.h"
#include "statistics/frame_statistics.h"
#include "support/frame_images.h"

namespace nerova_zel::test {
namespace {

/** Frames are of different depths, phases and origins, so that they take different kernels. */
Frame banded_frame(const std::vector<std::uint16_t>& samples, int width, int height, int number) {
  Frame frame;
  frame.pixels = samples;
  frame.width = width;
  frame.height = height;
  frame.origin_x = (number + 1) % 3 - 1;
  frame.origin_y = number % 2;
  frame.phase = static_cast<Phase>(number % 4);
  frame.bit_depth = 12;
  return frame;
}

Outputs outputs_of(FrameImages& images, int number) {
  const auto room = [&](unsigned output) {
    return number % 7 == static_cast<int>(output) ? Buffer<std::uint16_t>()
                                                  : Buffer<std::uint16_t>(images.others[output]);
  };
  return {number % 5 == 4 ? Buffer<float>() : Buffer<float>(images.stokes), room(0), room(1), room(2), room(3), room(4),
          static_cast<std::uint16_t>(number % 2 == 0 ? 65535 : 4095)};
}

TEST(Bands, GiveTheBitsOfOneCall) {
  Calibration matrices{};
  for (std::size_t i = 0; i < 64; ++i) {
    matrices[i / 16][i % 16] = static_cast<float>(i % 7) * 0.25F - 0.5F;
  }
  int number = 0;
  for (const char* const path : {NEROVA_TESTED_LIBRARIES}) {
    Library library(path);
    const Calibration ideal = library.calibration();
    for (const int width : {2, 3, 4, 7, 8, 9, 64, 65, 131}) {
      for (const int height : {2, 3, 4, 5, 6, 7, 8, 9, 17, 34}) {
        const std::vector<std::uint16_t> samples = mixed_samples(static_cast<std::size_t>(width * height));
        for (const int bands : {2, 3, 5, 100}) {
          library.set_calibration(++number % 3 == 0 ? matrices : ideal);
          const Frame frame = banded_frame(samples, width, height, number);
          FrameImages whole(samples.size());
          FrameImages banded(samples.size());
          library.transform(frame, outputs_of(whole, number));
          transform_in_bands([&](const Frame& rows, const Outputs& images) { library.transform(rows, images); }, frame,
                             outputs_of(banded, number), bands);
          ASSERT_TRUE(banded == whole) << width << " x " << height << " in " << bands << ", case " << number;
        }
      }
    }
  }
}

/** What is computed beside the library's images, by threads or without. */
struct OtherImages {
  explicit OtherImages(std::size_t pixels) : s0(pixels), s1(pixels), s2(pixels), angle(pixels) {}
  ImageBuffers buffers(const Outputs& library) { return {library, {s0.data(), s1.data(), s2.data()}, angle.data()}; }
  bool operator==(const OtherImages& other) const {
    const auto same = [](const std::vector<float>& a, const std::vector<float>& b) {
      return std::memcmp(a.data(), b.data(), a.size() * sizeof(float)) == 0;
    };
    return same(s0, other.s0) && same(s1, other.s1) && same(s2, other.s2) && same(angle, other.angle);
  }

  std::vector<float> s0, s1, s2, angle;
};

// Without room for pairs they are computed in steps of rows, and statistics always are.
TEST(Bands, OtherImagesAndStatisticsAreThoseOfTheWholeFrame) {
  for (const char* const path : {NEROVA_TESTED_LIBRARIES}) {
    const Library library(path);
    const auto transform = [&](const Frame& rows, const Outputs& outputs) { library.transform(rows, outputs); };
    int number = 0;
    for (const auto& [width, height] : std::vector<std::pair<int, int>>{
             {3, 2}, {64, 3}, {65, 16}, {2, 17}, {64, 18}, {65, 33}, {64, 35}, {2049, 130}, {1024, 261}}) {
      const std::vector<std::uint16_t> samples = mixed_samples(static_cast<std::size_t>(width * height));
      const Frame frame =
          banded_frame(samples, width, height, ++number * 6);  // at an origin that other images can have
      FrameImages images(samples.size());
      OtherImages whole(samples.size());
      compute_images(transform, library.calibration(), frame, whole.buffers(outputs_of(images, 0)), 1);
      OtherImages alone(samples.size());
      compute_images(transform, library.calibration(), frame, alone.buffers({}), 3);
      EXPECT_TRUE(alone == whole) << width << " x " << height;
      OtherImages banded(samples.size());
      compute_images(transform, library.calibration(), frame, banded.buffers(outputs_of(images, 0)), 3);
      EXPECT_TRUE(banded == whole) << width << " x " << height;

      OutputImages outputs(statistics_outputs());
      outputs.allocate(width, height);
      library.transform(frame, outputs.buffers(65535).library);
      for (const StatisticsWeight weight : {StatisticsWeight::equal, StatisticsWeight::power}) {
        const StatisticsSums kept = sum_up({width, height, 12, 16, samples}, 4095, outputs, 65535, weight);
        const StatisticsSums passed = statistics_of(transform, frame, weight, 1 + number % 3);
        EXPECT_EQ(std::memcmp(&kept, &passed, sizeof(kept)), 0) << width << " x " << height;
      }
    }
  }
}

TEST(Bands, RunOnThreadsOfTheirOwnAndStartAtEvenRows) {
  const std::vector<std::uint16_t> samples = mixed_samples(1024 * 257);
  FrameImages images(samples.size());
  std::mutex mutex;
  std::set<std::thread::id> threads;
  const auto transform = [&](const Frame& rows, const Outputs&) {
    const std::lock_guard<std::mutex> lock(mutex);
    threads.insert(std::this_thread::get_id());
    EXPECT_EQ((rows.pixels.data() - samples.data()) % 2048, 0);
  };
  transform_in_bands(transform, banded_frame(samples, 1024, 257, 0), outputs_of(images, 0),
                     bands_worth_a_thread(1024, 257, 8));
  EXPECT_EQ(threads.size(), 4U);
  EXPECT_EQ(bands_worth_a_thread(640, 64, 8), 1);
  EXPECT_EQ(bands_worth_a_thread(640, 6400, 0), 1);
}

TEST(Bands, WriteNothingThatIsRefusedAndPassFailuresOn) {
  const Library library(NEROVA_LIBRARY);
  const auto transform = [&](const Frame& rows, const Outputs& outputs) { library.transform(rows, outputs); };
  const std::vector<std::uint16_t> samples = mixed_samples(64 * 32);
  const Frame frame = banded_frame(samples, 64, 32, 0);
  FrameImages images(samples.size());
  const FrameImages untouched = images;
  // Addresses that are equal at the frame's start differ in later bands.
  Outputs equal = outputs_of(images, 0);
  equal.azimuth = reinterpret_cast<std::uint16_t*>(images.stokes.data());
  Outputs small = outputs_of(images, 0);
  small.azimuth = Buffer<std::uint16_t>(images.others[3].data(), samples.size() - 1);
  Outputs no_maximum = outputs_of(images, 0);
  no_maximum.output_maximum = 0;
  for (const Outputs& outputs : {equal, small, no_maximum, Outputs{}}) {
    EXPECT_ANY_THROW(transform_in_bands(transform, frame, outputs, 4));
    EXPECT_TRUE(images == untouched);
  }
  const auto last_fails = [&](const Frame& rows, const Outputs&) {
    if (rows.pixels.data() >= samples.data() + 64 * 24) {
      throw std::runtime_error("the last band");
    }
  };
  EXPECT_THROW(transform_in_bands(last_fails, frame, outputs_of(images, 0), 4), std::runtime_error);
}

}  // namespace
}  // namespace nerova_zel::test
