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
      expect_refusal("transform " + name + options + " -o results", {name});
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
  expect_refusal("transform missing.png -o results", {"missing.png", "No such file"});
  expect_refusal("transform . again -o results", {"narrow.png", "same names", "--output"}, 2);
  expect_refusal("transform empty.png -o results", {"empty.png is empty", "PNG, TIFF, PGM or NPY"});
  expect_refusal("transform text.png -o results", {"text.png is not a PNG", "--raw WxH"});
  expect_refusal("transform header.pgm -o results", {"header.pgm", "PGM header", "it should read P5"});
  expect_refusal("transform colour.png -o results", {"colour.png has 3 channels", "single"});
  expect_refusal("transform float.tiff -o results", {"float.tiff", "unsigned"});
  expect_refusal("transform narrow.png -o results", {"narrow.png", "1 x 6", "2 x 2"});
  expect_refusal("transform narrow.png -o r --calibration again",
                 {"again is a directory", "a calibration file is needed"});
}

TEST_F(RefusalTest, FilesCutShort) {
  expect_refusal_when_cut("cut.png", "");
  expect_refusal_when_cut("cut.tiff", "");
  expect_refusal_when_cut("cut.pgm", "");
  expect_refusal_when_cut("cut.raw", " --raw 90x70");
}

TEST_F(RefusalTest, OptionsThatTheFilesDoNotAllow) {
  ASSERT_EQ(run("simulate s.png --size 16x16 --bit-depth 8 --index 1.05").exit_code, 0);
  EXPECT_EQ(run("simulate dark.png --size 16x16 --source-angle 0 --source-power 0").exit_code, 0);
  EXPECT_EQ(run("transform s.png --bit-depth 8 --output-max 1 --benchmark=1 -j 1024 --degree-max 1 -o fit").exit_code,
            0);
  expect_refusal("transform -o r s.png --raw 4x4", {"s.png", "16 (8-bit) or 32 (16-bit)"});
  expect_refusal("transform -o r - --raw 4x4 --pixel-format Mono8", {"standard input is empty"});
#if !defined(_WIN32)
  expect_refusal("transform -o r - --raw 4x4 --pixel-format Mono8 < .", {"standard input", "Is a directory"});
#endif
  expect_refusal("transform -o r s.png --roi 1,0,16,16", {"s.png", "16 x 16", "beyond"});
  expect_refusal("transform -o r '?.tif'", {"?.tif"});
  expect_refusal("transform -o r s.png --bit-depth 9", {"--bit-depth 9", "s.png"});
  expect_refusal("transform -o r s.png --library nowhere.so", {"nowhere.so", "--library PATH"});
  expect_refusal("stats missing.png", {"missing.png"});
}

