// Frames of streams against one call of the library on the same samples, bit for bit: gaps between rows, samples of one
// byte, shifted ones, strips, threads.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "failure.h"
#include "support/frame_images.h"
#include "video/video_transformer.h"

namespace nerova_zel::test {
namespace {

/** What one call makes of samples that are already as the library wants them. */
struct Expected {
  Expected(const Library& library, const std::vector<std::uint16_t>& samples, const VideoSettings& settings,
           FrameSize size, int bit_depth)
      : images(samples.size()) {
    Frame frame;
    frame.pixels = samples;
    frame.width = size.width;
    frame.height = size.height;
    frame.origin_x = settings.origin.x;
    frame.origin_y = settings.origin.y;
    frame.phase = static_cast<Phase>(settings.layout.phase());
    frame.bit_depth = bit_depth;
    Outputs outputs;
    outputs.total_power = images.others[0];
    outputs.horizontal_vertical = images.others[1];
    outputs.diagonal = images.others[2];
    outputs.azimuth = images.others[3];
    outputs.degree_of_linear_polarization = images.others[4];
    outputs.output_maximum = static_cast<std::uint16_t>(settings.output_maximum);
    library.transform(frame, outputs);
    const AzimuthColours colours(settings.style, {settings.output_maximum, settings.degree_end, settings.power_end});
    picture.resize(3 * samples.size());
    colours.paint(images.others[3].data(), images.others[4].data(), images.others[0].data(), samples.size(),
                  picture.data());
  }

  FrameImages images;
  std::vector<std::uint8_t> picture;
};

/** Bytes between the rows of all images, which nothing may touch. */
constexpr std::uint8_t untouched = 0xA5;

struct Received {
  Received(FrameSize size, std::size_t gap) : rows(static_cast<std::size_t>(size.height)) {
    for (const VideoOutputDescription& output : video_output_table) {
      const auto i = static_cast<std::size_t>(output.output);
      row_bytes[i] = bytes_per_pixel(output.pixels) * static_cast<std::size_t>(size.width);
      strides[i] = row_bytes[i] + gap;
      bytes[i].assign(strides[i] * rows, untouched);
    }
  }

  VideoPictures pictures(unsigned wanted) {
    VideoPictures all{};
    for (std::size_t i = 0; i < all.size(); ++i) {
      if ((wanted >> i & 1U) != 0) {
        all[i] = {bytes[i].data(), strides[i]};
      }
    }
    return all;
  }

  /** Whether the output is those values, and all else untouched. */
  bool holds(std::size_t output, const void* values) const {
    for (std::size_t y = 0; y < rows; ++y) {
      const std::uint8_t* const row = &bytes[output][strides[output] * y];
      if (std::memcmp(row, static_cast<const std::uint8_t*>(values) + row_bytes[output] * y, row_bytes[output]) != 0 ||
          !std::all_of(row + row_bytes[output], row + strides[output], [](auto byte) { return byte == untouched; })) {
        return false;
      }
    }
    return true;
  }

