#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "imaging/library_outputs.h"
#include "pgm_file.h"
#include "simulation/simulated_frame.h"

namespace nerova_zel::test {

struct RunResult {
  int exit_code;
  std::string output;
  std::string errors;
};

/** Runs commands in this process, inside an empty directory of the test's own, which is removed afterwards. */
class ToolTest : public ::testing::Test {
 protected:
  ToolTest();
  ~ToolTest() override;

  /** `arguments` with blanks and quotes as for a shell, and `< FILE`. The library is this build's. */
  RunResult run(const std::string& arguments) const;
  /** The same, with all that is printed in `output`, in its order. */
  RunResult run_together(const std::string& arguments) const;

  /** Runs what must fail: one sentence that holds all `words`, that exit code, and nothing written or changed. */
  void expect_refusal(const std::string& arguments, const std::vector<std::string>& words, int exit_code = 1) const;

  std::string path(const std::string& name) const { return (directory_ / name).string(); }
  void write(const std::string& name, const std::string& content) const;
  std::string read(const std::string& name) const;
  void write_pgm(const std::string& name, const std::vector<std::uint16_t>& pixels, int width, int height,
                 int bit_depth) const;
  /** Every file and directory below the directory, by relative name. */
  std::set<std::string> listing() const;

 private:
  RunResult run(const std::string& arguments, bool together) const;

  std::filesystem::path start_;
  std::filesystem::path directory_;
};

}  // namespace nerova_zel::test
