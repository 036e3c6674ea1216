#include <opencv2/imgcodecs.hpp>

#include "tool_run.h"

namespace nerova_zel::test {
namespace {

class CommandFailureTest : public ToolTest {
 protected:
  void expect_refusal_when_cut(const std::string& name, const std::string& options) const {
    ASSERT_EQ(run("simulate " + name + " --size 90x70 --photons 1000").exit_code, 0);
    const std::string whole = read(name);
    const std::string arguments = "transform " + name + options + " --out results";
    for (const double share : {0.01, 0.3, 0.7, 0.99}) {
      write(name, whole.substr(0, static_cast<std::size_t>(share * static_cast<double>(whole.size()))));
      expect_refusal(arguments, {name});
    }
  }
};

TEST_F(CommandFailureTest, FilesThatAreNoFrames) {
  write("empty.png", "");
  write("text.png", "P 5 is not what this says");
  write("plain.pgm", "P2\n2 2\n255\n1 2 3 4\n");
  write("header.pgm", "P5\n4 four\n255\n1234567890123456");
  write("huge.pgm", "P5\n99999999 99999999\n65535\n1234");
  const cv::Mat grey(6, 6, CV_8U, cv::Scalar(7));
  cv::imwrite(path("colour.png"), cv::Mat(6, 6, CV_8UC3, cv::Scalar(1, 2, 3)));
  cv::imwrite(path("colour.tiff"), cv::Mat(6, 6, CV_16UC3, cv::Scalar(1, 2, 3)));
  cv::imwrite(path("float.tiff"), cv::Mat(6, 6, CV_32F, cv::Scalar(1)));
  cv::imwrite(path("lossy.jpg"), grey);
  cv::imwrite(path("narrow.png"), grey.col(0));
  expect_refusal("transform missing.png --out results", {"missing.png", "No such file"});
  expect_refusal("transform . --out results", {"colour.png", "colour.tiff", "same names"});
  expect_refusal("transform empty.png --out results", {"empty.png", "empty"});
  expect_refusal("transform text.png --out results", {"text.png", "not a PNG, TIFF or binary PGM"});
  expect_refusal("transform plain.pgm --out results", {"plain.pgm", "binary PGM"});
  expect_refusal("transform header.pgm --out results", {"header.pgm", "header"});
  expect_refusal("transform huge.pgm --out results", {"huge.pgm", "cut short"});
  expect_refusal("transform colour.png --out results", {"colour.png", "3 channels", "single"});
  expect_refusal("transform colour.tiff --out results", {"colour.tiff", "3 channels", "single"});
  expect_refusal("transform float.tiff --out results", {"float.tiff", "unsigned"});
  expect_refusal("transform lossy.jpg --out results", {"lossy.jpg", "not a PNG, TIFF or binary PGM"});
  expect_refusal("transform narrow.png --out results", {"narrow.png", "1 x 6", "2 x 2"});
}

TEST_F(CommandFailureTest, FilesCutShort) {
  expect_refusal_when_cut("cut.png", "");
  expect_refusal_when_cut("cut.tiff", "");
  expect_refusal_when_cut("cut.pgm", "");
  expect_refusal_when_cut("cut.raw", " --raw 90x70");
}

TEST_F(CommandFailureTest, ImpossibleOptions) {
  ASSERT_EQ(run("simulate s.png --size 16x16 --bit-depth 8").exit_code, 0);
  expect_refusal("", {"subcommand"});
  expect_refusal("transform", {"FRAME"});
  expect_refusal("transform s.png --layout 30", {"--layout 30", "0, 45, 90 or 135"});
  expect_refusal("transform s.png --layout up", {"--layout"});
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
  expect_refusal("transform s.png --sharpen", {"--sharpen"});
  expect_refusal("simulate t.gif", {"t.gif", ".png"});
  expect_refusal("simulate t.png --size 1x9", {"--size 1x9"});
  expect_refusal("simulate t.png --size 65536x65536", {"--size 65536x65536", "at most"});
  expect_refusal("simulate t.png --bit-depth 17", {"--bit-depth 17"});
  expect_refusal("simulate t.png --photons=-5", {"--photons"});
  expect_refusal("simulate t.png --index 1", {"--index"});
}

TEST_F(CommandFailureTest, PlacesThatCannotBeWritten) {
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
