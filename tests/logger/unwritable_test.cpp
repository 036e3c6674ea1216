#include "logger/log_directory.h"

namespace nerova_zel::test {
namespace {

using Unwritable = LogDirectory;

TEST_F(Unwritable, DestinationRefusesRecordsUntilItCanBeWritten) {
  configure("a bad line, whose report is lost\nfile = missing/folder/a.log\npattern = %v\n");
  void* const log = get_log();
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
