// What the tool refuses: one sentence with the option that would help, and nothing left behind.
#include "png_file.h"
#include "tiff_file.h"
#include "tool_run.h"

namespace nerova_zel::test {
namespace {

class RefusalTest : public ToolTest {
 protected:
  void write_bytes(const std::string& name, const Bytes& bytes) const { write(name, {bytes.begin(), bytes.end()}); }

  void expect_refusal_when_cut(const std::string& name, const std::string& options) const {
    ASSERT_EQ(run("simulate " + name + " --size 90x70 --photons 1000").exit_code, 0);
    const std::string whole = read(name);
    for (const double share : {0.01, 0.7, 0.99}) {
      write(name, whole.substr(0, static_cast<std::size_t>(share * static_cast<double>(whole.size()))));
      expect_refusal("transform " + name + options + " --out results", {name});
    }
  }
};

TEST_F(RefusalTest, FilesThatAreNoFrames) {
  const std::vector<unsigned char> grey(6 * 6 * 3, 7);
  const std::vector<float> light(6 * 6, 1.0F);
  write("empty.png", "");
  write("text.png", "P 5 is not what this says");
  write("header.pgm", "P5\n4 four\n255\n1234567890123456");
  write_bytes("colour.png", encode_png({Element::uint8, 6, 6, 3, grey.data()}));
  write_bytes("float.tiff", encode_tiff({Element::float32, 6, 6, 1, light.data()}));
  write_bytes("narrow.png", encode_png({Element::uint8, 1, 6, 1, grey.data()}));
  write_bytes("again/narrow.png", encode_png({Element::uint8, 1, 6, 1, grey.data()}));
  expect_refusal("transform missing.png --out results", {"missing.png", "No such file"});
  expect_refusal("transform . again --out results", {"narrow.png", "same names", "--out"});
  expect_refusal("transform empty.png --out results", {"empty.png is empty", "PNG, TIFF, PGM or NPY"});
  expect_refusal("transform text.png --out results", {"text.png is not a PNG", "--raw WxH"});
  expect_refusal("transform header.pgm --out results", {"header.pgm", "PGM header", "it should read P5"});
  expect_refusal("transform colour.png --out results", {"colour.png has 3 channels", "single"});
  expect_refusal("transform float.tiff --out results", {"float.tiff", "unsigned"});
  expect_refusal("transform narrow.png --out results", {"narrow.png", "1 x 6", "2 x 2"});
  expect_refusal("transform narrow.png --calibration again", {"again is a directory", "a calibration file is needed"});
}

TEST_F(RefusalTest, FilesCutShort) {
  expect_refusal_when_cut("cut.png", "");
  expect_refusal_when_cut("cut.tiff", "");
  expect_refusal_when_cut("cut.pgm", "");
  expect_refusal_when_cut("cut.raw", " --raw 90x70");
}

TEST_F(RefusalTest, ImpossibleOptions) {
  ASSERT_EQ(run("simulate s.png --size 16x16 --bit-depth 8").exit_code, 0);
  EXPECT_EQ(
      run("transform s.png --bit-depth 8 --output-max 1 --repeat 1 --jobs 1024 --degree-max 1 --out fit").exit_code, 0);
  expect_refusal("", {"subcommand"}, 2);
  expect_refusal("transform", {"FRAME"}, 2);
  expect_refusal("transform s.png --layout 30", {"--layout 30", "0, 45, 90 or 135"});
  expect_refusal("transform s.png --layout up", {"--layout"}, 2);
  expect_refusal("transform s.png --origin 1", {"--origin 1", "0,0"});
  expect_refusal("transform s.png --origin=-1,0", {"--origin -1,0"});
  expect_refusal("transform s.png --raw 4by4", {"--raw 4by4", "2448x2048"});
  expect_refusal("transform s.png --raw 4x4", {"s.png", "16 (8-bit) or 32 (16-bit)"});
  expect_refusal("transform s.png --pixel-format Mono8", {"--pixel-format", "--raw"});
  expect_refusal("transform s.png --raw 4x4 --pixel-format mono8", {"mono8", "Mono12Packed"});
  expect_refusal("transform - --raw 4x4 < s.png", {"standard input", "--pixel-format"});
  expect_refusal("transform - --raw 4x4 --pixel-format Mono8 < /dev/null", {"standard input is empty"});
  expect_refusal("transform s.png --roi 1,2,3", {"--roi 1,2,3", "X,Y,W,H"});
  expect_refusal("transform s.png --roi 0,0,16,1", {"--roi 0,0,16,1", "2 x 2"});
  expect_refusal("transform s.png --roi 1,0,16,16", {"s.png", "16 x 16", "beyond"});
  expect_refusal("transform s.png --jobs 0", {"--jobs 0"});
  expect_refusal("transform '?.tif'", {"?.tif"});
  expect_refusal("transform s.png --bit-depth 0", {"--bit-depth 0", "1 to 16"});
  expect_refusal("transform s.png --bit-depth 9", {"--bit-depth 9", "s.png"});
  expect_refusal("transform s.png --output-max 65536", {"--output-max 65536", "1 to 65535"});
  expect_refusal("transform s.png --outputs azimuth,hue", {"\"hue\"", "azimuth"});
  expect_refusal("transform s.png --format jpg", {"--format jpg", "png, tiff or npy"});
  expect_refusal("transform s.png --repeat 0", {"--repeat 0"});
  expect_refusal("transform s.png --degree-max nan", {"--degree-max"});
  expect_refusal("transform s.png --power-max 0", {"--power-max"});
  expect_refusal("transform s.png --azimuth-style bright", {"--azimuth-style bright", "composite"});
  expect_refusal("transform s.png --library nowhere.so", {"nowhere.so", "--library PATH"});
  expect_refusal("transform s.png --sharpen", {"--sharpen", "see nerova-polarize --help"}, 2);
  expect_refusal("simulate t.gif", {"t.gif", ".png"});
  expect_refusal("simulate t.png --size 1x9", {"--size 1x9"});
  expect_refusal("simulate t.png --size 65536x65536", {"--size 65536x65536", "at most"});
  expect_refusal("simulate t.png --bit-depth 17", {"--bit-depth 17"});
  expect_refusal("simulate t.png --photons=-5", {"--photons"});
  expect_refusal("simulate t.png --index 1", {"--index must be above 1 and at most 10"});
  expect_refusal("simulate t.png --source-power 10.1", {"--source-power"});
  expect_refusal("simulate t.png --source-angle 361", {"--source-angle must be -360 to 360"});
  expect_refusal("simulate t.png --dark-level 4096", {"--dark-level"});
  expect_refusal("simulate t.png --gains 1,2,3", {"--gains 1,2,3", "0.01 to 10"});
  expect_refusal("calibrate --out c.txt", {"--out c.txt", ".json"});
  expect_refusal("stats s.png --weight degree", {"--weight degree", "equal or power"});
  expect_refusal("stats missing.png", {"missing.png"});
  expect_refusal("completion fish", {"fish", "bash or zsh"});
}

TEST_F(RefusalTest, PlacesThatCannotBeWritten) {
  ASSERT_EQ(run("simulate s.png --size 16x16").exit_code, 0);
  std::filesystem::create_directories(path("taken/s_sheet.png"));
  expect_refusal("transform s.png --out s.png", {"s.png is a file"});
  expect_refusal("transform s.png --out new/../s.png/deeper", {"s.png is a file"});
  // The sheet is the last to be written: what came before it must go again.
  expect_refusal("transform s.png --out taken", {"taken/s_sheet.png", "a directory has that name"});
  expect_refusal("simulate nowhere/t.png --size 16x16", {"nowhere/t.png", "No such file"});
  expect_refusal("simulate t.png --size 16x16 --truth s.png", {"s.png is a file"});
}

}  // namespace
}  // namespace nerova_zel::test
