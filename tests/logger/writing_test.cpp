#include "logger/log_directory.h"

namespace nerova_zel::test {
namespace {

using Writing = LogDirectory;

TEST_F(Writing, BufferIsWrittenOnErrorsAndWhenFull) {
  void* const log = get_log("level = 7\npattern = %v\nflush = buffer\nmax_size = 0\n");
  EXPECT_EQ(write(log, "1", 7), 0);
  EXPECT_EQ(write(log, "2", 3), 0);
  EXPECT_EQ(lines_of("nerova_zel.log").size(), 0U);
  EXPECT_EQ(write(log, "3", 2), 0);
  EXPECT_EQ(numbers_of("nerova_zel.log"), (std::vector<int>{1, 2, 3}));

  const std::string kilobyte(1023, '1');
  for (int i = 0; i < 63; ++i) {
    EXPECT_EQ(write(log, kilobyte, 7), 0);
  }
  EXPECT_EQ(write(log, kilobyte.substr(1), 7), 0);
  EXPECT_EQ(lines_of("nerova_zel.log").size(), 3U);
  EXPECT_EQ(write(log, "", 7), 0);
  EXPECT_EQ(lines_of("nerova_zel.log").size(), 68U);
  free_log();

  std::filesystem::remove("nerova_zel.log");
  configure("level = 7\npattern = %v\nflush = buffer\nmax_size = 4\n");  // no more than a file takes
  for (const std::size_t written : {0U, 2U}) {
    EXPECT_EQ(write(get_log(), "1", 7), 0);
    EXPECT_EQ(lines_of("nerova_zel.log").size(), written);
  }
  free_log();
  free_log();
}

TEST_F(Writing, DestinationRefusesRecordsUntilItCanBeWritten) {
  void* const log = get_log("a bad line, whose report is lost\nfile = missing/folder/a.log\npattern = %v\n");
  ASSERT_NE(log, nullptr);
  EXPECT_EQ(write(log, "lost"), 1);
  std::filesystem::create_directories("missing/folder/a.log/in the way");
  EXPECT_EQ(write(log, "lost"), 1);
  std::filesystem::remove_all("missing/folder/a.log");
  EXPECT_EQ(write(log, "written"), 0);
  free_log();
  EXPECT_EQ(lines_of("missing/folder/a.log"), Lines{"written"});
}

}  // namespace
}  // namespace nerova_zel::test
