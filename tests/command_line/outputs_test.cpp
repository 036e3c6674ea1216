// What outputs leave out or turn, and where the user is told of it.
#include <nlohmann/json.hpp>

#include "file_texts.h"
#include "npy_file.h"
#include "tool_run.h"

namespace nerova_zel::test {
namespace {

class OutputsTest : public ToolTest {
 protected:
  OutputsTest() {
    // The upper rows are so bright that P is one and a half of full scale.
    std::vector<std::uint16_t> pixels(32 * 16, 1000);
    for (std::size_t i = 0; i < 4 * 32; ++i) {
      pixels[i] = 3071;
    }
    write_pgm("frame.pgm", pixels, 32, 16, 12);
  }

  std::vector<std::uint16_t> codes(const std::string& name) const {
    const std::string file = read(name);
    const Bytes bytes(file.begin(), file.end());
    const NpyArray array = parse_npy(bytes, name);
    std::vector<std::uint16_t> values(array.count);
    npy_pixels(bytes.data() + array.at, array, array.count, values.data());
    return values;
  }
};

TEST_F(OutputsTest, ClippedPowerIsToldAndCanBeAvoided) {
  const std::string command = "transform frame.pgm --layout 90 --format npy ";
  const RunResult clipped = run(command + "--outputs power,hv,s0 -o out");
  ASSERT_EQ(clipped.exit_code, 0) << clipped.errors;
  EXPECT_NE(clipped.output.find("18.8 % of the power clipped"), std::string::npos) << clipped.output;
  EXPECT_EQ(codes("out/frame_power.npy").front(), 65535);
  const std::string array = read("out/frame_s0.npy");
  const Bytes bytes(array.begin(), array.end());
  EXPECT_EQ(npy_floats(bytes, parse_npy(bytes, "s0")).front(), 6142.0F);

  const RunResult whole = run(command + "--outputs power,hv,dolp --power-headroom -o room");
  ASSERT_EQ(whole.exit_code, 0) << whole.errors;
  EXPECT_EQ(whole.output.find("clipped"), std::string::npos) << whole.output;
  EXPECT_EQ(codes("room/frame_power.npy").front(), 49141);  // 6142 / 8191 of 65535
  EXPECT_EQ(read("room/frame_hv.npy"), read("out/frame_hv.npy"));
  expect_refusal(command + "--bit-depth 16 --power-headroom --outputs power -o deep", {"16 bits", "--power-headroom"});
}

TEST_F(OutputsTest, SuperpixelsHaveHalfTheSizeAndNoPictures) {
  ASSERT_EQ(run("transform frame.pgm --layout 90 --sampling superpixel --format npy -o half").exit_code, 0);
  EXPECT_EQ(codes("half/frame_dolp.npy").size(), 16U * 8);
  EXPECT_EQ(listing().count("half/frame_sheet.png"), 0U);
  expect_refusal("transform frame.pgm --sampling superpixel --outputs dolp,sheet -o t", {"superpixel", "--outputs"}, 2);
}

TEST_F(OutputsTest, AzimuthImagesSayWhatTheirEndsMean) {
  for (const std::string format : {"png", "tiff", "npy"}) {
    const std::string command = "transform frame.pgm --layout 90 --output-max 4095 --outputs azimuth -o out --format ";
    ASSERT_EQ(run(command + format).exit_code, 0);
    const auto description = find_text(read_texts(path("out/frame_azimuth." + format)), "Description");
    ASSERT_TRUE(description) << format;
    EXPECT_NE(description->find("0 is an angle of -90 degrees and 4095 is +90 degrees"), std::string::npos)
        << *description;
  }
  EXPECT_NE(run("transform --help").output.find("azimuth +90 degrees (0 is -90)"), std::string::npos);
  EXPECT_NE(run("manual").output.find("light at 30 degrees"), std::string::npos);
}

TEST_F(OutputsTest, ARouteWithoutAPluginIsToldOnce) {
  write_pgm("frame2.pgm", std::vector<std::uint16_t>(64, 100), 8, 8, 12);
  const RunResult result = run("transform frame.pgm frame2.pgm --layout 90 --outputs dolp -o out --library " +
                               std::string(NEROVA_BUILT_IN_ONLY_LIBRARY));
  EXPECT_EQ(result.exit_code, 0) << result.errors;
  const std::size_t note = result.errors.find("built-in kernels");
  EXPECT_NE(note, std::string::npos) << result.errors;
  EXPECT_EQ(result.errors.find("built-in kernels", note + 1), std::string::npos) << result.errors;
}

TEST_F(OutputsTest, InfoTellsWhatAFileIs) {
  write("text.png", "no picture");
  const RunResult text = run("info frame.pgm");
  EXPECT_NE(text.output.find("frame.pgm: PGM, 32 x 16, 1 frame\n  bits       12 of 16, as the file says"),
            std::string::npos)
      << text.output;
  ASSERT_EQ(run("transform frame.pgm --layout 90 --outputs dolp -o out").exit_code, 0);
  const auto files = nlohmann::json::parse(run("info --json frame.pgm out/frame_dolp.png").output);
  ASSERT_EQ(files.size(), 2U);
  EXPECT_EQ(files[0].at("greatest"), 3071);
  EXPECT_EQ(files[0].at("least"), 1000);
  EXPECT_EQ(files[1].at("texts").at("Output"), "dolp");
  const RunResult raw = run("info --raw 8x8 --pixel-format Mono16 frame.pgm");
  EXPECT_NE(raw.output.find("Mono16, 8 x 8, 9 frames"), std::string::npos) << raw.output;
  ASSERT_EQ(run("simulate deep.tiff --size 16x16 --bit-depth 11").exit_code, 0);
  EXPECT_NE(run("info deep.tiff").output.find("bits       11 of 16, as the file says"), std::string::npos);
  EXPECT_EQ(run("info text.png frame.pgm").exit_code, 1);
  EXPECT_NE(run("--list-formats").output.find("PolarizeMono12p"), std::string::npos);
}

}  // namespace
}  // namespace nerova_zel::test
