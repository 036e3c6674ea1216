#include <map>
#include <thread>

#include "logger/log_directory.h"

namespace nerova_zel::test {
namespace {

constexpr char names[] = {'A', 'B', 'C', 'D'};
constexpr int records = 3000;

class Processes : public LogDirectory {
 protected:
  /** One process for each name, all at once. */
  static void run() {
    std::vector<std::thread> workers;
    for (const char name : names) {
      workers.emplace_back([name] { EXPECT_EQ(run_log_writer(std::string(1, name), records), 0); });
    }
    for (std::thread& worker : workers) {
      worker.join();
    }
  }

  /** Each line is one that a process wrote, each process's in the order in which it wrote them, and none is missing. */
  static void expect_all_records(const std::vector<std::string>& files) {
    std::map<char, int> next;
    for (const std::string& file : files) {
      for (const std::string& line : lines_of(file)) {
        const char name = line.empty() ? '?' : line[0];
        const int number = next[name]++;
        EXPECT_EQ(line, std::string(1, name) + ' ' + std::to_string(number) + ' ' +
                            std::string(static_cast<std::size_t>(number % 97), name))
            << "in " << file;
        if (HasFailure()) {
          return;
        }
      }
    }
    for (const char name : names) {
      EXPECT_EQ(next[name], records) << name;
    }
    EXPECT_EQ(next.size(), std::size(names));
  }
};

TEST_F(Processes, ShareAFileThatTheyRotate) {
  for (const std::string flush : {"record", "buffer"}) {
    SCOPED_TRACE(flush);
    configure("level = 7\npattern = %n %v\nmax_size = 4K\nkept_files = 999\nflush = " + flush);
    run();
    const std::vector<std::string> files = files_of("nerova_zel.log");
    EXPECT_GT(files.size(), 10U);
    expect_all_records(files);
    for (const std::string& file : files) {
      if (flush == "record" && file != files.back()) {
        EXPECT_GT(std::filesystem::file_size(file), 4096U - 128U) << file << " was rotated before its time";
      }
      std::filesystem::remove(file);
    }
  }
}

}  // namespace
}  // namespace nerova_zel::test
