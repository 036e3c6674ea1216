#include "tool_run.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <random>
#include <sstream>
#include <stdexcept>

#if !defined(_WIN32)
#include <sys/wait.h>
#endif

namespace nerova_zel::test {

namespace fs = std::filesystem;

namespace {

std::string content_of(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream content;
  content << file.rdbuf();
  return content.str();
}

}  // namespace

ToolTest::ToolTest() {
  const auto* test = ::testing::UnitTest::GetInstance()->current_test_info();
  // The random number keeps apart builds that are tested at the same time.
  directory_ = fs::path(::testing::TempDir()) / (std::string("nerova-") + test->test_suite_name() + "-" + test->name() +
                                                 "-" + std::to_string(std::random_device{}()));
  fs::create_directories(directory_);
}

ToolTest::~ToolTest() {
  std::error_code ignored;
  fs::remove_all(directory_, ignored);
}

RunResult ToolTest::run(const std::string& arguments) const {
  const std::string output = directory_.string() + ".output";
  const std::string errors = directory_.string() + ".errors";
  const std::string command = "cd \"" + directory_.string() + "\" && \"" NEROVA_TOOL "\" " + arguments + " > \"" +
                              output + "\" 2> \"" + errors + "\"";
  int status = std::system(command.c_str());
#if !defined(_WIN32)
  status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
#endif
  RunResult result{status, content_of(output), content_of(errors)};
  fs::remove(output);
  fs::remove(errors);
  return result;
}

void ToolTest::expect_refusal(const std::string& arguments, const std::vector<std::string>& words) const {
  SCOPED_TRACE(arguments);
  const auto before = listing();
  const RunResult result = run(arguments);
  EXPECT_GT(result.exit_code, 0);
  EXPECT_LT(result.exit_code, 126);  // refused by the program, not killed
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors.rfind("nerova-polarize: ", 0), 0U) << result.errors;
  EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), 1) << result.errors;
  EXPECT_EQ(result.errors.substr(std::max<std::size_t>(2, result.errors.size()) - 2), ".\n") << result.errors;
  EXPECT_EQ(result.errors.find("OpenCV("), std::string::npos) << result.errors;
  for (const std::string& word : words) {
    EXPECT_NE(result.errors.find(word), std::string::npos) << result.errors;
  }
  EXPECT_EQ(listing(), before);
}

void ToolTest::write(const std::string& name, const std::string& content) const {
  fs::create_directories(fs::path(path(name)).parent_path());
  std::ofstream(path(name), std::ios::binary) << content;
}

std::string ToolTest::read(const std::string& name) const { return content_of(path(name)); }

void ToolTest::write_pgm(const std::string& name, const std::vector<std::uint16_t>& pixels, int width, int height,
                         int bit_depth) const {
  std::string content = "P5 # a comment\n" + std::to_string(width) + " " + std::to_string(height) + "\n" +
                        std::to_string((1 << bit_depth) - 1) + "\n";
  for (const std::uint16_t pixel : pixels) {
    content.push_back(static_cast<char>(pixel >> 8U));
    content.push_back(static_cast<char>(pixel & 0xFFU));
  }
  write(name, content);
}

std::set<std::string> ToolTest::listing() const {
  std::set<std::string> names;
  for (const auto& entry : fs::recursive_directory_iterator(directory_)) {
    names.insert(fs::relative(entry.path(), directory_).generic_string());
  }
  return names;
}

Outputs transform_by_library(const CameraSettings& camera, const std::vector<std::uint16_t>& frame,
                             std::uint16_t output_maximum, const std::string& library_file) {
  const LoadedLibrary library(library_file);
  nv_polarization_processor* processor = nullptr;
  library.module_initialize();
  library.create(&processor);
  const std::size_t count = frame.size();
  Outputs outputs{std::vector<float>(2 * count),     std::vector<std::uint16_t>(count),
                  std::vector<std::uint16_t>(count), std::vector<std::uint16_t>(count),
                  std::vector<std::uint16_t>(count), std::vector<std::uint16_t>(count)};
  const std::int32_t code =
      library.transform(processor, camera.layout.phase(), frame.data(), camera.origin_x, camera.origin_y, camera.width,
                        camera.height, camera.bit_depth, output_maximum, outputs.stokes.data(), outputs.power.data(),
                        outputs.hv.data(), outputs.diagonal.data(), outputs.azimuth.data(), outputs.dolp.data());
  library.destroy(processor);
  library.module_terminate();
  if (code != 0) {
    throw std::runtime_error("transform returned " + std::to_string(code));
  }
  return outputs;
}

}  // namespace nerova_zel::test
