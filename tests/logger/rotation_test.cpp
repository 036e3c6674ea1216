#include <chrono>
#include <fstream>

#include "logger/log_directory.h"
#include "logger/other_process.h"

namespace nerova_zel::test {
namespace {

using Rotation = LogDirectory;

const std::string numbers_only = "pattern = %v\n";

std::string four_digits(int number) { return std::to_string(number + 1000); }

TEST_F(Rotation, KeepsTheNewestFilesBelowTheirSize) {
  struct Case {
    const char* settings;
    int files;  ///< of which numbered ones all but one
    int lines;  ///< in a full file
  };
  for (const Case& expected :
       {Case{"max_size = 50\nkept_files = 3\n", 4, 10}, Case{"max_size = 49\nkept_files = 0", 1, 9},
        Case{"max_size = 3\nkept_files = 1\n", 2, 1}, Case{"max_size = 0\n", 1, 100}}) {
    SCOPED_TRACE(expected.settings);
    void* const log = get_log(numbers_only + expected.settings);
    for (int i = 0; i < 100; ++i) {
      EXPECT_EQ(write(log, four_digits(i)), 0);
      EXPECT_TRUE(i > 0 || files_of("nerova_zel.log").size() == 1);  // also if one record alone is too large
    }
    free_log();
    const std::vector<int> numbers = numbers_of("nerova_zel.log");
    for (int file = 1; file < expected.files; ++file) {
      EXPECT_EQ(lines_of("nerova_zel.log." + std::to_string(file)).size(), expected.lines);
    }
    EXPECT_FALSE(std::filesystem::exists("nerova_zel.log." + std::to_string(expected.files)));
    const auto newest = static_cast<int>(lines_of("nerova_zel.log").size());
    EXPECT_LE(newest, expected.lines);
    ASSERT_EQ(numbers.size(), (expected.files - 1) * expected.lines + newest);
    for (std::size_t i = 0; i < numbers.size(); ++i) {
      EXPECT_EQ(numbers[numbers.size() - 1 - i], 1099 - static_cast<int>(i));
    }
    for (const auto& entry : std::filesystem::directory_iterator(".")) {
      std::filesystem::remove(entry);
    }
  }
}

TEST_F(Rotation, ThatIsImpossibleLosesNothing) {
  configure(numbers_only + "max_size = 10\nkept_files = 2\n");
  std::filesystem::create_directories("nerova_zel.log.2/in the way");
  void* const log = get_log();
  for (int i = 0; i < 10; ++i) {
    EXPECT_EQ(write(log, four_digits(i)), 0);
  }
  EXPECT_EQ(numbers_of("nerova_zel.log").size(), 10U);
  EXPECT_GT(lines_of("nerova_zel.log").size(), 2U);
  std::filesystem::remove_all("nerova_zel.log.2");
  EXPECT_EQ(write(log, four_digits(10)), 0);
  free_log();
  EXPECT_EQ(numbers_of("nerova_zel.log").size(), 11U);
  EXPECT_EQ(lines_of("nerova_zel.log").size(), 1U);
}

TEST_F(Rotation, GoesNoFurtherThanARefusedRenaming) {
  void* const log = get_log(numbers_only + "max_size = 3\nkept_files = 9\n");
  const auto expect_all_after = [&](int number) {
    EXPECT_EQ(write(log, four_digits(number)), 0);
    EXPECT_EQ(numbers_of("nerova_zel.log").size(), static_cast<std::size_t>(number + 1));
  };
  for (int i = 0; i < 4; ++i) {
    expect_all_after(i);
  }
  {
    const FixedName oldest("nerova_zel.log.3");
    expect_all_after(4);
  }
  expect_all_after(5);
  EXPECT_EQ(files_of("nerova_zel.log").size(), 5U);
  free_log();
}

TEST_F(Rotation, IsLeftToTheProcessThatHoldsTheLock) {
  void* const log = get_log(numbers_only + "max_size = 3\n");
  EXPECT_EQ(write(log, "1"), 0);
  {
    const HeldRotation rotation("nerova_zel.log");
    EXPECT_EQ(write(log, "2"), 0);
    EXPECT_EQ(files_of("nerova_zel.log").size(), 1U);
  }
  EXPECT_EQ(write(log, "3"), 0);
  free_log();
  EXPECT_EQ(files_of("nerova_zel.log").size(), 2U);
  EXPECT_EQ(numbers_of("nerova_zel.log"), (std::vector<int>{1, 2, 3}));
}

#if defined(_WIN32)

TEST_F(Rotation, AppendingWaitsOnceForAStoppedProcess) {
  using Clock = std::chrono::steady_clock;
  void* const log = get_log(numbers_only);
  EXPECT_EQ(write(log, "1"), 0);
  const HeldAppend append("nerova_zel.log");
  const auto start = Clock::now();
  EXPECT_EQ(write(log, "2"), 0);
  const auto gave_up = Clock::now();
  EXPECT_EQ(write(log, "3"), 0);
  EXPECT_GE(gave_up - start, std::chrono::milliseconds(1900));
  EXPECT_LT(Clock::now() - gave_up, std::chrono::milliseconds(1900));
  free_log();
  EXPECT_EQ(lines_of("nerova_zel.log"), (Lines{"1", "2", "3"}));
}

#endif

TEST_F(Rotation, FollowsTheNameWhenOthersMoveTheFile) {
  void* const log = get_log(numbers_only);
  EXPECT_EQ(write(log, "1"), 0);
  std::filesystem::rename("nerova_zel.log", "moved.log");
  EXPECT_EQ(write(log, "2"), 0);
  std::filesystem::rename("nerova_zel.log", "moved too.log");
  std::ofstream("nerova_zel.log", std::ios::binary) << "3\n";
  EXPECT_EQ(write(log, "4"), 0);
  free_log();
  EXPECT_EQ(lines_of("moved.log"), Lines{"1"});
  EXPECT_EQ(lines_of("moved too.log"), Lines{"2"});
  EXPECT_EQ(lines_of("nerova_zel.log"), (Lines{"3", "4"}));
}

TEST_F(Rotation, StaysInTheDirectoryOfTheFirstRecord) {
  configure(numbers_only + "max_size = 6\n");
  std::filesystem::create_directory("first");
  std::filesystem::create_directory("second");
  void* const log = get_log();
  std::filesystem::current_path("first");
  EXPECT_EQ(write(log, four_digits(0)), 0);
  std::filesystem::current_path("../second");
  EXPECT_EQ(write(log, four_digits(1)), 0);
  free_log();
  EXPECT_TRUE(std::filesystem::is_empty("."));
  EXPECT_EQ(numbers_of("../first/nerova_zel.log"), (std::vector<int>{1000, 1001}));
}

}  // namespace
}  // namespace nerova_zel::test
