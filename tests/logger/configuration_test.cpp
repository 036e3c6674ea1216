#include "logger/log_directory.h"

namespace nerova_zel::test {
namespace {

using Configuration = LogDirectory;

// Before any test changes the working directory, and with it the drive.
const std::filesystem::path sample = std::filesystem::absolute(NEROVA_LOGGER_SAMPLE);

/** The line with zeros for the digits of its first column. */
std::string with_any_time(std::string line) {
  for (std::size_t i = 0; i < line.find('\t'); ++i) {
    line[i] = line[i] >= '0' && line[i] <= '9' ? '0' : line[i];
  }
  return line;
}

TEST_F(Configuration, MissingFileAndSampleMeanTheDefaults) {
  std::filesystem::copy_file(sample, "sample.cfg");
  for (const char* const configuration : {"missing.cfg", "sample.cfg"}) {
    SCOPED_TRACE(configuration);
    void* const log = logger.get_log("M", "", configuration);
    EXPECT_EQ(write(log, "too fine", 3), 1);
    EXPECT_EQ(write(nullptr, "no log"), 1);
    EXPECT_FALSE(std::filesystem::exists("nerova_zel.log"));
    EXPECT_EQ(write(log, "first"), 0);
    EXPECT_EQ(write(log, "two\nlines\r\n", -5), 0);
    free_log();
    const Lines lines = lines_of("nerova_zel.log");
    ASSERT_EQ(lines.size(), 2U);
    const std::string time = "0000-00-00T00:00:00.000Z";
    EXPECT_EQ(with_any_time(lines[0]), time + "\t2\tM\tsource.cpp:7\tfunction\tfirst");
    EXPECT_EQ(with_any_time(lines[1]), time + "\t-5\tM\tsource.cpp:7\tfunction\ttwo lines  ");
    std::filesystem::remove("nerova_zel.log");
  }
}

TEST_F(Configuration, IsReadHoweverItIsWritten) {
  void* const log = get_log(
      "\xEF\xBB\xBF"
      "level=4\r\n\r\n  # a comment\r\n\t file =  a# b.log #another\nlevel = 5\t#five\npattern = %l # last");
  EXPECT_EQ(write(log, "wanted", 5), 0);
  EXPECT_EQ(write(log, "not wanted", 6), 1);
  free_log();
  EXPECT_EQ(lines_of("a# b.log"), Lines{"5"});
}

TEST_F(Configuration, BadLinesAreReportedAndIgnored) {
  struct BadLine {
    const char* text;
    const char* reason;
  };
  constexpr BadLine bad_lines[] = {
      {"no equals sign", "key = value"},
      {"colour = red", "no such key"},
      {"= red", "no such key"},
      {"level =", "no value"},
      {"level = high", "whole number"},
      {"level = -1", "whole number"},
      {"level = 99999999999", "whole number"},
      {"max_size = 10 MB", "a size"},
      {"max_size = K", "a size"},
      {"max_size = 17179869184G", "a size"},
      {"kept_files = 1000", "0 to 999"},
      {"flush = sometimes", "record, disk, buffer"},
      {"pattern = %v%", "within a flag"},
      {"pattern = %-12", "within a flag"},
      {"pattern = %q %v", "unknown flag %q"},
  };
  std::string text = "level = 0\nfile = other.log\npattern = %l %s:%# %v\n";
  for (const BadLine& bad_line : bad_lines) {
    text += bad_line.text + std::string("\n");
  }
  configure(text + "kept_files = 999\nmax_size = 17179869183 G\nflush = disk\n");
  ASSERT_NE(get_log(), nullptr);
  free_log();
  const Lines lines = lines_of("other.log");
  ASSERT_EQ(lines.size(), std::size(bad_lines));
  for (std::size_t i = 0; i < lines.size(); ++i) {
    const std::string line = std::to_string(i + 4);
    EXPECT_EQ(lines[i].rfind("2 nerova_zel_logger.cfg:" + line + " ERROR: nerova_zel_logger.cfg, line ", 0), 0U);
    EXPECT_NE(lines[i].find(", line " + line + ": the line is ignored, "), std::string::npos) << lines[i];
    EXPECT_NE(lines[i].find(bad_lines[i].reason), std::string::npos) << lines[i] << "\nfor " << bad_lines[i].text;
  }
}

TEST_F(Configuration, PatternDecidesTheLine) {
  void* const log = get_log("pattern = [%5l] %-4n|%s|%5!s|%g:%#|%=10n|%3!!|%!|%v%%\\t\n");
  EXPECT_EQ(logger.log(log, 2, "D:\\suite\\source.cpp", 0, "function", "{} %s"), 0);
  free_log();
  EXPECT_EQ(lines_of("nerova_zel.log"),
            Lines{"[    2] M   |source.cpp|sourc|D:\\suite\\source.cpp:0|    M     |fun|function|{} %s%\t"});
}

}  // namespace
}  // namespace nerova_zel::test
