#include <set>
#include <thread>

#include "logger/log_directory.h"
#include "support/failing_allocation.h"
#include "support/module_file.h"

namespace nerova_zel::test {
namespace {

using Sharing = LogDirectory;

TEST_F(Sharing, EachPairOfNamesHasOneLog) {
  void* const log = get_log("pattern = %n\n");
  EXPECT_EQ(get_log(), log);
  void* const other_module = logger.get_log("N", "", "nerova_zel_logger.cfg");
  void* const other_second = logger.get_log("M", "second", "nerova_zel_logger.cfg");
  EXPECT_EQ((std::set<void*>{log, other_module, other_second}).size(), 3U);
  for (void* const each : {log, other_module, other_second}) {
    EXPECT_EQ(write(each, ""), 0);
  }
  EXPECT_EQ(lines_of("nerova_zel.log"), (Lines{"M", "N", "M/second"}));
  free_log();
  free_log();
  logger.free_log("N", "");
  logger.free_log("M", "second");
}

TEST_F(Sharing, LastFreeClosesTheLog) {
  void* const log = get_log("file = first.log\n");
  get_log();
  configure("file = second.log\n");
  free_log();
  logger.free_log("unknown", "");
  logger.free_log("M", "unknown");
  EXPECT_EQ(get_log(), log);  // still the one that knows the first configuration
  EXPECT_EQ(write(log, ""), 0);
  free_log();
  free_log();
  free_log();  // one too many
  EXPECT_EQ(write(get_log(), ""), 0);
  free_log();
  EXPECT_EQ(lines_of("first.log").size(), 1U);
  EXPECT_EQ(lines_of("second.log").size(), 1U);
}

TEST_F(Sharing, ExhaustedMemoryMiscountsNoLog) {
  watch_allocations(NEROVA_LOGGER);
  constexpr char module[] = "a module whose name takes memory";
  const auto log_of_module = [&] { return logger.get_log(module, "", "nerova_zel_logger.cfg"); };
  bool happened = true;
  for (int number = 0; happened; ++number) {
    SCOPED_TRACE(number);
    configure("a bad line\nfile = first.log\n");
    {
      const FailingAllocation failing(number, FailingAllocation::Extent::Once);
      log_of_module();
      happened = failing.happened();
    }
    logger.free_log(module, "");

    configure("file = second.log\n");
    void* const log = log_of_module();
    {
      const FailingAllocation failing(0, FailingAllocation::Extent::Once);
      EXPECT_EQ(log_of_module(), log);  // or the next free would take the first reference
    }
    logger.free_log(module, "");
    EXPECT_EQ(log_of_module(), log);
    EXPECT_EQ(write(log, ""), 0);
    logger.free_log(module, "");
    logger.free_log(module, "");
    EXPECT_EQ(lines_of("second.log").size(), 1U);
    std::filesystem::remove("second.log");
  }
}

TEST_F(Sharing, ThreadsGetWriteAndFreeAtWill) {
  configure("pattern = %v\nmax_size = 2K\nkept_files = 999\n");
  constexpr int threads = 4;
  constexpr int rounds = 50;
  constexpr int records = 10;
  std::vector<std::thread> workers;
  workers.reserve(threads);
  for (int thread = 0; thread < threads; ++thread) {
    workers.emplace_back([this, thread] {
      for (int round = 0; round < rounds; ++round) {
        void* const log = get_log();
        for (int record = 0; record < records; ++record) {
          EXPECT_EQ(write(log, std::to_string((thread * rounds + round) * records + record)), 0);
        }
        free_log();
      }
    });
  }
  for (std::thread& worker : workers) {
    worker.join();
  }
  const std::vector<int> numbers = numbers_of("nerova_zel.log");
  const std::set<int> distinct(numbers.begin(), numbers.end());
  EXPECT_EQ(numbers.size(), threads * rounds * records);
  EXPECT_EQ(distinct.size(), numbers.size());
  EXPECT_EQ(*distinct.rbegin(), threads * rounds * records - 1);
}

// What a template library defines for the whole process would keep it loaded.
TEST(Unload, LeavesNothingBehind) {
  {
    const LoadedLogger logger(NEROVA_LOGGER);
    logger.get_log("M", "", "missing.cfg");
    logger.free_log("M", "");
  }
  EXPECT_FALSE(module_is_loaded(NEROVA_LOGGER));
}

}  // namespace
}  // namespace nerova_zel::test
