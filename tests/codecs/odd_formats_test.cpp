// Files that others write: what is read of them, and what is refused by which sentence.

#include <gtest/gtest.h>
#include <png.h>
#include <tiff.h>

#include <algorithm>

#include "samples_of_files.h"

namespace nerova_zel::test {
namespace {

/** Samples as they are read: those of less than 8 bits are scaled up. */
std::vector<std::uint16_t> read_values(std::vector<std::uint16_t> samples, int bits) {
  for (std::uint16_t& sample : samples) {
    sample = static_cast<std::uint16_t>(bits < 8 ? sample * 255 / ((1 << bits) - 1) : sample);
  }
  return samples;
}

std::vector<std::uint16_t> samples_of(const FileKind& kind) {
  return noisy_slope(kind.width * kind.channels, kind.height, kind.bits);
}

TEST(OddFormats, PngOfEveryGreyDepthInterlacedOrNot) {
  for (const int bits : {1, 2, 4, 8, 16}) {
    for (const bool interlaced : {false, true}) {
      FileKind kind;
      kind.bits = bits;
      kind.interlaced = interlaced;
      const GreyPage page = page_of(odd_png(kind, samples_of(kind)));
      EXPECT_EQ(page.pixels, read_values(samples_of(kind), bits)) << bits << " bits";
      EXPECT_EQ(page.facts.stored_bits, bits == 16 ? 16 : 8);
      EXPECT_FALSE(page.facts.significant_bits.has_value());
    }
  }
  FileKind kind;
  for (const auto& [bits, significant] : {std::pair{8, 5}, std::pair{16, 12}, std::pair{16, 1}}) {
    kind.bits = bits;
    kind.significant_bits = significant;
    EXPECT_EQ(page_of(odd_png(kind, samples_of(kind))).facts.significant_bits, significant);
  }
}

TEST(OddFormats, TiffOfEveryDepthCompressionAndOrder) {
  for (const int bits : {1, 2, 4, 8, 10, 12, 16}) {
    for (const int compression : {COMPRESSION_NONE, COMPRESSION_LZW, COMPRESSION_PACKBITS, COMPRESSION_ADOBE_DEFLATE}) {
      for (const bool tiled : {false, true}) {
        FileKind kind;
        kind.bits = bits;
        kind.compression = compression;
        kind.tiled = tiled;
        kind.big_endian = tiled == (compression == COMPRESSION_LZW);
        kind.predictor = bits == 16 && compression == COMPRESSION_LZW ? 2 : 1;
        kind.colour = PHOTOMETRIC_MINISBLACK;
        kind.orientation = tiled ? 1 : 0;
        const GreyPage page = page_of(odd_tiff(kind, samples_of(kind)));
        EXPECT_EQ(page.pixels, read_values(samples_of(kind), bits)) << bits << " bits, compression " << compression;
        EXPECT_EQ(page.facts.orientation, 1);
        EXPECT_EQ(page.facts.stored_bits, bits < 8 ? 8 : bits);
      }
    }
  }
}

TEST(OddFormats, TiffWithWhiteAtZeroIsTurnedRound) {
  for (const int bits : {1, 8, 16}) {
    FileKind kind;
    kind.bits = bits;
    kind.colour = PHOTOMETRIC_MINISWHITE;
    std::vector<std::uint16_t> samples = samples_of(kind);
    const GreyPage page = page_of(odd_tiff(kind, samples));
    for (std::uint16_t& sample : samples) {
      sample = static_cast<std::uint16_t>((1 << bits) - 1 - sample);
    }
    EXPECT_EQ(page.pixels, read_values(samples, bits));
  }
}

TEST(OddFormats, TiffPagesAndWhatTheySay) {
  FileKind kind;
  kind.bits = 16;
  kind.colour = PHOTOMETRIC_MINISBLACK;
  kind.orientation = 6;
  kind.greatest = 1023;
  kind.subfile_types = {FILETYPE_PAGE, FILETYPE_REDUCEDIMAGE, 0, FILETYPE_MASK, FILETYPE_PAGE};
  const Bytes file = odd_tiff(kind, samples_of(kind));
  const PictureFile picture(file, "FILE");
  EXPECT_EQ(picture.page_count(), 3U) << "thumbnails and masks are no pages";
  std::vector<std::uint16_t> samples = samples_of(kind);
  for (std::size_t page = 0; page < 3; ++page) {
    EXPECT_EQ(picture.facts(page).orientation, 6);
    EXPECT_EQ(picture.facts(page).greatest, 1023);
    EXPECT_EQ(page_of(file, page).pixels, samples) << "as stored";
    std::rotate(samples.begin(), samples.begin() + 2, samples.end());  // pages 0, 2 and 4 of the file
  }
  EXPECT_THROW(picture.facts(3), std::out_of_range);
}

TEST(OddFormats, TiffSaysAGreatestValueThatItsSamplesCanHave) {
  FileKind kind;
  kind.colour = PHOTOMETRIC_MINISBLACK;
  const auto greatest_of = [&](int bits, int greatest, bool is_number) {
    kind.bits = bits;
    kind.greatest = greatest;
    kind.greatest_is_number = is_number;
    return page_of(odd_tiff(kind, samples_of(kind))).facts.greatest;
  };
  EXPECT_EQ(greatest_of(8, 255, false), 255);
  EXPECT_EQ(greatest_of(8, 256, false), std::nullopt);
  EXPECT_EQ(greatest_of(12, 1000, false), 1000);
  EXPECT_EQ(greatest_of(12, 1000, true), 1000);
}

TEST(OddFormats, WhatIsNotGreyIsRefused) {
  FileKind kind;
  kind.channels = 3;
  kind.colour = PNG_COLOR_TYPE_RGB;
  EXPECT_EQ(error_of_reading(odd_png(kind, samples_of(kind))), "FILE has 3 channels");
  kind.colour = PHOTOMETRIC_RGB;
  EXPECT_EQ(error_of_reading(odd_tiff(kind, samples_of(kind))), "FILE has 3 channels");
  kind.channels = 2;
  kind.colour = PNG_COLOR_TYPE_GRAY_ALPHA;
  EXPECT_EQ(error_of_reading(odd_png(kind, samples_of(kind))), "FILE has 2 channels");
  kind.channels = 1;
  kind.bits = 1;
  kind.colour = PNG_COLOR_TYPE_PALETTE;
  EXPECT_EQ(error_of_reading(odd_png(kind, samples_of(kind))), "FILE has a palette of colours");
  kind.colour = PHOTOMETRIC_PALETTE;
  EXPECT_EQ(error_of_reading(odd_tiff(kind, samples_of(kind))), "FILE has a palette of colours");
  kind.colour = PHOTOMETRIC_MINISBLACK;
  kind.bits = 16;
  kind.format = SAMPLEFORMAT_INT;
  EXPECT_EQ(error_of_reading(odd_tiff(kind, samples_of(kind))), "FILE holds signed or floating-point pixels");
}

}  // namespace
}  // namespace nerova_zel::test
