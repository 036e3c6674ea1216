// What only systems of this kind can put the logger through.

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <ctime>
#include <fstream>

#include "logger/log_directory.h"

namespace {

std::time_t clock_ahead = 0;  // seconds

}  // namespace

// Defined here, it serves the logger as well.
extern "C" __attribute__((visibility("default"))) int clock_gettime(clockid_t clock, timespec* time) noexcept {
  const auto result = static_cast<int>(syscall(SYS_clock_gettime, clock, time));
  time->tv_sec += clock == CLOCK_REALTIME ? clock_ahead : 0;
  return result;
}

namespace nerova_zel::test {
namespace {

using Posix = LogDirectory;

TEST_F(Posix, FullDiskIsAFailureAndNothingElse) {
  configure("file = /dev/full\nmax_size = 10\n");
  void* const log = get_log();
  EXPECT_NE(write(log, "lost"), 0);
  EXPECT_NE(write(log, "lost"), 0);
  free_log();
}

TEST_F(Posix, HalfALineIsTakenBack) {
  configure("pattern = %v\n");
  void* const log = get_log();
  EXPECT_EQ(write(log, "first"), 0);
  rlimit before = {};
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
  rlimit limit = before;
  limit.rlim_cur = 10;
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
  EXPECT_NE(write(log, "crosses the limit"), 0);
  EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
  std::signal(SIGXFSZ, handler);
  EXPECT_EQ(write(log, "last"), 0);
  free_log();
  EXPECT_EQ(lines_of("nerova_zel.log"), (Lines{"first", "last"}));
}

TEST_F(Posix, RemovedFolderMayComeBack) {
  configure("file = folder/a.log\npattern = %v\n");
  std::filesystem::create_directory("folder");
  void* const log = get_log();
  EXPECT_EQ(write(log, "removed"), 0);
  std::filesystem::remove_all("folder");
  EXPECT_NE(write(log, "lost"), 0);
  std::filesystem::create_directory("folder");
  EXPECT_EQ(write(log, "again"), 0);
  free_log();
  EXPECT_EQ(lines_of("folder/a.log"), Lines{"again"});
}

TEST_F(Posix, PipeIsRefusedAtOnce) {
  configure("file = pipe\n");
  ASSERT_EQ(mkfifo("pipe", 0600), 0);
  void* const log = get_log();
  EXPECT_NE(write(log, "nobody reads"), 0);
  const int reader = open("pipe", O_RDONLY | O_NONBLOCK);
  EXPECT_NE(write(log, "somebody reads"), 0);
  close(reader);
  free_log();
}

TEST_F(Posix, LinkIsRotatedWhereItLeads) {
  configure("file = link.log\npattern = %v\nmax_size = 3\n");
  std::filesystem::create_directory("elsewhere");
  std::ofstream("elsewhere/real.log") << "1\n";
  std::filesystem::create_symlink("elsewhere/real.log", "link.log");
  EXPECT_EQ(write(get_log(), "2"), 0);
  free_log();
  EXPECT_EQ(numbers_of("elsewhere/real.log"), (std::vector<int>{1, 2}));
  EXPECT_EQ(lines_of("link.log"), Lines{"2"});
}

TEST_F(Posix, ForkedProcessWritesNoneOfItsParentsLines) {
  configure("level = 7\nflush = buffer\npattern = %v\n");
  void* const log = get_log();
  EXPECT_EQ(write(log, "parent", 7), 0);
  const pid_t child = fork();
  ASSERT_NE(child, -1);
  if (child == 0) {
    write(log, "child", 7);
    free_log();
    _exit(0);
  }
  int status = -1;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  free_log();
  EXPECT_EQ(lines_of("nerova_zel.log"), (Lines{"child", "parent"}));
}

TEST_F(Posix, BufferIsWrittenWhenTheClockIsSetBack) {
  configure("level = 7\nflush = buffer\npattern = %v\n");
  void* const log = get_log();
  clock_ahead = 3600;
  EXPECT_EQ(write(log, "1", 7), 0);
  clock_ahead = 0;
  EXPECT_EQ(write(log, "2", 7), 0);
  EXPECT_EQ(numbers_of("nerova_zel.log"), (std::vector<int>{1, 2}));
  free_log();
}

TEST_F(Posix, UnreadableConfigurationIsReported) {
  std::filesystem::create_symlink("nerova_zel_logger.cfg", "nerova_zel_logger.cfg");
  EXPECT_NE(get_log(), nullptr);
  free_log();
  const Lines lines = lines_of("nerova_zel.log");
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_NE(lines[0].find("ERROR: nerova_zel_logger.cfg: the file cannot be read"), std::string::npos) << lines[0];
}

}  // namespace
}  // namespace nerova_zel::test
