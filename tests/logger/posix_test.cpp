// What only systems of this kind can put the logger through.

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <fstream>
#include <optional>

#include "logger/log_directory.h"

namespace {

/** What the system does from now on. */
struct System {
  std::optional<timespec> time;  ///< when the clock stands still
  int interruptions = 0;         ///< of the next writes
  std::size_t most_written = SIZE_MAX;
  bool others_append = false;  ///< a line after each write
  int disk_result = 0;
  int disk_calls = 0;
};

System system_now;

}  // namespace

// Defined here, these serve the logger as well.
#define SERVES_ALL extern "C" __attribute__((visibility("default")))

SERVES_ALL int clock_gettime(clockid_t clock, timespec* time) noexcept {
  const auto result = static_cast<int>(syscall(SYS_clock_gettime, clock, time));
  if (clock == CLOCK_REALTIME && system_now.time) {
    *time = *system_now.time;
  }
  return result;
}

SERVES_ALL ssize_t write(int file, const void* data, std::size_t size) {
  if (system_now.interruptions > 0) {
    --system_now.interruptions;
    errno = EINTR;
    return -1;
  }
  const ssize_t written = syscall(SYS_write, file, data, std::min(size, system_now.most_written));
  if (system_now.others_append) {
    const int other = open("nerova_zel.log", O_WRONLY | O_APPEND);
    syscall(SYS_write, other, "other\n", 6);
    close(other);
  }
  return written;
}

SERVES_ALL int fdatasync(int /*file*/) {
  ++system_now.disk_calls;
  return system_now.disk_result;
}

namespace nerova_zel::test {
namespace {

class Posix : public LogDirectory {
 protected:
  ~Posix() override { system_now = {}; }
};

TEST_F(Posix, FullDiskIsAFailureAndNothingElse) {
  void* const log = get_log("file = /dev/full\nmax_size = 10\n");
  EXPECT_EQ(write(log, "lost"), 1);
  EXPECT_EQ(write(log, "lost"), 1);
  free_log();
}

TEST_F(Posix, HalfALineIsTakenBackUnlessOthersHaveAppended) {
  void* const log = get_log("pattern = %v\n");
  system_now.most_written = 1;
  EXPECT_EQ(write(log, "lost"), 1);
  system_now = {};
  system_now.interruptions = 2;
  EXPECT_EQ(write(log, ""), 0);
  EXPECT_EQ(lines_of("nerova_zel.log"), Lines{""});
  using std::filesystem::perms;
  EXPECT_EQ(std::filesystem::status("nerova_zel.log").permissions() & perms::owner_all,
            perms::owner_read | perms::owner_write);
  system_now.most_written = 4;
  system_now.others_append = true;
  EXPECT_EQ(write(log, "half a line"), 1);
  free_log();
  EXPECT_EQ(lines_of("nerova_zel.log"), (Lines{"", "halfother"}));
}

TEST_F(Posix, DiskIsWaitedForOnlyWhereAskedFor) {
  for (const bool disk : {false, true}) {
    void* const log = get_log(disk ? "flush = disk\n" : "flush = record\n");
    system_now = {};
    EXPECT_EQ(write(log, "written"), 0);
    EXPECT_EQ(system_now.disk_calls, disk ? 1 : 0);
    system_now.disk_result = -1;
    EXPECT_EQ(write(log, "written or lost"), disk ? 1 : 0);
    free_log();
  }
}

TEST_F(Posix, PipeIsRefusedAtOnce) {
  configure("file = pipe\n");
  ASSERT_EQ(mkfifo("pipe", 0600), 0);
  void* const log = get_log();
  EXPECT_EQ(write(log, "nobody reads"), 1);
  const int reader = open("pipe", O_RDONLY | O_NONBLOCK);
  EXPECT_EQ(write(log, "somebody reads"), 1);
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

TEST_F(Posix, FolderThatIsGoneIsAFailureUntilItIsBack) {
  std::filesystem::create_directory("folder");
  void* const log = get_log("file = folder/file.log\npattern = %v\n");
  EXPECT_EQ(write(log, "1"), 0);
  std::filesystem::remove_all("folder");
  EXPECT_EQ(write(log, "2"), 1);
  std::filesystem::create_directory("folder");
  EXPECT_EQ(write(log, "3"), 0);
  free_log();
  EXPECT_EQ(lines_of("folder/file.log"), Lines{"3"});
}

TEST_F(Posix, WhatCannotBeExaminedIsNotRemoved) {
  std::filesystem::create_symlink("nerova_zel.log.1", "nerova_zel.log.1");
  void* const log = get_log("pattern = %v\nmax_size = 3\n");
  EXPECT_EQ(write(log, "1"), 0);
  EXPECT_EQ(write(log, "2"), 0);
  free_log();
  EXPECT_TRUE(std::filesystem::is_symlink("nerova_zel.log.1"));
  EXPECT_EQ(lines_of("nerova_zel.log"), (Lines{"1", "2"}));
}

TEST_F(Posix, ForkedProcessWritesNoneOfItsParentsLines) {
  void* const log = get_log("level = 7\nflush = buffer\npattern = %v\n");
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

TEST_F(Posix, TimesAreInUtcToTheMillisecond) {
  configure("pattern = %Y-%m-%dT%H:%M:%S.%e %E\n");
  system_now.time = timespec{1709251199, 999999999};
  EXPECT_EQ(write(get_log(), ""), 0);
  free_log();
  EXPECT_EQ(lines_of("nerova_zel.log"), Lines{"2024-02-29T23:59:59.999 1709251199"});
}

TEST_F(Posix, BufferIsWrittenAfterASecondAndWhenTheClockIsSetBack) {
  void* const log = get_log("level = 7\nflush = buffer\npattern = %v\n");
  const auto expect_lines_after = [&](std::size_t lines, std::time_t seconds, long nanoseconds) {
    system_now.time = timespec{seconds, nanoseconds};
    EXPECT_EQ(write(log, "", 7), 0);
    EXPECT_EQ(lines_of("nerova_zel.log").size(), lines);
  };
  expect_lines_after(0, 1000, 0);
  expect_lines_after(0, 1000, 999999999);
  expect_lines_after(3, 1001, 0);
  expect_lines_after(3, 1001, 1);
  expect_lines_after(5, 1001, 0);
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
