#include "logger/log_directory.h"

namespace nerova_zel::test {
namespace {

using Flush = LogDirectory;

TEST_F(Flush, RecordsLeaveAtOnceUnlessBuffered) {
  for (const std::string policy : {"record", "disk", "buffer"}) {
    SCOPED_TRACE(policy);
    const std::string file = "a.log";
    configure("level = 7\nfile = a.log\nflush = " + policy);
    EXPECT_EQ(write(get_log(), "message", 7), 0);
    EXPECT_EQ(lines_of(file).size(), policy == "buffer" ? 0U : 1U);
    free_log();
    EXPECT_EQ(lines_of(file).size(), 1U);
    std::filesystem::remove(file);
  }
}

TEST_F(Flush, BufferIsWrittenOnErrorsAndWhenFull) {
  configure("level = 7\npattern = %v\nflush = buffer\nmax_size = 0\n");
  void* const log = get_log();
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

TEST_F(Flush, BufferIsWrittenWhenAProgramEndsWithoutFreeing) {
  configure("level = 7\nflush = buffer\n");
  EXPECT_EQ(run_log_writer("M", 10), 0);
  EXPECT_EQ(lines_of("nerova_zel.log").size(), 10U);
}

}  // namespace
}  // namespace nerova_zel::test
