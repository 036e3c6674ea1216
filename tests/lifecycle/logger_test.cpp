#include <gtest/gtest.h>

#include <cctype>
#include <filesystem>
#include <fstream>

#include "lifecycle/arrangement.h"
#include "support/module_file.h"

namespace nerova_zel::test {
namespace {

std::vector<std::string> lines_of(const std::string& file) {
  std::vector<std::string> lines;
  std::ifstream stream(file);
  for (std::string line; std::getline(stream, line);) {
    lines.push_back(line);
  }
  return lines;
}

/** The library with its real logger, in a working directory of its own; errors on two functions and a timing record. */
std::vector<std::string> logged(const std::string& configuration, const std::string& log_file) {
  Arrangement arrangement;
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::copy_file(NEROVA_LOGGER, arrangement.directory() + "/nerova_zel_logger" + module_ending);
  std::filesystem::current_path(arrangement.directory());
  if (!configuration.empty()) {
    std::ofstream("nerova_zel_logger.cfg") << configuration;
  }
  LoadedLibrary& library = arrangement.library();
  EXPECT_EQ(library.module_initialize(), 0);
  EXPECT_FALSE(std::filesystem::exists(log_file));
  EXPECT_EQ(library.destroy(nullptr), 4);
  EXPECT_EQ(
      library.transform(nullptr, 0, nullptr, 0, 0, 0, 0, 0, 0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
      4);
  EXPECT_EQ(library.module_terminate(), 0);
  std::vector<std::string> lines = lines_of(log_file);
  std::filesystem::current_path(before);
  return lines;
}

TEST(Logger, WritesErrorsByDefault) {
  const std::vector<std::string> lines = logged("", "nerova_zel.log");
  ASSERT_EQ(lines.size(), 2U);
  std::string line = lines[0];
  for (std::size_t i = 0; i < line.find('\t'); ++i) {  // any time will do
    line[i] = std::isdigit(static_cast<unsigned char>(line[i])) != 0 ? '0' : line[i];
  }
  EXPECT_EQ(line,
            "0000-00-00T00:00:00.000Z\t2\tNEROVA_ZEL_POLARIZATION_PROCESSOR\t"
            "nerova_zel_polarization_processor.cpp:300\tnv_polarization_processor_destroy_polarization_processor\t"
            "ERROR:  The specified color processor handle is NULL!");
}

TEST(Logger, HeedsItsConfiguration) {
  const std::vector<std::string> lines =
      logged("# a comment\n level=7 # timing too\r\nfile = other.log\n", "other.log");
  ASSERT_EQ(lines.size(), 3U);
  EXPECT_NE(lines[2].find("transform takes"), std::string::npos);
  EXPECT_EQ(logged("level = 1\n", "nerova_zel.log").size(), 0U);
}

}  // namespace
}  // namespace nerova_zel::test
