// Frames of colour sensors through the commands; planes, pictures and fits by themselves are tested in their modules.
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>

#include "file_texts.h"
#include "frames/recording.h"
#include "npy_file.h"
#include "picture_file.h"
#include "simulation/colour_scene.h"
#include "tiff_file.h"
#include "tool_run.h"

namespace nerova_zel::test {
namespace {

class ColourTest : public ToolTest {
 protected:
  void expect_success(const std::string& arguments) const {
    const RunResult result = run(arguments);
    ASSERT_EQ(result.exit_code, 0) << arguments << ": " << result.errors;
  }
  Bytes bytes(const std::string& name) const {
    const std::string text = read(name);
    return {text.begin(), text.end()};
  }
  std::vector<std::uint16_t> picture(const std::string& name) const {
    GreyPage page;
    PictureFile(bytes(name), name).read(0, page);
    return page.pixels;
  }
};

// Every colour's files hold its own truth and what is computed of it.
TEST_F(ColourTest, EachColourHasItsTruth) {
  expect_success(
      "simulate f.png --colour GBRG --layout 45 --origin 3,5 --size 403x302 --bit-depth 12 --truth truth "
      "--dispersion 0.013");
  const std::string sensor = "transform f.png --colour GBRG --layout 45 --origin 3,5 --bit-depth 12 ";
  expect_success(sensor + "--outputs dolp,angle -o png");
  expect_success(sensor + "--outputs dolp,stokes -f npy -o npy");
  const Bytes stacked = bytes("npy/f_dolp_r_g1_g2_b.npy");
  const NpyArray stack = parse_npy(stacked, "dolp");
  ASSERT_EQ(stack.shape, (std::vector<std::size_t>{4, 150, 200}));
  EXPECT_EQ(parse_npy(bytes("npy/f_stokes_r_g1_g2_b.npy"), "stokes").shape, (std::vector<std::size_t>{4, 150, 200, 2}));
  std::vector<std::uint16_t> in_stack(stack.count);
  npy_pixels(stacked.data() + stack.at, stack, stack.count, in_stack.data());
  const std::size_t pixels = std::size_t{150} * 200;
  const char* const colours[] = {"r", "g1", "g2", "b"};
  const ColourScene scene(403, 302, {}, 0.013);
  const ColourMosaic mosaic(ColourPattern::gbrg, {3, 5}, {403, 302});
  for (std::size_t i = 0; i < 4; ++i) {
    SCOPED_TRACE(colours[i]);
    const std::string ending = std::string("_") + colours[i];
    const std::vector<std::uint16_t> dolp = picture("png/f_dolp" + ending + ".png");
    ASSERT_EQ(dolp.size(), pixels);
    EXPECT_TRUE(std::equal(dolp.begin(), dolp.end(), in_stack.begin() + static_cast<std::ptrdiff_t>(i * pixels)));
    std::vector<float> truth;
    std::vector<double> errors;
    for (int at = 0; at < 150 * 200; ++at) {
      truth.push_back(
          static_cast<float>(true_colour_light(scene, mosaic, colour_planes[i], at % 200, at / 200).degree()));
      errors.push_back(std::abs(dolp[errors.size()] / 65535.0 - truth.back()));
    }
    std::nth_element(errors.begin(), errors.begin() + 15000, errors.end());
    EXPECT_LT(errors[15000], 0.005);  // half of the pixels; the others lie near edges
    const std::string name = "truth/f_true_degree" + ending + ".tiff";
    const std::vector<TextEntry> texts = read_texts(path(name));
    const TiffTags tags{find_text(texts, "ImageDescription").value_or(""), find_text(texts, "Software").value_or(""),
                        std::nullopt};
    const Bytes expected = encode_tiff({Element::float32, 200, 150, 1, truth.data()}, tags);
    EXPECT_TRUE(bytes(name) == expected);
    EXPECT_NE(listing().count("png/f_angle" + ending + ".tiff"), 0U);
  }
}

TEST_F(ColourTest, FormatsNameThePatternAndContradictionsAreRefused) {
  expect_success("simulate f.raw --colour GRBG --size 40x32 --bit-depth 12 --layout 0");
  const std::string raw = "transform f.raw --raw 40x32 --layout 0 ";
  expect_success(raw + "--pixel-format BayerGRPolarized12 --outputs power,azimuth -o alias");
  expect_success(raw + "--pixel-format Mono12 --colour GRBG --outputs power,azimuth -o plain");
  expect_success(raw + "--pixel-format Mono12 --colour GRBG --merge-green --outputs power -o merged");
  expect_success(raw + "--pixel-format Mono12 --colour GRBG --full-size --outputs power -o full");
  expect_success(raw + "--pixel-format Mono12 --colour GRBG --outputs power-picture -o shown");
  EXPECT_EQ(bytes("shown/f_power_colour.png").at(19), 20) << "the last byte of a PNG file's width";
  for (const char* colour : {"r", "g1", "g2", "b"}) {
    const std::string name = std::string("/f_power_") + colour + ".png";
    EXPECT_EQ(picture("alias" + name), picture("plain" + name));
    EXPECT_EQ(picture("full" + name).size(), 1280U);
  }
  EXPECT_EQ(picture("merged/f_power_r.png"), picture("plain/f_power_r.png"));
  EXPECT_EQ(picture("merged/f_power_g.png").size(), 320U);
  Recording recording;
  recording.format = PixelFormat::mono12;
  recording.size = {40, 32};
  recording.layout = MosaicLayout(0);
  recording.colour = ColourPattern::grbg;
  recording.frames = 1;
  write("f.raw.json", encode_recording(recording));
  expect_success("transform f.raw --outputs power -o recorded");
  EXPECT_EQ(picture("recorded/f_power_b.png"), picture("plain/f_power_b.png"));
  expect_refusal("transform f.raw --colour RGGB --outputs power -o x", {"--colour RGGB", "GRBG"}, 2);
  expect_refusal("transform f.raw --raw 40x32 --pixel-format BayerGRPolarized12 --colour RGGB --outputs power -o x",
                 {"--colour RGGB", "GRBG"}, 2);
  for (const char* option : {"--merge-green", "--full-size", "--white-balance 1,1,1", "--outputs power-picture"}) {
    expect_refusal(raw + "--pixel-format Mono12 " + option + " -o x", {"--colour"}, 2);
  }
  expect_refusal(raw + "--colour GRBG --white-balance 1,1 -o x", {"--white-balance 1,1", "three"}, 2);
  expect_refusal(raw + "--pixel-format Mono12 --colour GRBG --roi 2,2,5,4 --outputs power -o x", {"too small"});
}

// Both ways to get the sensor wrong are told, and neither where it is right.
TEST_F(ColourTest, FramesOfTheOtherKindOfSensorGetANote) {
  expect_success("simulate colour.png --colour BGGR --size 400x300 --bit-depth 12 --photons 10000");
  expect_success("simulate grey.png --size 400x300 --bit-depth 12 --photons 10000");
  const std::string options = " --layout 90 --bit-depth 12 --summary";
  EXPECT_EQ(run("stats grey.png" + options).errors, "");
  EXPECT_EQ(run("stats colour.png --colour BGGR" + options).errors, "");
  const std::string repeats = run("stats colour.png" + options).errors;
  EXPECT_NE(repeats.find("colour.png has a pattern that repeats every 4 pixels"), std::string::npos) << repeats;
  const std::string equal = run("stats grey.png --colour RGGB" + options).errors;
  EXPECT_NE(equal.find("the four colour planes of grey.png are equal within noise"), std::string::npos) << equal;
}

TEST_F(ColourTest, ClippedPowerIsThatOfAllColours) {
  expect_success("simulate f.png --colour RGGB --size 32x32 --bit-depth 12 --source-angle 22.5 --source-power 1.1");
  const RunResult made = run("transform f.png --colour RGGB --layout 90 --bit-depth 12 --outputs power -o x");
  EXPECT_NE(made.output.find(", 50.0 % of the power clipped; 4 files"), std::string::npos) << made.output << "greens";
}

TEST_F(ColourTest, StatisticsAreOfEachColour) {
  expect_success("simulate f.png --colour RGGB --size 100x80 --bit-depth 12 --source-angle 20 --source-power 0.5");
  const std::string command = "stats f.png f.png --colour RGGB --layout 90 --bit-depth 12 ";
  const std::string text = run(command).output;
  EXPECT_NE(text.find("f.png, G2: 2000 pixels\n  angle      20.0"), std::string::npos) << text;
  const auto document = nlohmann::json::parse(run(command + "--json --merge-green").output);
  for (const char* colour : {"R", "G", "B"}) {
    EXPECT_NEAR(document.at("all").at("colours").at(colour).at("mean_angle_degrees").get<double>(), 20.0, 0.1);
  }
  EXPECT_EQ(document.at("frames").at(0).at("colours").size(), 3U);
}

TEST_F(ColourTest, CalibrationsAreOfAllColoursInOneFile) {
  std::string frames;
  for (const char* angle : {"0", "45", "90", "135"}) {
    const std::string name = std::string("a") + angle + ".png";
    expect_success("simulate " + name + " --colour RGGB --size 64x48 --bit-depth 12 --angle-errors=2 --source-angle " +
                   angle);
    frames += std::string(" --frame ") + angle + ":" + name;
  }
  const RunResult made = run("calibrate --colour RGGB --layout 90 --bit-depth 12 -o camera.json" + frames);
  ASSERT_EQ(made.exit_code, 0) << made.errors;
  EXPECT_NE(made.output.find("G2: 4 frames"), std::string::npos) << made.output;
  const auto file = nlohmann::json::parse(read("camera.json"));
  EXPECT_EQ(file.at("colours").size(), 4U);
  const std::string stats = "stats a45.png --layout 90 --bit-depth 12 --summary ";
  EXPECT_EQ(run(stats + "--colour RGGB --calibration camera.json").exit_code, 0);
  expect_refusal(stats + "--calibration camera.json", {"camera.json", "say the sensor's pattern with --colour"});
  expect_success("calibrate --layout 90 --bit-depth 12 -o grey.json" + frames);
  expect_refusal(stats + "--colour RGGB --calibration grey.json", {"grey.json", "calibrate --colour"});
}

}  // namespace
}  // namespace nerova_zel::test
