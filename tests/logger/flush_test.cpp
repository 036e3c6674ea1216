#include <chrono>
#include <thread>

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

TEST_F(Flush, BufferIsWrittenOnErrorsWhenFullAndAfterASecond) {
  configure("level = 7\npattern = %v\nflush = buffer\n");
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
  EXPECT_EQ(lines_of("nerova_zel.log").size(), 3U);
  EXPECT_EQ(write(log, kilobyte, 7), 0);
  EXPECT_EQ(lines_of("nerova_zel.log").size(), 67U);

  EXPECT_EQ(write(log, "late", 7), 0);
  std::this_thread::sleep_for(std::chrono::milliseconds(1050));
  EXPECT_EQ(write(log, "later", 7), 0);
  EXPECT_EQ(lines_of("nerova_zel.log").size(), 69U);
  free_log();
}

TEST_F(Flush, BufferIsWrittenWhenAProgramEndsWithoutFreeing) {
  configure("level = 7\nflush = buffer\n");
  EXPECT_EQ(run_log_writer("M", 10), 0);
  EXPECT_EQ(lines_of("nerova_zel.log").size(), 10U);
}

}  // namespace
}  // namespace nerova_zel::test
