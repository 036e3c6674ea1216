// Many frames in one command: streams, order, failures among them, resuming; and the arrays that batches are made for.
#include <algorithm>
#include <cstring>
#include <random>

#include "npy_file.h"
#include "support/cpu_route.h"
#include "tool_run.h"

namespace nerova_zel::test {
namespace {

namespace fs = std::filesystem;

/** The elements of a .npy file of that shape; none if it is anything else. */
template <class Element>
std::vector<Element> elements(const std::string& file, const std::vector<std::size_t>& shape) {
  const Bytes bytes(file.begin(), file.end());
  const NpyArray array = parse_npy(bytes, "array");
  std::vector<Element> values(array.count);
  if (array.shape != shape || file.size() - array.at != values.size() * sizeof(Element)) {
    return {};
  }
  std::memcpy(values.data(), file.data() + array.at, values.size() * sizeof(Element));
  return values;
}

class BatchTest : public ToolTest {
 protected:
  BatchTest() {
    camera_.width = 37;
    camera_.height = 5;
    camera_.bit_depth = 12;
    camera_.layout = MosaicLayout(45);
  }

  std::vector<std::uint16_t> random_frame(unsigned seed) const {
    std::mt19937 generator(seed);
    std::vector<std::uint16_t> frame(static_cast<std::size_t>(camera_.width * camera_.height));
    std::generate(frame.begin(), frame.end(), [&] { return static_cast<std::uint16_t>(generator() & 0xFFFU); });
    return frame;
  }

  /** Frames 0 to count - 1 as Mono12p, of which each begins at a byte. */
  std::string stream(unsigned count) const {
    std::string bytes;
    for (unsigned seed = 0; seed < count; ++seed) {
      unsigned kept = 0;
      unsigned bits = 0;
      for (const std::uint16_t pixel : random_frame(seed)) {
        kept |= static_cast<unsigned>(pixel) << bits;
        for (bits += 12; bits >= 8; bits -= 8, kept >>= 8U) {
          bytes.push_back(static_cast<char>(kept & 0xFFU));
        }
      }
      if (bits > 0) {
        bytes.push_back(static_cast<char>(kept));
      }
    }
    return bytes;
  }

