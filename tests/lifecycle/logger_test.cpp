// The library with its real logger, in a working directory of its own.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "lifecycle/arrangement.h"
#include "lifecycle/transform_call.h"
#include "support/module_file.h"

namespace nerova_zel::test {
namespace {

const std::filesystem::path real_logger = std::filesystem::absolute(NEROVA_LOGGER);

class Logger : public testing::Test {
 protected:
  Logger() : before_(std::filesystem::current_path()) {
    std::filesystem::copy_file(real_logger, file);
    std::filesystem::current_path(arrangement.directory());
  }
  ~Logger() override { std::filesystem::current_path(before_); }

  /** What an error and a frame leave in nerova_zel.log. */
  std::vector<std::string> logged(const std::string& configuration) {
    std::ofstream("nerova_zel_logger.cfg", std::ios::binary) << configuration;
    std::filesystem::remove("nerova_zel.log");
    const TransformCall call(arrangement.make_processor());
    EXPECT_EQ(arrangement.library().destroy(nullptr), 4);
    EXPECT_EQ(call.run(arrangement.library()), 0);
    EXPECT_FALSE(call.outputs_untouched());
    arrangement.finish();
    std::vector<std::string> lines;
    std::ifstream stream("nerova_zel.log");
    for (std::string line; std::getline(stream, line);) {
      lines.push_back(line);
    }
    return lines;
  }

  Arrangement arrangement;
  const std::filesystem::path file = arrangement.file(Companion::Logger);

 private:
  const std::filesystem::path before_;
};

TEST_F(Logger, WritesErrorsAndOnRequestTimes) {
  const std::vector<std::string> lines = logged("");
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_NE(lines[0].find("\tERROR:  The specified color processor handle is NULL!"), std::string::npos) << lines[0];
  EXPECT_EQ(logged("level = 7\n").size(), 2U);
}

#if !defined(_WIN32)

TEST_F(Logger, OnlyTruncatedFilesEndTheSearch) {
  const LoadedModule elsewhere(NEROVA_LOGGER);  // found by its plain name now, wherever that is searched for
  using Damage = Arrangement::Damage;
  for (const Damage damage : {Damage::CutBehindHeaders, Damage::CutInHeaders, Damage::CutInFirstHeader}) {
    arrangement.damage(Companion::Logger, damage);
    EXPECT_EQ(logged("").size(), 0U);
  }
  for (const Damage damage : {Damage::OtherWordSize, Damage::NoLibrary}) {
    std::filesystem::copy_file(real_logger, file, std::filesystem::copy_options::overwrite_existing);
    arrangement.damage(Companion::Logger, damage);
    EXPECT_EQ(logged("").size(), 1U);
  }
  std::filesystem::remove(file);
  EXPECT_EQ(logged("").size(), 1U);
}

#endif

}  // namespace
}  // namespace nerova_zel::test