  std::size_t rows;
  std::array<std::vector<std::uint8_t>, video_output_table.size()> bytes;
  std::array<std::size_t, video_output_table.size()> row_bytes{}, strides{};
};

struct Camera {
  int bytes_per_sample;
  int bit_depth;  ///< as set
  bool left_aligned;
  std::size_t gap;
};

TEST(Video, FramesAreThoseOfOneCall) {
  const std::array<Camera, 5> cameras = {
      {{2, 12, false, 0}, {2, 12, false, 6}, {2, 12, true, 0}, {1, 0, false, 0}, {1, 0, false, 3}}};
  unsigned number = 0;
  for (const char* const path : {NEROVA_TESTED_LIBRARIES}) {
    const Library library(path);
    for (const FrameSize size : {FrameSize{2, 2}, {3, 3}, {65, 2}, {7, 5}, {640, 399}, {2049, 131}}) {
      const std::vector<std::uint16_t> raw =
          mixed_samples(static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height));
      for (const Camera& camera : cameras) {
        VideoSettings settings;
        settings.layout = MosaicLayout(mosaic_layouts[++number % 4]);
        settings.origin = {static_cast<int>(number % 2), static_cast<int>(number % 3)};
        settings.bit_depth = camera.bit_depth;
        settings.left_aligned = camera.left_aligned;
        settings.output_maximum = number % 2 == 0 ? 65535 : 4095;
        settings.style = azimuth_styles[number % 4].style;
        settings.threads = 1 + static_cast<int>(number % 3);
        VideoTransformer transformer(settings, path);

        const auto width = static_cast<std::size_t>(size.width);
        const auto sample_bytes = static_cast<std::size_t>(camera.bytes_per_sample);
        const std::size_t stride = width * sample_bytes + camera.gap;
        std::vector<std::uint8_t> memory(stride * static_cast<std::size_t>(size.height), untouched);
        std::vector<std::uint16_t> samples = raw;
        for (std::size_t i = 0; i < samples.size(); ++i) {
          std::uint8_t* const at = &memory[stride * (i / width) + sample_bytes * (i % width)];
          if (camera.bytes_per_sample == 1) {
            samples[i] = static_cast<std::uint16_t>(raw[i] % 256);
            *at = static_cast<std::uint8_t>(samples[i]);
          } else {
            const auto stored = static_cast<std::uint16_t>(raw[i] << (camera.left_aligned ? 4 : 0));
            std::memcpy(at, &stored, sizeof(stored));
          }
        }
        const Expected expected(library, samples, settings, size, camera.bytes_per_sample == 1 ? 8 : 12);
        const VideoFrame frame{size, memory.data(), stride, camera.bytes_per_sample};
        for (const unsigned wanted : {0x7FU, 0x1FU, 1U << number % 6}) {
          Received received(size, camera.gap);
          transformer.transform(frame, received.pictures(wanted));
          for (std::size_t output = 0; output < 6; ++output) {
            const void* const values =
                output == 5 ? static_cast<const void*>(expected.picture.data()) : expected.images.others[output].data();
            EXPECT_EQ(received.holds(output, values), (wanted >> output & 1U) != 0)
                << size.width << " x " << size.height << ", case " << number << ", output " << output;
          }
        }
      }
    }
  }
}

TEST(Video, CalibratedFramesLoseTheirDarkLevel) {
  const FrameSize size{64, 34};
  const std::vector<std::uint16_t> raw = mixed_samples(std::size_t{64} * 34);
  VideoSettings settings;
  settings.bit_depth = 12;
  settings.origin = {1, 1};
  settings.calibration = CameraCalibration{Library(NEROVA_LIBRARY).calibration(), {100.0, 200.0, 300.0, 400.0}, 12};
  VideoTransformer transformer(settings, NEROVA_LIBRARY);
  std::vector<std::uint16_t> samples(raw.size());
  without_dark_level(raw.data(), size, {settings.layout, settings.origin, 12}, *settings.calibration, samples.data());
  const Expected expected(Library(NEROVA_LIBRARY), samples, settings, size, 12);
  Received received(size, 0);
  transformer.transform({size, reinterpret_cast<const std::uint8_t*>(raw.data()), 128, 2}, received.pictures(0x1F));
  for (std::size_t output = 0; output < 5; ++output) {
    EXPECT_TRUE(received.holds(output, expected.images.others[output].data())) << output;
  }
}

TEST(Video, ColoursAreComputedAloneAndStayWhereTheyAre) {
  const FrameSize size{37, 26};
  const std::vector<std::uint16_t> raw = mixed_samples(std::size_t{37} * 26);
  VideoSettings settings;
  settings.bit_depth = 12;
  settings.origin = {3, 1};
  settings.colour = ColourPattern::gbrg;
  const ColourMosaic mosaic(*settings.colour, settings.origin, size);
  Received received(size, 2);
  VideoTransformer(settings, NEROVA_LIBRARY)
      .transform({size, reinterpret_cast<const std::uint8_t*>(raw.data()), 74, 2}, received.pictures(0x7F));
  for (const ColourPlane plane : colour_planes) {
    const FrameSize plane_size = mosaic.plane_size(plane);
    std::vector<std::uint16_t> samples;
    for (int y = 0; y < plane_size.height; ++y) {
      for (int x = 0; x < plane_size.width; ++x) {
        const Origin at = mosaic.frame_pixel(plane, x, y);
        samples.push_back(*(raw.begin() + std::ptrdiff_t{at.y} * size.width + at.x));
      }
    }
    VideoSettings alone = settings;
    alone.origin = mosaic.plane_origin(plane);
    const Expected expected(Library(NEROVA_LIBRARY), samples, alone, plane_size, 12);
    for (std::size_t output = 0; output < 6; ++output) {
      const std::size_t bytes = output == 5 ? 3 : 2;
      const auto* const values = output == 5
                                     ? expected.picture.data()
                                     : reinterpret_cast<const std::uint8_t*>(expected.images.others[output].data());
      for (std::size_t i = 0; i < samples.size(); ++i) {
        const auto width = static_cast<std::size_t>(plane_size.width);
        const Origin at = mosaic.frame_pixel(plane, static_cast<int>(i % width), static_cast<int>(i / width));
        const std::uint8_t* const pixel =
            &received.bytes[output][received.strides[output] * static_cast<std::size_t>(at.y) +
                                    bytes * static_cast<std::size_t>(at.x)];
        ASSERT_EQ(std::memcmp(pixel, values + bytes * i, bytes), 0) << output << " at " << at.x << ", " << at.y;
      }
    }
  }
}

TEST(Video, PanelsShowTheirImageAndWhatIsSaturated) {
  const FrameSize size{5, 5};
  // Super-pixels without polarization: full scale, half, none and one with a saturated sample.
  const std::uint8_t raw[] = {255, 255, 128, 128, 9,  //
                              255, 255, 128, 128, 9,  //
                              0,   0,   100, 255, 9,  //
                              0,   0,   100, 100, 9,  //
                              9,   9,   9,   9,   9};
  VideoTransformer transformer(VideoSettings{}, NEROVA_LIBRARY);
  Received received(size, 1);
  const auto panels = static_cast<std::size_t>(VideoOutput::panels);
  transformer.transform({size, raw, 5, 1}, received.pictures(1U << panels));
  const auto pixel = [&](std::size_t x, std::size_t y) {
    const std::uint8_t* const at = &received.bytes[panels][received.strides[panels] * y + 3 * x];
    return std::array<int, 3>{at[0], at[1], at[2]};
  };
  using Colour = std::array<int, 3>;
  EXPECT_EQ(pixel(0, 0), (Colour{255, 255, 255}));  // power is twice full scale
  EXPECT_EQ(pixel(0, 1), (Colour{0, 0, 0}));
  EXPECT_EQ(pixel(2, 0), (Colour{0, 0, 0}));  // no degree, so that the dark style shows no angle
  EXPECT_EQ(pixel(0, 2), (Colour{0, 0, 0}));  // the degree
  EXPECT_EQ(pixel(2, 2), (Colour{255, 0, 0}));
  EXPECT_EQ(pixel(3, 2), (Colour{128, 128, 128}));
  EXPECT_EQ(pixel(2, 3), (Colour{0, 0, 0}));
  EXPECT_EQ(pixel(3, 3), (Colour{255, 0, 0}));
  for (std::size_t i = 0; i < 5; ++i) {
    EXPECT_EQ(pixel(4, i), (Colour{0, 0, 0}));
    EXPECT_EQ(pixel(i, 4), (Colour{0, 0, 0}));
  }
}

// Rows of panels are painted in parts; a wide frame has several.
TEST(Video, PanelsHoldEverySecondPixel) {
  const FrameSize size{1100, 4};
  const std::vector<std::uint16_t> raw = mixed_samples(std::size_t{1100} * 4);
  VideoSettings settings;
  settings.bit_depth = 12;
  Received received(size, 0);
  const auto panels = static_cast<std::size_t>(VideoOutput::panels);
  VideoTransformer(settings, NEROVA_LIBRARY)
      .transform({size, reinterpret_cast<const std::uint8_t*>(raw.data()), 2200, 2}, received.pictures(1U << panels));
  const Expected expected(Library(NEROVA_LIBRARY), raw, settings, size, 12);
  for (std::size_t i = 0; i < 1100; ++i) {
    const std::size_t row = i / 550;
    const std::size_t column = i % 550;
    const std::size_t from = 2 * (1100 * row + column);
    const std::uint8_t* const upper = &received.bytes[panels][received.strides[panels] * row + 3 * column];
    const std::uint8_t* const lower = upper + 2 * received.strides[panels];
    ASSERT_NEAR(upper[1], expected.images.others[0][from] * 255.0 / 65535, 0.51) << i;
    ASSERT_EQ(std::memcmp(upper + std::size_t{3} * 550, &expected.picture[3 * from], 3), 0) << i;
    ASSERT_NEAR(lower[1], expected.images.others[4][from] * 255.0 / 65535, 0.51) << i;
    const int brightest = std::max({raw[from], raw[from + 1], raw[from + 1100], raw[from + 1101]});
    ASSERT_NEAR(lower[3 * 550 + 1], brightest < 4095 ? brightest * 255.0 / 4095 : 0.0, 0.51) << i;
  }
}

TEST(Video, FramesThatDoNotSuitAreRefusedAndNothingIsWritten) {
  VideoSettings settings;
  settings.bit_depth = 12;
  VideoTransformer transformer(settings, NEROVA_LIBRARY);
  const std::vector<std::uint8_t> raw(64);
  Received received({4, 4}, 0);
  EXPECT_THROW(transformer.transform({{4, 4}, raw.data(), 4, 1}, received.pictures(0x7F)), Failure);
  EXPECT_THROW(transformer.transform({{1, 4}, raw.data(), 2, 2}, received.pictures(0x7F)), Failure);
  for (const auto& bytes : received.bytes) {
    EXPECT_TRUE(std::all_of(bytes.begin(), bytes.end(), [](auto byte) { return byte == untouched; }));
  }
}

}  // namespace
}  // namespace nerova_zel::test
