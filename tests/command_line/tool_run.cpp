#include "tool_run.h"

#include <fcntl.h>
#if defined(_WIN32)
#include <io.h>
#else
#include <stdio_ext.h>
#include <unistd.h>
#endif

#include <algorithm>
#include <fstream>
#include <iostream>
#include <random>
#include <sstream>

#include "command_line.h"
#include "platform/library_folder.h"

namespace nerova_zel::test {

namespace fs = std::filesystem;

namespace {

#if defined(_WIN32)
constexpr const char* no_file = "NUL";
void forget_input() {}  // commands do not read it by way of the C library
/** Sentences name files by the system's separators; in JSON a backslash begins an escape. */
void use_slashes(std::string& text) {
  if (text.rfind('{', 0) != 0 && text.rfind('[', 0) != 0) {
    std::replace(text.begin(), text.end(), '\\', '/');
  }
}
#else
constexpr int O_BINARY = 0;
constexpr const char* no_file = "/dev/null";
void forget_input() { __fpurge(stdin); }
void use_slashes(std::string& /*text*/) {}
#endif

std::string content_of(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream content;
  content << file.rdbuf();
  return content.str();
}

/** Lets a descriptor lead to a file for as long as it lives. */
class Redirection {
 public:
  Redirection(int descriptor, const std::string& path, int flags) : descriptor_(descriptor), saved_(dup(descriptor)) {
    flush();
    const int file = open(path.c_str(), flags | O_BINARY, 0600);
    EXPECT_GE(file, 0) << path;
    dup2(file, descriptor_);
    close(file);
  }
  ~Redirection() {
    flush();
    dup2(saved_, descriptor_);
    close(saved_);
  }
  Redirection(const Redirection&) = delete;
  Redirection& operator=(const Redirection&) = delete;

 private:
  static void flush() {
    std::cout.flush();
    std::fflush(stdout);
    std::fflush(stderr);
    forget_input();
    std::clearerr(stdin);
  }

  int descriptor_;
  int saved_;
};

/** Words as a shell parts them: blanks do, but not within quotes. */
std::vector<std::string> words_of(const std::string& line) {
  std::vector<std::string> words;
  bool inside = false;
  char quote = '\0';
  for (const char c : line) {
    if (c == quote) {
      quote = '\0';
    } else if (quote == '\0' && (c == '\'' || c == '"')) {
      quote = c;
      words.resize(inside ? words.size() : words.size() + 1);
      inside = true;
    } else if (quote == '\0' && c == ' ') {
      inside = false;
    } else {
      words.resize(inside ? words.size() : words.size() + 1);
      inside = true;
      words.back() += c;
    }
  }
  return words;
}

}  // namespace

ToolTest::ToolTest() : start_(fs::current_path()) {
  search_folder_of(NEROVA_LIBRARY);  // for the library that the tests themselves call
  const auto* test = ::testing::UnitTest::GetInstance()->current_test_info();
  // The random number keeps apart builds that are tested at the same time.
  directory_ = fs::path(::testing::TempDir()) / (std::string("nerova-") + test->test_suite_name() + "-" + test->name() +
                                                 "-" + std::to_string(std::random_device{}()));
  fs::create_directories(directory_);
  fs::current_path(directory_);
}

ToolTest::~ToolTest() {
  std::error_code ignored;
  fs::current_path(start_, ignored);
  fs::remove_all(directory_, ignored);
}

RunResult ToolTest::run(const std::string& arguments) const { return run(arguments, false); }

RunResult ToolTest::run_together(const std::string& arguments) const { return run(arguments, true); }

RunResult ToolTest::run(const std::string& arguments, bool together) const {
  std::vector<std::string> words = words_of(arguments);
  std::string input = no_file;
  if (const auto from = std::find(words.begin(), words.end(), "<"); from != words.end()) {
    input = *std::next(from);
    words.erase(from, from + 2);
  }
  const bool transforms = !words.empty() && (words[0] == "transform" || words[0] == "stats");
  if (transforms && std::find(words.begin(), words.end(), "--library") == words.end()) {
    words.insert(words.end(), {"--library", NEROVA_LIBRARY});
  }
  std::vector<const char*> argv = {"nerova-polarize"};
  for (const std::string& word : words) {
    argv.push_back(word.c_str());
  }
  const std::string output = directory_.string() + ".output";
  const std::string errors = together ? output : directory_.string() + ".errors";
  RunResult result{};
  {
    const Redirection from(STDIN_FILENO, input, O_RDONLY);
    const Redirection out(STDOUT_FILENO, output, O_WRONLY | O_CREAT | O_TRUNC | O_APPEND);
    const Redirection complaints(STDERR_FILENO, errors, O_WRONLY | O_CREAT | O_TRUNC | O_APPEND);
    result.exit_code = run_command_line(static_cast<int>(argv.size()), argv.data());
  }
  result.output = content_of(output);
  result.errors = content_of(errors);
  use_slashes(result.output);
  use_slashes(result.errors);
  fs::remove(output);
  fs::remove(errors);
  return result;
}

void ToolTest::expect_refusal(const std::string& arguments, const std::vector<std::string>& words,
                              int exit_code) const {
  SCOPED_TRACE(arguments);
  const auto before = listing();
  const RunResult result = run(arguments);
  EXPECT_EQ(result.exit_code, exit_code);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors.rfind("nerova-polarize: ", 0), 0U) << result.errors;
  EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), 1) << result.errors;
  const std::string end = result.errors.substr(std::max<std::size_t>(2, result.errors.size()) - 2);
  EXPECT_TRUE(end == ".\n" || end == "?\n") << result.errors;
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
  const Bytes bytes = encode_pgm(pixels.data(), width, height, (1 << bit_depth) - 1);
  write(name, {bytes.begin(), bytes.end()});
}

std::set<std::string> ToolTest::listing() const {
  std::set<std::string> names;
  for (const auto& entry : fs::recursive_directory_iterator(directory_)) {
    names.insert(fs::relative(entry.path(), directory_).generic_string());
  }
  return names;
}

}  // namespace nerova_zel::test
