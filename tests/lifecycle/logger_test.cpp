#include <gtest/gtest.h>

#if defined(__linux__)
#include <sched.h>
#include <sys/mount.h>
#endif

#include <cctype>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>

#include "lifecycle/arrangement.h"
#include "lifecycle/transform_call.h"
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

/** The library with its real logger, in a working directory of its own. */
class RealLogger {
 public:
  RealLogger() : before_(std::filesystem::current_path()) {
    std::filesystem::copy_file(NEROVA_LOGGER, arrangement.directory() + "/nerova_zel_logger" + module_ending);
    std::filesystem::current_path(arrangement.directory());
  }
  ~RealLogger() { std::filesystem::current_path(before_); }
  RealLogger(const RealLogger&) = delete;
  RealLogger& operator=(const RealLogger&) = delete;

  Arrangement arrangement;

 private:
  const std::filesystem::path before_;
};

/** Errors on two functions and a timing record. */
std::vector<std::string> logged(const std::string& configuration, const std::string& log_file) {
  RealLogger logger;
  if (!configuration.empty()) {
    std::ofstream("nerova_zel_logger.cfg") << configuration;
  }
  LoadedLibrary& library = logger.arrangement.library();
  EXPECT_EQ(library.module_initialize(), 0);
  EXPECT_FALSE(std::filesystem::exists(log_file));
  EXPECT_EQ(library.destroy(nullptr), 4);
  EXPECT_EQ(
      library.transform(nullptr, 0, nullptr, 0, 0, 0, 0, 0, 0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
      4);
  EXPECT_EQ(library.module_terminate(), 0);
  return lines_of(log_file);
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

TEST(Logger, ConfigurationThatCannotBeUsedDisturbsNoFrame) {
  const std::vector<std::function<void(const std::string& name)>> states = {
      [](const std::string& /*missing*/) {}, [](const std::string& name) { std::ofstream empty(name); },
      [](const std::string& name) {
        std::ofstream(name, std::ios::binary) << std::string(1 << 16, '\0') << "=\xFF\n=";
      },
      [](const std::string& name) { std::ofstream(name) << "level = 7\nfile = missing/folder/a.log\n"; },
      [](const std::string& name) { std::filesystem::create_directory(name); }};
  for (std::size_t state = 0; state < states.size(); ++state) {
    SCOPED_TRACE(state);
    RealLogger logger;
    states[state]("nerova_zel_logger.cfg");
    nv_polarization_processor* const processor = logger.arrangement.make_processor();
    LoadedLibrary& library = logger.arrangement.library();
    const TransformCall call(processor);
    EXPECT_EQ(call.run(library), 0);
    EXPECT_FALSE(call.outputs_untouched());
    EXPECT_EQ(library.destroy(nullptr), 4);
    EXPECT_EQ(library.destroy(processor), 0);
    EXPECT_EQ(library.module_terminate(), 0);
    const bool writes = state != 3;
    EXPECT_EQ(lines_of("nerova_zel.log").empty(), !writes);
  }
}

#if defined(__linux__)

/** A file system of 64 KiB that no other process sees, as long as it lives; takes root's rights. */
class SmallDisk {
 public:
  explicit SmallDisk(const char* directory)
      : directory_(directory),
        mounted_(unshare(CLONE_NEWNS) == 0 && mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                 mount("tmpfs", directory, "tmpfs", 0, "size=64k") == 0) {}
  ~SmallDisk() {
    if (mounted_) {
      umount2(directory_, MNT_DETACH);
    }
  }
  SmallDisk(const SmallDisk&) = delete;
  SmallDisk& operator=(const SmallDisk&) = delete;

  bool mounted() const { return mounted_; }

 private:
  const char* const directory_;
  const bool mounted_;
};

TEST(Logger, FullDiskLosesRecordsAndNothingElse) {
  RealLogger logger;
  std::filesystem::create_directory("disk");
  const SmallDisk disk("disk");
  if (!disk.mounted()) {
    GTEST_SKIP() << "NOT TESTED: a full disk; mounting a small one takes root's rights (" << std::strerror(errno)
                 << ")";
  }
  std::ofstream("nerova_zel_logger.cfg") << "level = 7\nfile = disk/a.log\npattern = %v\n";
  nv_polarization_processor* const processor = logger.arrangement.make_processor();
  LoadedLibrary& library = logger.arrangement.library();
  const TransformCall expected(processor);
  EXPECT_EQ(expected.run(library), 0);

  std::ofstream filler("disk/filler");
  while (filler << std::string(1024, 'x') << std::flush) {
  }
  filler.close();
  constexpr int frames = 500;
  for (int i = 0; i < frames; ++i) {
    const TransformCall call(processor);
    EXPECT_EQ(call.run(library), 0);
    EXPECT_EQ(call.image_buffers, expected.image_buffers);
  }
  std::filesystem::remove("disk/filler");
  EXPECT_EQ(expected.run(library), 0);
  EXPECT_EQ(library.destroy(processor), 0);
  EXPECT_EQ(library.module_terminate(), 0);

  const std::vector<std::string> lines = lines_of("disk/a.log");
  EXPECT_GT(lines.size(), 1U);
  EXPECT_LT(lines.size(), static_cast<std::size_t>(frames));  // or the disk was not full
  for (const std::string& line : lines) {
    EXPECT_EQ(line.rfind("transform takes ", 0), 0U) << line;
    EXPECT_EQ(line.substr(line.rfind(' ') + 1), "microseconds.") << line;
  }
}

#endif

}  // namespace
}  // namespace nerova_zel::test
