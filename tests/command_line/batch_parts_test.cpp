// Parts of a batch that no command shows by itself: progress, patterns.
#include "batch/input_files.h"
#include "batch/progress_bar.h"
#include "tool_run.h"

namespace nerova_zel::test {
namespace {

TEST(Progress, TellsRateAndTimeThatIsLeft) {
  // 40 of 100 finished, of which 30 took work in 10 s: 3 a second, so that 60 take 20 s.
  EXPECT_EQ(progress_line({40, 30, 100, 10.0}, 42), "40 of 100 frames, 3.00 frames/s, 0:20 left");
  EXPECT_EQ(progress_line({40, 30, 100, 10.0}, 61), "[####......] 40 of 100 frames, 3.00 frames/s, 0:20 left");
  EXPECT_EQ(progress_line({1, 1, 7300, 1.0}, 50), "1 of 7300 frames, 1.00 frames/s, 2:01:39 left");
  EXPECT_EQ(progress_line({50, 50, std::nullopt, 2.0}, 80), "50 frames, 25.0 frames/s");
  EXPECT_EQ(progress_line({5, 0, 10, 2.0}, 40), "5 of 10 frames");
  EXPECT_EQ(progress_line({5, 0, 10, 2.0}, 6), "5 of 1");
}

using PatternTest = ToolTest;

TEST_F(PatternTest, FitTheLastPartOfAPath) {
  for (const char* name : {"in/a1.png", "in/a12.png", "in/b1.png", "in/a[1].png", "in/.a3.png", "in/deep/a1.png"}) {
    write(name, "");
  }
  using Paths = std::vector<std::string>;
  const auto found = [](const char* pattern) {
    Paths paths = expand_argument(pattern, {}).paths;
    for (std::string& path : paths) {
      path = std::filesystem::path(path).generic_string();
    }
    return paths;
  };
  EXPECT_EQ(found("in/a?.png"), Paths{"in/a1.png"});
  EXPECT_EQ(found("in/a*.png"), (Paths{"in/a1.png", "in/a12.png", "in/a[1].png"}));
  EXPECT_EQ(found("in/a[1]*"), Paths{"in/a[1].png"});
  EXPECT_EQ(found("in/*1.png"), (Paths{"in/a1.png", "in/b1.png"}));
  EXPECT_EQ(expand_argument("in", {}).paths.size(), 5U);
  EXPECT_EQ(found("in/none.png"), Paths{"in/none.png"});
  EXPECT_ANY_THROW(expand_argument("in/c*", {}));
  EXPECT_ANY_THROW(expand_argument("in", {true}));
}

}  // namespace
}  // namespace nerova_zel::test