// Whatever the files hold: the exit code tells a script that it is the command that must change.
TEST_F(RefusalTest, CommandLinesThatMakeNoSense) {
  ASSERT_EQ(run("simulate s.png --size 16x16 --bit-depth 8").exit_code, 0);
  const std::pair<const char*, std::vector<std::string>> cases[] = {
      {"", {"a command is missing"}},
      {"transfrom s.png", {"unknown command transfrom; did you mean transform?"}},
      {"stast s.png", {"unknown command stast; did you mean stats?"}},
      {"sharpen s.png", {"unknown command sharpen; see nerova-polarize --help."}},
      {"transform", {"FRAME"}},
      {"transform s.png", {"--output DIR is missing"}},
      {"transform s.png -o r.png", {"--output r.png", "a folder"}},
      {"transform s.png -o r --out-put-max 9",
       {"unknown option --out-put-max of transform; did you mean --output-max?"}},
      {"transform s.png -o r --sharpen", {"--sharpen", "see nerova-polarize transform --help"}},
      {"calibrate c.json --frame", {"--frame needs a value"}},
      {"--layout 0 transform s.png -o r", {"--layout must follow the command"}},
      {"simulate --size 16x16", {"FILE is missing"}},
      {"simulate a.png -o b.png", {"--output is given more than once"}},
      {"transform -o r s.png --layout 30", {"--layout 30", "0, 45, 90 or 135"}},
      {"transform -o r s.png --layout up", {"--layout"}},
      {"transform -o r s.png --origin 1", {"--origin 1", "0,0"}},
      {"transform -o r s.png --origin=-1,0", {"--origin -1,0"}},
      {"transform -o r s.png --raw 4by4", {"--raw 4by4", "2448x2048"}},
      {"transform -o r s.png --pixel-format Mono8", {"--pixel-format", "--raw"}},
      {"transform -o r s.png --raw 4x4 --pixel-format mono8", {"mono8", "Mono12Packed"}},
      {"transform -o r - --raw 4x4 < s.png", {"standard input", "--pixel-format"}},
      {"transform -o r s.png --roi 1,2,3", {"--roi 1,2,3", "X,Y,W,H"}},
      {"transform -o r s.png --roi 0,0,16,1", {"--roi 0,0,16,1", "2 x 2"}},
      {"transform -o r s.png --frames x:5", {"--frames x:5", "A:B"}},
      {"transform -o r s.png --frames 5:x", {"--frames 5:x", "A:B"}},
      {"transform -o r s.png --frames :", {"--frames :", "A:B"}},
      {"transform -o r s.png --frames 5", {"--frames 5", "A:B"}},
      {"transform -o r s.png --jobs 0", {"--jobs 0"}},
      {"transform -o r s.png --bit-depth 0", {"--bit-depth 0", "1 to 16"}},
      {"transform -o r s.png --output-max 65536", {"--output-max 65536", "1 to 65535"}},
      {"transform -o r s.png --outputs azimuth,hue", {"\"hue\"", "azimuth"}},
      {"transform -o r s.png --format jpg", {"--format jpg", "png, tiff or npy"}},
      {"transform -o r s.png --repeat 0", {"--benchmark 0"}},
      {"transform -o r s.png --degree-max nan", {"--degree-max"}},
      {"transform -o r s.png --power-max 0", {"--power-max"}},
      {"transform -o r s.png --azimuth-style bright", {"--azimuth-style bright", "composite"}},
      {"simulate t.gif", {"t.gif", ".png"}},
      {"simulate t.png --size 1x9", {"--size 1x9"}},
      {"simulate t.png --size 65536x65536", {"--size 65536x65536", "at most"}},
      {"simulate t.png --bit-depth 17", {"--bit-depth 17"}},
      {"simulate t.png --photons=-5", {"--photons"}},
      {"simulate t.png --index 1", {"--index must be above 1 and at most 10"}},
      {"simulate t.png --dispersion 0.11", {"--dispersion must be 0 (none) to 0.1"}},
      {"simulate t.png --source-power 10.1", {"--source-power"}},
      {"simulate t.png --source-angle 361", {"--source-angle must be -360 to 360"}},
      {"simulate t.png --dark-level 4096", {"--dark-level"}},
      {"simulate t.png --gains 1,2,3", {"--gains 1,2,3", "0.01 to 10"}},
      {"calibrate -o c.txt", {"--output c.txt", ".json"}},
      {"stats s.png --weight degree", {"--weight degree", "equal or power"}},
      {"completion fish", {"fish", "bash or zsh"}},
  };
  for (const auto& [arguments, words] : cases) {
    expect_refusal(arguments, words, 2);
  }
}

TEST_F(RefusalTest, PlacesThatCannotBeWritten) {
  ASSERT_EQ(run("simulate s.png --size 16x16").exit_code, 0);
  std::filesystem::create_directories(path("taken/s_sheet.png"));
  expect_refusal("transform s.png -o s.png/.", {"s.png is a file"});
  expect_refusal("transform s.png -o new/../s.png/deeper", {"s.png is a file"});
  // The sheet is the last to be written: what came before it must go again.
  expect_refusal("transform s.png -o taken", {"taken/s_sheet.png", "a directory has that name"});
  expect_refusal("simulate nowhere/t.png --size 16x16", {"nowhere/t.png", "No such file"});
  expect_refusal("simulate t.png --size 16x16 --truth s.png", {"s.png is a file"});
}

}  // namespace
}  // namespace nerova_zel::test
