// Values that the page gets are those of transform and stats, to the last bit, and so are the sentences.
#include <gtest/gtest.h>

#include "command_line/tool_run.h"
#include "npy_file.h"
#include "served_page.h"
#include "support/frame_images.h"

namespace nerova_zel::test {
namespace {

constexpr int width = 37;
constexpr int height = 43;
constexpr const char* all_outputs = "stokes,power,hv,diagonal,azimuth,dolp,s0,s1,s2,angle";

class FramesTest : public ToolTest {
 protected:
  FramesTest() {
    std::vector<std::uint16_t> pixels = mixed_samples(width * height);
    std::fill_n(pixels.begin(), 3 * width, std::uint16_t{0});  // no light, no angle
    write_pgm("a.pgm", pixels, width, height, 12);
    request_.frames = {"a.pgm"};
  }

  /** The elements of an array that transform has written. */
  std::string array(const std::string& name) const {
    const std::string file = read(name);
    return file.substr(parse_npy(Bytes(file.begin(), file.end()), name).at);
  }

  /** Bytes of the pixels of a cut. */
  static std::string cut(const std::string& image, int x, int y, int w, int h, int step) {
    const std::size_t pixel = image.size() / (width * height);
    std::string bytes;
    for (int j = y; j < y + h; j += step) {
      for (int i = x; i < x + w; i += step) {
        bytes += image.substr(pixel * static_cast<std::size_t>(j * width + i), pixel);
      }
    }
    return bytes;
  }

  FrameRequest request_;
};

TEST_F(FramesTest, ImagesAreTransformsWhateverIsCutOut) {
  for (const char* library : {NEROVA_LIBRARY, NEROVA_BUILT_IN_ONLY_LIBRARY}) {
    for (const auto& [layout, origin] : {std::pair(90, "0,0"), std::pair(135, "3,2"), std::pair(0, "1,7")}) {
      const std::string view = "layout=" + std::to_string(layout) + "&origin=" + origin;
      ASSERT_EQ(run("transform a.pgm -f npy -o out --outputs " + std::string(all_outputs) + " --layout " +
                    std::to_string(layout) + " --origin " + origin + " --library " + library)
                    .exit_code,
                0);
      ViewSettings settings;
      settings.frames.library = library;
      // Rows that are computed apart, at both ends, odd ones too; then the whole frame, which is kept, and again rows.
      for (const auto& [x, y, w, h, step] :
           {std::tuple(0, 0, 37, 1, 1), std::tuple(5, 13, 9, 8, 1), std::tuple(30, 40, 7, 3, 1),
            std::tuple(36, 42, 1, 1, 1), std::tuple(1, 33, 36, 10, 3), std::tuple(0, 0, 37, 43, 1),
            std::tuple(2, 1, 35, 42, 4), std::tuple(5, 13, 9, 8, 2)}) {
        const std::string region =
            std::to_string(x) + "," + std::to_string(y) + "," + std::to_string(w) + "," + std::to_string(h);
        const std::string query =
            "images=" + std::string(all_outputs) + "&step=" + std::to_string(step) + "&region=" + region + "&" + view;
        for (const int threads : {1, 2}) {
          request_.threads = threads;
          ServedPage page(request_, settings);
          for (const auto& [name, bytes] : page.images(query)) {
            ASSERT_TRUE(bytes == cut(array("out/a_" + name + ".npy"), x, y, w, h, step)) << name << " " << query;
          }
        }
      }
    }
  }
}

TEST_F(FramesTest, RegionsPixelsAndFilesTellTheSame) {
  ServedPage page(request_);
  const std::string roi = " --roi 5,6,21,13";
  const auto stats = nlohmann::json::parse(run("stats a.pgm --json" + roi).output).at("frames").at(0);
  nlohmann::json region = page.json("/api/region?region=5,6,21,13");
  ASSERT_EQ(region.at("histogram").size(), 180U);
  std::uint64_t counted = region.at("pixels_without_angle");
  for (const auto& count : region.at("histogram")) {
    counted += count.get<std::uint64_t>();
  }
  EXPECT_EQ(counted, 21U * 13U);
  region.erase("histogram");
  EXPECT_EQ(region, stats);

  const auto arrays = page.images("images=raw4,s0,s1,s2,angle,dolp");
  for (const auto& [x, y] : {std::pair(0, 10), std::pair(36, 42), std::pair(12, 42), std::pair(36, 21)}) {
    const auto series = page.json("/api/series?x=" + std::to_string(x) + "&y=" + std::to_string(y));
    const auto at = static_cast<std::size_t>(y * width + x);
    const auto* const samples = reinterpret_cast<const std::uint16_t*>(arrays.at("raw4").data()) + 4 * at;
    EXPECT_EQ(series.at("samples").at(0), nlohmann::json(std::vector<std::uint16_t>(samples, samples + 4)));
    for (const char* name : {"s0", "s1", "s2", "angle"}) {
      const auto* const values = reinterpret_cast<const float*>(arrays.at(name).data());
      EXPECT_EQ(series.at(name).at(0).get<float>(), values[at]) << name << " " << x << "," << y;
    }
  }
  EXPECT_TRUE(page.json("/api/series?x=0&y=0").at("angle").at(0).is_null());
  page.json("/api/series?x=37&y=0", 422);

  ASSERT_EQ(run("transform a.pgm -f npy -o out --outputs angle,stokes").exit_code, 0);
  const auto file = page.get("/api/export?image=angle&format=npy");
  EXPECT_TRUE(file->body == read("out/a_angle.npy"));
  EXPECT_EQ(file->get_header_value("Content-Disposition"), "attachment; filename=\"a_angle.npy\"");
  EXPECT_EQ(page.get("/api/export?image=raw&format=csv&region=0,2,3,1")->body, "0,0,0\n");
}

TEST_F(FramesTest, WhatCannotBeReadIsToldAsTransformTells) {
  write("b.png", "\x89PNG\r\n\x1a\nno picture");
  write("c.pgm", "P5 2 2 255\nabc");
  request_.frames = {"a.pgm", "b.png", "c.pgm", "gone.tiff"};
  request_.depth.bit_depth = 8;
  ServedPage page(request_);
  for (int source = 0; source < 4; ++source) {
    const std::string name = request_.frames[static_cast<std::size_t>(source)];
    const std::string told = run("transform --bit-depth 8 --outputs power -o out " + name).errors;
    const std::string sentence =
        page.json("/api/images?images=power&source=" + std::to_string(source), 422).at("error");
    EXPECT_NE(told.find("nerova-polarize: " + sentence + "\n"), std::string::npos) << told << sentence;
  }
}

TEST_F(FramesTest, ColoursAreFramesOfTheirOwn) {
  request_.colour = ColourSettings{};
  ServedPage page(request_);
  EXPECT_EQ(page.json("/api/session").at("planes"), nlohmann::json({"R", "G1", "G2", "B"}));
  ASSERT_EQ(run("transform a.pgm --colour RGGB -f npy -o out --outputs power,angle").exit_code, 0);
  const std::string all = array("out/a_power_r_g1_g2_b.npy");
  for (std::size_t plane = 0; plane < 4; ++plane) {
    const auto arrays = page.images("images=power&plane=" + std::to_string(plane));
    EXPECT_TRUE(arrays.at("power") == all.substr(plane * all.size() / 4, all.size() / 4)) << plane;
  }
  page.json("/api/region?plane=3&region=2,2,8,8");
}

}  // namespace
}  // namespace nerova_zel::test
