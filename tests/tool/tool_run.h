#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "simulation/simulated_frame.h"
#include "support/loaded_library.h"

namespace nerova_zel::test {

struct RunResult {
  int exit_code;
  std::string output;
  std::string errors;
};

/** Runs the tool inside an empty directory of the test's own, which is removed afterwards. */
class ToolTest : public ::testing::Test {
 protected:
  ToolTest();
  ~ToolTest() override;

  /** `arguments` as a shell reads them; relative names are inside the directory. */
  RunResult run(const std::string& arguments) const;

  /** Runs what must fail: one sentence that holds all `words`, an exit code above 0, and nothing written or changed. */
  void expect_refusal(const std::string& arguments, const std::vector<std::string>& words) const;

  std::string path(const std::string& name) const { return (directory_ / name).string(); }
  void write(const std::string& name, const std::string& content) const;
  std::string read(const std::string& name) const;
  /** Writes a binary PGM of a bit depth above 8. */
  void write_pgm(const std::string& name, const std::vector<std::uint16_t>& pixels, int width, int height,
                 int bit_depth) const;
  /** Every file and directory below the directory, by relative name. */
  std::set<std::string> listing() const;

 private:
  std::filesystem::path directory_;
};

/** All outputs of one frame, straight from the library. */
struct Outputs {
  std::vector<float> stokes;
  std::vector<std::uint16_t> power;
  std::vector<std::uint16_t> hv;
  std::vector<std::uint16_t> diagonal;
  std::vector<std::uint16_t> azimuth;
  std::vector<std::uint16_t> dolp;
};

Outputs transform_by_library(const CameraSettings& camera, const std::vector<std::uint16_t>& frame,
                             std::uint16_t output_maximum, const std::string& library_file = library_path());

}  // namespace nerova_zel::test
