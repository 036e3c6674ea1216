// What files say of themselves, and what makes a reading of them wrong without looking so.
#include "batch/frame_reader.h"
#include "npy_file.h"
#include "png_file.h"
#include "tiff_file.h"
#include "tiff_memory.h"
#include "tool_run.h"

namespace nerova_zel::test {
namespace {

class FrameInputTest : public ToolTest {
 protected:
  static constexpr int width = 16;
  static constexpr int height = 12;

  void write_bytes(const std::string& name, const Bytes& bytes) const { write(name, {bytes.begin(), bytes.end()}); }

  /** A frame of 12 bits, the same for the same seed. */
  static std::vector<std::uint16_t> frame(unsigned seed) {
    std::vector<std::uint16_t> pixels;
    for (unsigned i = 0; i < width * height; ++i) {
      pixels.push_back(static_cast<std::uint16_t>((i * 2654435761U + seed * 40503U) >> 20U));
    }
    return pixels;
  }

  static std::vector<std::uint16_t> shifted(std::vector<std::uint16_t> pixels, unsigned bits) {
    for (std::uint16_t& pixel : pixels) {
      pixel = static_cast<std::uint16_t>(pixel << bits);
    }
    return pixels;
  }

  static ImageView view(const std::vector<std::uint16_t>& pixels) {
    return {Element::uint16, width, height, 1, pixels.data()};
  }

  /** The power that transform writes of a file, as it stands in the output. */
  std::string power_of(const std::string& file, const std::string& options = "") {
    const RunResult result = run("transform " + file + " --layout 90 --outputs power --format npy -o out " + options);
    EXPECT_EQ(result.exit_code, 0) << result.errors;
    errors_ = result.errors;
    return read("out/" + std::filesystem::path(file).stem().string() + "_power.npy");
  }

  /** That of the same pixels in a file that leaves no doubt. */
  std::string expected_power(unsigned seed, int bit_depth = 12) {
    write_pgm("sure.pgm", frame(seed), width, height, bit_depth);
    return power_of("sure.pgm");
  }

