// The command record, from a camera on the loopback interface.
#include "command_line/tool_run.h"
#include "served_camera.h"

namespace nerova_zel::test {
namespace {

/** The camera's own file lies in a folder of its own. */
class RecordCommand : public ToolTest {
 protected:
  RecordCommand() {
    std::filesystem::create_directory("camera");
    camera_ = std::make_unique<ServedCamera>("camera");
  }

  std::unique_ptr<ServedCamera> camera_;
};

TEST_F(RecordCommand, WritesFramesAndSaysWhatTheyAre) {
  const RunResult first = run("record 127.0.0.1 -o r.raw -n 3 --layout 45");
  EXPECT_EQ(first.exit_code, 0) << first.errors;
  EXPECT_EQ(first.output.find("r.raw: 3 frames of 512 x 512 pixels in Mono8, layout 45, "), 0U) << first.output;
  EXPECT_NE(first.output.find(" frames/s; 0 incomplete, 0 dropped\n"), std::string::npos) << first.output;
  EXPECT_EQ(first.errors, "");
  EXPECT_NE(read("r.raw.json").find("\"layout\": 45"), std::string::npos);
  expect_refusal("record 127.0.0.1 -o r.raw -n 2 -q", {"r.raw", "--force"});
  const RunResult second = run("record 127.0.0.1 -o r.raw -n 2 --force --exposure 3000 --pixel-format Mono12p");
  EXPECT_EQ(second.exit_code, 0) << second.errors;
  EXPECT_NE(second.output.find(": 2 frames of 512 x 512 pixels in Mono12p, layout 90"), std::string::npos);
  EXPECT_NE(second.errors.find("layout 90 assumed"), std::string::npos) << second.errors;
  EXPECT_EQ(read("r.raw").size(), std::size_t{2} * 512 * 512 * 12 / 8);
  EXPECT_EQ(run("record 127.0.0.1 -o q.raw -n 1 -q").output, "");
}

TEST_F(RecordCommand, RefusesWhatMakesNoSense) {
  const std::pair<const char*, const char*> cases[] = {{"", "--output FILE.raw is missing"},
                                                       {"-o r.raw --count 0", "--count 0"},
                                                       {"-o r.raw --exposure 0", "--exposure must be above 0"},
                                                       {"-o r.raw --frame-rate 2e6", "--frame-rate must be"},
                                                       {"-o r.raw --timeout 0.05", "--timeout must be 0.1 to"}};
  for (const auto& [options, words] : cases) {
    expect_refusal(std::string("record 127.0.0.1 ") + options, {words}, 2);
  }
  camera_->end();
  expect_refusal("record 127.0.0.1 -o r.raw -n 1 -q", {"127.0.0.1"});
}

}  // namespace
}  // namespace nerova_zel::test
