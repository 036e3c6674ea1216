// Every form of frame and output, bit for bit what the library computes.
#include "file_texts.h"
#include "frames/recording.h"
#include "picture_file.h"
#include "png_file.h"
#include "tiff_file.h"
#include "tool_run.h"

namespace nerova_zel::test {
namespace {

std::vector<float> component(const std::vector<float>& pairs, std::size_t which) {
  std::vector<float> values;
  for (std::size_t i = which; i < pairs.size(); i += 2) {
    values.push_back(pairs[i]);
  }
  return values;
}

class FormatsTest : public ToolTest {
 protected:
  /** A file of the image, whatever it says of itself, which must be the output of that name. */
  void expect_file(const std::string& name, const ImageView& image, const std::string& output) const {
    const std::vector<TextEntry> texts = read_texts(path(name));
    const TiffTags tags{find_text(texts, "ImageDescription").value_or(""), find_text(texts, "Software").value_or(""),
                        std::nullopt};
    const bool is_png = name.substr(name.size() - 4) == ".png";
    const Bytes bytes = is_png ? encode_png(image, texts) : encode_tiff(image, tags);
    EXPECT_TRUE(read(name) == std::string(bytes.begin(), bytes.end())) << name;
    EXPECT_EQ(find_text(texts, "Output"), output) << name;
  }
  void expect_floats(const std::string& name, const std::vector<float>& values, int width, int height,
                     const std::string& output) const {
    expect_file(name, {Element::float32, width, height, 1, values.data()}, output);
  }
  /** A simulated frame through a file and both commands, against the same by direct calls. */
  void expect_exact(const std::string& name, int bit_depth, const std::string& format, const std::string& options);
};

void FormatsTest::expect_exact(const std::string& name, int bit_depth, const std::string& format,
                               const std::string& options) {
  SCOPED_TRACE(name);
  CameraSettings camera;
  camera.width = 37;
  camera.height = 30;
  camera.bit_depth = bit_depth;
  camera.layout = MosaicLayout(135);
  camera.origin_x = 3;
  camera.full_well = 5000;
  camera.seed = 7;
  const auto frame = simulate_frame(SimulatedScene(camera.width, camera.height, {}), camera);
  const LibraryOutputs expected = transform_by_library(camera, frame, 4095);

  const std::string sensor = " --layout 135 --origin 3,0 ";
  const RunResult simulated = run("simulate " + name + sensor + "--size 37x30 --photons 5000 --seed 7 --bit-depth " +
                                  std::to_string(bit_depth));
  ASSERT_EQ(simulated.exit_code, 0) << simulated.errors;
  const RunResult transformed =
      run("transform " + name + sensor +
          "--output-max 4095 -o results --outputs stokes,power,hv,diagonal,azimuth,dolp --format " + format + " " +
          options);
  ASSERT_EQ(transformed.exit_code, 0) << transformed.errors;
  EXPECT_EQ(transformed.errors, "");

  const std::string stem = "results/" + name.substr(0, name.find('.'));
  expect_floats(stem + "_stokes_s1.tiff", component(expected.stokes, 0), 37, 30, "stokes");
  expect_floats(stem + "_stokes_s2.tiff", component(expected.stokes, 1), 37, 30, "stokes");
  for (const auto& [output, values] :
       {std::pair<std::string, const std::vector<std::uint16_t>&>{"power", expected.power},
        {"hv", expected.hv},
        {"diagonal", expected.diagonal},
        {"azimuth", expected.azimuth},
        {"dolp", expected.dolp}}) {
    expect_file(stem + "_" + output + "." + format, {Element::uint16, 37, 30, 1, values.data()}, output);
  }
}

// Every kind of file goes through both commands without a bit changed, down to frames of one bit, which hold pixels
// without light whose normalized pair is not a number. A PGM says its bit depth itself.
TEST_F(FormatsTest, EveryKindOfFrameGivesWhatTheLibraryComputes) {
  expect_exact("a.png", 8, "png", "");
  expect_exact("b.png", 12, "png", "--bit-depth 12");
  expect_exact("c.tif", 8, "tiff", "");
  expect_exact("d.tiff", 16, "tiff", "");
  expect_exact("e.pgm", 1, "png", "");
  expect_exact("f.PGM", 12, "png", "");
  expect_exact("g.raw", 7, "png", "--bit-depth 7 --raw 37x30");
  expect_exact("h.raw", 14, "tiff", "--bit-depth 14 --raw 37x30");
}

TEST_F(FormatsTest, RecordingsAreReadByTheirDescription) {
  run("simulate a.raw --size 37x30 --bit-depth 12 --layout 135 --origin 3,0 --seed 1");
  run("simulate b.raw --size 37x30 --bit-depth 12 --layout 135 --origin 3,0 --seed 2");
  write("r.raw", read("a.raw") + read("b.raw"));
  Recording recording;
  recording.format = PixelFormat::mono12;
  recording.size = {37, 30};
  recording.origin = {3, 0};
  recording.layout = MosaicLayout(135);
  recording.frames = 2;
  write("r.raw.json", encode_recording(recording));
  write("copy.raw", read("r.raw"));
  EXPECT_EQ(run("transform copy.raw --raw 37x30 --pixel-format Mono12 --layout 135 --origin 3,0 -o wanted --outputs hv")
                .exit_code,
            0);
  const RunResult result = run("transform r.raw -o found --outputs hv");
  EXPECT_EQ(result.errors.find("assumed"), std::string::npos) << result.errors;
  const auto pixels = [this](const std::string& name) {
    GreyPage page;
    PictureFile(path(name)).read(0, page);
    return page.pixels;
  };
  for (const std::string frame : {"0", "1"}) {
    EXPECT_EQ(pixels("found/r_00000" + frame + "_hv.png"), pixels("wanted/copy_00000" + frame + "_hv.png"));
  }
  // A doubt is said, and frames of two kinds are no batch.
  EXPECT_NE(run("stats r.raw --layout 90").errors.find("the recording says layout 135"), std::string::npos);
  write("r.raw", read("a.raw"));
  EXPECT_NE(run("stats r.raw").errors.find("r.raw has 2220 bytes"), std::string::npos);
  write("r.raw", read("copy.raw"));
  expect_refusal("stats r.raw a.raw", {"a.raw", "recording"});
  write("a.raw.json", "{}");
  expect_refusal("stats a.raw", {"a.raw.json", "does not describe a recording"});
}

TEST_F(FormatsTest, TruthIsThatOfTheScene) {
  ASSERT_EQ(run("simulate s.png --size 64x48 --truth truth").exit_code, 0);
  CameraSettings camera;
  camera.width = 64;
  camera.height = 48;
  const SimulatedScene scene(camera.width, camera.height, {});
  std::vector<float> angles;
  std::vector<float> degrees;
  for (int y = 0; y < camera.height; ++y) {
    for (int x = 0; x < camera.width; ++x) {
      const StokesVector light = true_light(scene, camera, x, y);
      angles.push_back(static_cast<float>(light.angle_degrees()));
      degrees.push_back(static_cast<float>(light.degree()));
    }
  }
  expect_floats("truth/s_true_angle.tiff", angles, 64, 48, "true-angle");
  expect_floats("truth/s_true_degree.tiff", degrees, 64, 48, "true-degree");
}

TEST_F(FormatsTest, WritesWhatIsWantedAndNoMore) {
  ASSERT_EQ(run("simulate s.png --size 64x48").exit_code, 0);
  ASSERT_EQ(run("transform s.png --bit-depth 12 --outputs dolp,sheet -o new/results").exit_code, 0);
  EXPECT_EQ(listing(), (std::set<std::string>{"new", "new/results", "new/results/s_dolp.png", "new/results/s_sheet.png",
                                              "s.png"}));
}

}  // namespace
}  // namespace nerova_zel::test