  std::string errors_;
};

/** A TIFF file of two pages, the first with an orientation tag. */
Bytes two_pages(const std::vector<std::uint16_t>& first, const std::vector<std::uint16_t>& second, int width,
                int height) {
  Bytes bytes;
  TiffMemory file(bytes);
  for (const auto* pixels : {&first, &second}) {
    TIFFSetField(file.tiff(), TIFFTAG_IMAGEWIDTH, width);
    TIFFSetField(file.tiff(), TIFFTAG_IMAGELENGTH, height);
    TIFFSetField(file.tiff(), TIFFTAG_BITSPERSAMPLE, 16);
    TIFFSetField(file.tiff(), TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
    TIFFSetField(file.tiff(), TIFFTAG_ORIENTATION, ORIENTATION_RIGHTTOP);
    TIFFSetField(file.tiff(), TIFFTAG_MAXSAMPLEVALUE, 4095);
    std::vector<std::uint16_t> copy = *pixels;
    TIFFWriteEncodedStrip(file.tiff(), 0, copy.data(), static_cast<tmsize_t>(2 * copy.size()));
    TIFFWriteDirectory(file.tiff());
  }
  file.close();
  return bytes;
}

TEST_F(FrameInputTest, PagesAreFramesAndPixelsAreAsStored) {
  const std::string first = expected_power(1);
  const std::string second = expected_power(2);
  write_bytes("pages.tiff", two_pages(frame(1), frame(2), width, height));
  const RunResult result = run("transform pages.tiff --layout 90 --outputs power --format npy -o out --jobs 2");
  ASSERT_EQ(result.exit_code, 0) << result.errors;
  EXPECT_EQ(read("out/pages_000000_power.npy"), first);
  EXPECT_EQ(read("out/pages_000001_power.npy"), second);
  const std::size_t note = result.errors.find("orientation tag 6, which is ignored");
  EXPECT_NE(note, std::string::npos) << result.errors;
  EXPECT_EQ(result.errors.find("orientation", note + 30), std::string::npos) << "said once";

  Bytes pgm = encode_pgm(frame(1).data(), width, height, 4095);
  const Bytes another = encode_pgm(frame(2).data(), width, height, 4095);
  pgm.insert(pgm.end(), another.begin(), another.end());
  write_bytes("pages.pgm", pgm);
  std::string npy = npy_header(Element::uint16, {2, height, width});
  for (const unsigned seed : {1U, 2U}) {
    const auto pixels = frame(seed);
    npy.append(reinterpret_cast<const char*>(pixels.data()), 2 * pixels.size());
  }
  write("pages.npy", npy);
  for (const std::string file : {"pages.pgm", "pages.npy"}) {
    ASSERT_EQ(run("transform " + file + " --bit-depth 12 --frames 1: --outputs power --format npy -o part").exit_code,
              0);
    EXPECT_EQ(read("part/pages_000001_power.npy"), second) << file;
    EXPECT_EQ(listing().count("part/pages_000000_power.npy"), 0U) << file;
    std::filesystem::remove_all(path("part"));
  }
  expect_refusal("transform pages.tiff --frames 2:4 -o part", {"pages.tiff holds 2 frames", "--frames"});
  expect_refusal("transform pages.tiff --frames 1:1 -o part", {"--frames 1:1", "A:B"}, 2);
}

TEST_F(FrameInputTest, HeadersStridesAndPartsOfStreams) {
  std::string raw = "HEAD";
  for (const unsigned seed : {1U, 2U, 3U}) {
    const auto pixels = frame(seed);
    for (int y = 0; y < height; ++y) {
      raw.append(reinterpret_cast<const char*>(pixels.data() + y * width), 2 * width);
      raw += "pad";
    }
  }
  write("run.raw", raw);
  const std::string options =
      " --raw 16x12 --pixel-format PolarizeMono12 --header 4 --stride 35 --layout 90 --outputs power --format npy -o "
      "out ";
  ASSERT_EQ(run("transform run.raw --frames 1:3" + options).exit_code, 0);
  ASSERT_EQ(run("transform - --frames 1:2" + options + "< run.raw").exit_code, 0);
  const std::string second = expected_power(2);
  EXPECT_EQ(read("out/run_000001_power.npy"), second);
  EXPECT_EQ(read("out/run_000002_power.npy"), expected_power(3));
  EXPECT_EQ(read("out/stdin_000001_power.npy"), second);
  EXPECT_EQ(listing().count("out/run_000000_power.npy") + listing().count("out/stdin_000002_power.npy"), 0U);
  expect_refusal("transform run.raw --raw 16x12 --stride 35 -o out2", {"--stride", "--pixel-format"}, 2);
  expect_refusal("transform run.raw --stride 35 -o out2", {"--stride", "--raw"}, 2);
}

// Parts of 256 KiB are counted while they come; what changes the frame afterwards must not leave the old counts.
TEST_F(FrameInputTest, PixelsAreCountedAsTheyCome) {
  std::vector<std::uint16_t> pixels(700U * 513U);
  for (std::size_t i = 0; i < pixels.size(); ++i) {
    pixels[i] = static_cast<std::uint16_t>(i * 2654435761U >> 12U & 0x1FFFU);
  }
  write("large.raw", std::string(reinterpret_cast<const char*>(pixels.data()), 2 * pixels.size()));
  FrameInput input;
  input.path = path("large.raw");
  HeaderlessLayout layout;
  layout.size = {700, 513};
  layout.format = PixelFormat::mono16;
  Bytes bytes;
  RawFrame frame;
  read_frame({0, &input, 0}, layout, bytes, frame, {12, false});
  ASSERT_EQ(frame.pixels, pixels);
  ASSERT_TRUE(frame.counted);
  const auto same = [](const PixelCounts& one, const PixelCounts& other) {
    return one.dark == other.dark && one.saturated == other.saturated && one.above == other.above &&
           one.greatest == other.greatest && one.set_bits == other.set_bits;
  };
  for (const int full_scale : {4095, 1023}) {
    EXPECT_TRUE(same(counts_of(frame, full_scale), count_pixels(pixels.data(), pixels.size(), full_scale)));
  }
  crop(frame, {2, 2, {100, 90}}, "frame");
  EXPECT_TRUE(same(counts_of(frame, 4095), count_pixels(frame.pixels.data(), frame.pixels.size(), 4095)));
  read_frame({0, &input, 0}, layout, bytes, frame, {12, true});
  settle_bit_depth(frame, {12, true}, "frame");
  EXPECT_TRUE(same(counts_of(frame, 4095), count_pixels(frame.pixels.data(), frame.pixels.size(), 4095)));
}

// A PNG of 12 bits, as it is, says so by a text, or by sBIT, whose samples are scaled to full depth.
TEST_F(FrameInputTest, BitDepthsThatFilesSay) {
  const std::string expected = expected_power(1);
  ASSERT_EQ(run("simulate s.png --size 16x12 --bit-depth 12").exit_code, 0);
  ASSERT_EQ(run("simulate s.tiff --size 16x12 --bit-depth 12").exit_code, 0);
  ASSERT_EQ(run("simulate s.pgm --size 16x12 --bit-depth 12").exit_code, 0);
  const std::string simulated = power_of("s.pgm");
  EXPECT_EQ(power_of("s.png"), simulated);
  EXPECT_EQ(power_of("s.tiff"), simulated);
  EXPECT_EQ(power_of("s.png", "--bit-depth 14"), power_of("s.pgm", "--bit-depth 14"));

  const auto scaled = shifted(frame(1), 4);
  Bytes png = encode_png(view(scaled));
  const unsigned char sbit[] = {0, 0, 0, 1, 's', 'B', 'I', 'T', 12};
  Bytes chunk(std::begin(sbit), std::end(sbit));
  const std::uint32_t crc = 0xE1679F80;
  for (const unsigned shift : {24U, 16U, 8U, 0U}) {
    chunk.push_back(static_cast<unsigned char>(crc >> shift & 0xFFU));
  }
  png.insert(png.begin() + 33, chunk.begin(), chunk.end());
  write_bytes("sbit.png", png);
  EXPECT_EQ(power_of("sbit.png"), expected);
  EXPECT_EQ(errors_, "");
}

TEST_F(FrameInputTest, DoubtfulBitDepthsAreNoted) {
  write_bytes("right.png", encode_png(view(frame(1))));
  const auto left = shifted(frame(1), 4);
  write_bytes("left.tiff", encode_tiff(view(left)));
  power_of("right.png");
  EXPECT_NE(errors_.find("right.png does not say its bit depth and is taken for 16 bits, but its largest sample is"),
            std::string::npos)
      << errors_;
  EXPECT_NE(errors_.find("--bit-depth 12"), std::string::npos) << errors_;
  power_of("left.tiff");
  EXPECT_NE(errors_.find("--bit-depth 12 --left-aligned"), std::string::npos) << errors_;
  const std::string expected = expected_power(1);
  EXPECT_EQ(power_of("right.png", "--bit-depth 12"), expected);
  EXPECT_EQ(errors_, "");
  EXPECT_EQ(power_of("left.tiff", "--bit-depth 12 --left-aligned"), expected);
  EXPECT_EQ(errors_, "");
}

// Mono12p read as Mono12 where the length happens to fit: 4 frames of 16 x 12 are 3 of Mono12.
TEST_F(FrameInputTest, ManyPixelsBeyondFullScaleFail) {
  std::string packed;
  for (int i = 0; i < 4 * width * height * 3 / 2; ++i) {
    packed.push_back(static_cast<char>(i * 73 + 90));
  }
  write("run.raw", packed);
  const std::string command = "transform run.raw --raw 16x12 --pixel-format Mono12 --layout 90 -o out ";
  const RunResult result = run(command + "--outputs azimuth");
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_NE(result.errors.find("full scale of 12 bits; --bit-depth or --pixel-format is wrong, or --allow-overflow"),
            std::string::npos)
      << result.errors;
  EXPECT_EQ(run(command + "--outputs azimuth --allow-overflow").exit_code, 0);
}

TEST_F(FrameInputTest, CalibrationsServeFramesOfTheirOwnBitDepth) {
  for (const std::string angle : {"0", "45", "90", "135"}) {
    ASSERT_EQ(run("simulate a" + angle + ".png --size 32x32 --source-angle " + angle).exit_code, 0);
  }
  const RunResult calibrated = run(
      "calibrate --frame 0:a0.png --frame 45:a45.png --frame 90:a90.png --frame 135:a135.png --layout 90 -o c.json");
  ASSERT_EQ(calibrated.exit_code, 0) << calibrated.errors;
  EXPECT_EQ(run("transform a0.png --calibration c.json --outputs dolp --layout 90 -o out").exit_code, 0);
  expect_refusal("transform a0.png --calibration c.json --bit-depth 14 --outputs dolp --layout 90 -o out2",
                 {"a0.png has 14 bits", "frames of 12", "--bit-depth"});
}

}  // namespace
}  // namespace nerova_zel::test
