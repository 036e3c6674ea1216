#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "logger/loaded_logger.h"
#include "support/folder.h"

namespace nerova_zel::test {

using Lines = std::vector<std::string>;

/** The lines of a file in the working directory; none when it is missing. */
Lines lines_of(const std::string& file);

/** The rotated files from the oldest on, then the file itself. */
std::vector<std::string> files_of(const std::string& file);

/** The numbers that the lines of all these files consist of. */
std::vector<int> numbers_of(const std::string& file);

/** In a process of its own; returns what that returns. Numbered records of level 7, the log not freed. */
int run_log_writer(const std::string& module_name, int records);

/** Tests in a new, empty working directory with the logger loaded. */
class LogDirectory : public testing::Test {
 protected:
  LogDirectory() { std::filesystem::current_path(folder_.path()); }
  ~LogDirectory() override { std::filesystem::current_path(before_); }

  static void configure(const std::string& text);

  /** Of module "M". */
  void* get_log() const { return logger.get_log("M", "", "nerova_zel_logger.cfg"); }
  void* get_log(const std::string& configuration) const {
    configure(configuration);
    return get_log();
  }
  void free_log() const { logger.free_log("M", ""); }
  std::int32_t write(void* log, const std::string& message, std::int32_t level = 2) const {
    return logger.log(log, level, "source.cpp", 7, "function", message.c_str());
  }

  const LoadedLogger logger{NEROVA_LOGGER};

 private:
  const std::filesystem::path before_ = std::filesystem::current_path();
  const Folder folder_;
};

}  // namespace nerova_zel::test