  CameraSettings camera_;
  const std::string options_ = " --raw 37x5 --pixel-format Mono12p --layout 45 --format npy -o results ";
};

TEST_F(BatchTest, EveryFrameOfAStreamGivesItsOwnArrays) {
  constexpr unsigned count = 7;
  write("run.raw", stream(count));
  ASSERT_EQ(run("transform run.raw" + options_ + "--jobs 3 --outputs stokes,power,hv,diagonal,azimuth,dolp").exit_code,
            0);
  ASSERT_EQ(run("transform -" + options_ + "--jobs 3 --outputs stokes,azimuth < run.raw").exit_code, 0);
  for (unsigned number = 0; number < count; ++number) {
    SCOPED_TRACE(number);
    const LibraryOutputs expected = transform_by_library(camera_, random_frame(number), 65535);
    for (const std::string stem : {"results/run_00000", "results/stdin_00000"}) {
      const std::string name = stem + std::to_string(number);
      const auto stokes = elements<float>(read(name + "_stokes.npy"), {5, 37, 2});
      ASSERT_EQ(stokes.size(), expected.stokes.size());
      EXPECT_EQ(std::memcmp(stokes.data(), expected.stokes.data(), stokes.size() * sizeof(float)), 0);
      EXPECT_EQ(elements<std::uint16_t>(read(name + "_azimuth.npy"), {5, 37}), expected.azimuth);
    }
  }
  EXPECT_EQ(listing().size(), 2 + count * (6 * 2 + 2 * 2)) << "a text file beside each array";
}

TEST_F(BatchTest, BadFramesAreReportedInTheirPlaceAndTheRestIsDone) {
  for (const unsigned seed : {1U, 2U, 3U}) {
    write_pgm("in/good" + std::to_string(seed) + ".pgm", random_frame(seed), 37, 5, 12);
  }
  write("in/good2_not.pgm", "P5 37 5 4095\ntoo short");
  write("in/notes.txt", "not a frame, and not taken for one");
  const RunResult result =
      run_together("transform 'in/g*.pgm' missing.png in --jobs 2 --outputs azimuth -o results/deeper");
  const std::string& told = result.output;
  EXPECT_EQ(result.exit_code, 1);
  std::size_t before = 0;
  for (const char* line : {"in/good1.pgm: 37 x 5", "in/good2.pgm: 37 x 5", "nerova-polarize: in/good2_not.pgm is cut",
                           "in/good3.pgm: 37 x 5", "nerova-polarize: cannot read missing.png",
                           "5 frames: 3 done, 0 skipped, 2 failed", "nerova-polarize: 2 of 5 frames failed"}) {
    const std::size_t place = told.find(line, before);
    ASSERT_NE(place, std::string::npos) << line << " is not in its place in\n" << told;
    before = place;
  }
  std::set<std::string> outputs;
  for (const auto& entry : fs::directory_iterator(path("results/deeper"))) {
    outputs.insert(entry.path().filename().string());
  }
  EXPECT_EQ(outputs, (std::set<std::string>{"good1_azimuth.png", "good2_azimuth.png", "good3_azimuth.png"}));
}

TEST_F(BatchTest, AStreamThatEndsInsideAFrameGivesAllFramesBefore) {
  const std::string whole = stream(3);
  write("cut.raw", whole.substr(0, whole.size() - 1));
  for (const std::string& source : {"cut.raw" + options_, "-" + options_ + "< cut.raw"}) {
    const RunResult result = run("transform " + source + " --outputs power");
    EXPECT_EQ(result.exit_code, 1);
    EXPECT_NE(result.errors.find("frame 2 is cut short"), std::string::npos) << result.errors;
    EXPECT_NE(result.output.find("2 done, 0 skipped, 1 failed"), std::string::npos) << result.output;
  }
}

TEST_F(BatchTest, OnlyWhatIsMissingOrOutdatedIsDoneAgain) {
  const std::string command = "transform run.raw" + options_ + "--outputs power,hv";
  const std::string finished = "results/run_000001_hv.npy";
  write("run.raw", stream(4));
  // An hour ago: MinGW gives and sets times in whole seconds.
  fs::last_write_time(path("run.raw"), fs::last_write_time(path("run.raw")) - std::chrono::hours(1));
  ASSERT_EQ(run(command).exit_code, 0);
  const std::string right = read(finished);
  const fs::file_time_type time = fs::last_write_time(path(finished));
  write(finished, "of someone else");
  fs::last_write_time(path(finished), time);
  fs::remove(path("results/run_000002_hv.npy"));
  const RunResult resumed = run(command + " --resume");
  EXPECT_EQ(resumed.exit_code, 0) << resumed.errors;
  EXPECT_NE(resumed.output.find("1 done, 3 skipped, 0 failed"), std::string::npos) << resumed.output;
  EXPECT_NE(resumed.output.find("run.raw frame 2: 37 x 5"), std::string::npos) << resumed.output;
  EXPECT_EQ(read(finished), "of someone else");
  EXPECT_EQ(run(command).exit_code, 0);
  EXPECT_EQ(read(finished), right);
  fs::last_write_time(path("run.raw"), fs::last_write_time(path(finished)) + std::chrono::hours(1));
  EXPECT_NE(run(command + " --resume").output.find("4 done, 0 skipped"), std::string::npos);
}

// What is there must have been made in the same way, which each file says of itself.
TEST_F(BatchTest, WhatIsAssumedIsSaidOnceAndNothingWhenQuiet) {
  for (const char* name : {"a.pgm", "b.pgm", "c.pgm"}) {
    write_pgm(name, random_frame(1), 37, 5, 12);
  }
  const std::string command = "transform a.pgm b.pgm c.pgm --outputs power -j 2";
  const std::string told = run(command).errors;
  EXPECT_EQ(told.find("layout 90 assumed"), told.rfind("layout 90 assumed"));
  EXPECT_NE(told.find("layout 90 assumed"), std::string::npos);
  EXPECT_EQ(run(command + " --layout 90").errors, "");
  EXPECT_EQ(run_together(command + " -q").output, "");
  EXPECT_NE(run(command + " -v").errors.find("library "), std::string::npos);
  EXPECT_EQ(run_together("stats a.pgm -q --summary").output.rfind("all 1 frame", 0), 0U);
}

TEST_F(BatchTest, OutputsOfOtherOptionsOrFramesAreMadeAgain) {
  write_pgm("f.pgm", random_frame(1), 37, 5, 12);
  write_pgm("g.pgm", random_frame(2), 37, 5, 12);
  for (const std::string format : {"png", "tiff", "npy"}) {
    SCOPED_TRACE(format);
    const std::string command = "transform f.pgm --outputs stokes,azimuth -o results -f " + format;
    const std::string azimuth = "results/f_azimuth." + format;
    ASSERT_EQ(run(command).exit_code, 0);
    const std::string before = read(azimuth);
    EXPECT_NE(run(command + " --resume").output.find("skipped"), std::string::npos);
    for (const std::string option : {" --layout 0", " --output-max 255", " --origin 1,0", " --roi 0,0,36,5"}) {
      SCOPED_TRACE(option);
      EXPECT_EQ(run(command + option + " --resume").output.find("skipped"), std::string::npos);
      EXPECT_TRUE(read(azimuth) != before);
      EXPECT_NE(run(command + option + " --resume").output.find("skipped"), std::string::npos);
      EXPECT_EQ(run(command).output.find("skipped"), std::string::npos) << "without --resume all is made again";
      EXPECT_TRUE(read(azimuth) == before);
    }
    // Another frame of the same name that is older than the outputs, as copying with its time leaves it.
    const fs::file_time_type time = fs::last_write_time(path("f.pgm")) - std::chrono::hours(1);
    fs::rename(path("f.pgm"), path("kept"));
    fs::copy_file(path("g.pgm"), path("f.pgm"));
    fs::last_write_time(path("f.pgm"), time);
    EXPECT_EQ(run(command + " --resume").output.find("skipped"), std::string::npos);
    EXPECT_TRUE(read(azimuth) != before);
    fs::rename(path("kept"), path("f.pgm"));
  }
}

TEST_F(BatchTest, FoldersBelowKeepTheirNames) {
  for (const char* name : {"in/a.pgm", "in/deep/a.pgm", "in/deep/er/b.pgm"}) {
    write_pgm(name, random_frame(1), 37, 5, 12);
  }
  write("out/deep/a_hv.png.partial", "of a run that was killed");
  ASSERT_EQ(run("transform in/ --recursive --outputs hv -o out").exit_code, 0);
  ASSERT_EQ(run("transform out in --recursive --outputs hv -o out --layout 90").exit_code, 1) << "only outputs";
  for (const char* name : {"out/a_hv.png", "out/deep/a_hv.png", "out/deep/er/b_hv.png"}) {
    EXPECT_FALSE(read(name).empty()) << name;
  }
  EXPECT_EQ(listing().size(), 6U + 6U);
  expect_refusal("transform in/deep in/a.pgm --recursive -o in", {"a.pgm", "same names"}, 2);
}

// As a program leaves them that is killed when the array has its name and its texts do not have theirs yet.
TEST_F(BatchTest, TextsOfAnEarlierArrayDoNotCount) {
  write_pgm("f.pgm", random_frame(1), 37, 5, 12);
  const std::string command = "transform f.pgm --outputs azimuth -f npy";
  ASSERT_EQ(run(command).exit_code, 0);
  fs::rename(path("f_azimuth.npy.json"), path("kept"));
  ASSERT_EQ(run(command + " --layout 0").exit_code, 0);
  fs::rename(path("kept"), path("f_azimuth.npy.json"));
  EXPECT_EQ(run(command + " --resume").output.find("skipped"), std::string::npos);
}

TEST_F(BatchTest, EarlierOutputsOutliveFailures) {
  write_pgm("f.pgm", random_frame(1), 37, 5, 12);
  write_pgm("g.pgm", random_frame(2), 37, 5, 12);
  const std::string command = "transform f.pgm g.pgm --layout 45 --outputs power,hv -o results";
  ASSERT_EQ(run(command).exit_code, 0);
  const std::string before = read("results/f_power.png");
  const RunResult refused = run(command + " --no-clobber --output-max 255");
  EXPECT_EQ(refused.exit_code, 1);
  EXPECT_NE(refused.errors.find("results/f_power.png is there already; --no-clobber"), std::string::npos)
      << refused.errors;
  // The second file of f cannot get its name, so the first keeps what it had; g is done.
  fs::remove(path("results/f_hv.png"));
  write("results/f_hv.png/inside", "");
  EXPECT_EQ(run(command + " --output-max 255").exit_code, 1);
  EXPECT_EQ(read("results/f_power.png"), before);
  write("f.pgm", "P5 damaged");
  EXPECT_EQ(run(command).exit_code, 1);
  EXPECT_EQ(read("results/f_power.png"), before);
  EXPECT_EQ(listing(),
            (std::set<std::string>{"f.pgm", "g.pgm", "results", "results/f_hv.png", "results/f_hv.png/inside",
                                   "results/f_power.png", "results/g_hv.png", "results/g_power.png"}));
}

TEST_F(BatchTest, OutputsAreNotTakenForFrames) {
  ASSERT_EQ(run("simulate f.png --size 16x16 --truth .").exit_code, 0);
  for (const std::string format : {"png", "tiff", "npy"}) {
    ASSERT_EQ(run("transform f.png --outputs power,dolp -f " + format).exit_code, 0);
  }
  for (const std::string arguments :
       {"transform . --outputs power -o again", "transform '*.*' --outputs power -o other", "stats ."}) {
    const RunResult result = run(arguments + " --layout 90");
    EXPECT_EQ(result.exit_code, 0) << result.errors;
    EXPECT_NE(result.errors.find("outputs of nerova-polarize and left out"), std::string::npos) << result.errors;
  }
  EXPECT_TRUE(read("again/f_power_power.png").empty());
  for (const std::string output : {"f_power.png", "f_dolp.tiff", "f_power.npy", "f_true_angle.tiff"}) {
    expect_refusal("transform " + output + " -o more", {output + " is no frame", "output"});
  }
}

TEST_F(BatchTest, NothingIsOverwrittenByAnotherFrame) {
  for (const char* name : {"f.pgm", "f_power.pgm", "f_power.png", "one/f.pgm"}) {
    write_pgm(name, random_frame(1), 37, 5, 12);
  }
  write("run.raw", stream(2));
  write("run_000000.raw", stream(1));
  const auto before = listing();
  const std::vector<std::string> clashes = {"f.pgm one/f.pgm -o one/..", "f.pgm f_power.png -o one/..",
                                            "run.raw run_000000.raw" + options_};
  for (const std::string& inputs : clashes) {
    SCOPED_TRACE(inputs);
    const RunResult refused = run("transform " + inputs);
    EXPECT_EQ(refused.exit_code, 2);
    EXPECT_NE(refused.errors.find("--output"), std::string::npos) << refused.errors;
    EXPECT_EQ(listing(), before);
  }
  EXPECT_EQ(run("transform f.pgm f_power.pgm ./f.pgm --outputs power -o results").exit_code, 0);
}

// What lies right of or below a region is mirrored in its last column and row; everywhere else, since the phase follows
// the origin, a region has what the whole frame has there. Only the plugins compute all pixels by one rule.
TEST_F(BatchTest, ARegionHasWhatTheWholeFrameHasThere) {
  if (!plugin_serves()) {
    GTEST_SKIP() << "the built-in kernels compute the last columns by other rules";
  }
  camera_.width = 61;
  camera_.height = 40;
  camera_.origin_x = 3;
  const LibraryOutputs whole = transform_by_library(camera_, random_frame(5), 65535);
  write_pgm("whole.pgm", random_frame(5), 61, 40, 12);
  for (const auto& [x, y] : {std::pair{0, 0}, {1, 0}, {0, 1}, {7, 5}, {44, 31}}) {
    const std::string region = std::to_string(x) + "," + std::to_string(y) + ",17,9";
    SCOPED_TRACE(region);
    ASSERT_EQ(run("transform whole.pgm --outputs azimuth,dolp --layout 45 --origin 3,0 --format npy --roi " + region)
                  .exit_code,
              0);
    const auto azimuth = elements<std::uint16_t>(read("whole_azimuth.npy"), {9, 17});
    const auto dolp = elements<std::uint16_t>(read("whole_dolp.npy"), {9, 17});
    ASSERT_EQ(azimuth.size(), 17U * 9U);
    for (std::size_t row = 0; row < 8; ++row) {
      for (std::size_t column = 0; column < 16; ++column) {
        const std::size_t place = (static_cast<std::size_t>(y) + row) * 61 + static_cast<std::size_t>(x) + column;
        ASSERT_EQ(azimuth[row * 17 + column], whole.azimuth[place]) << column << ", " << row;
        ASSERT_EQ(dolp[row * 17 + column], whole.dolp[place]) << column << ", " << row;
      }
    }
  }
}

}  // namespace
}  // namespace nerova_zel::test
