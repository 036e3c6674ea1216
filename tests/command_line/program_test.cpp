// The program itself, as few times as show that it is the same as what other tests call in their own process.
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <regex>

#include "support/cpu_route.h"
#include "tool_run.h"

namespace nerova_zel::test {
namespace {

namespace fs = std::filesystem;

class ProgramTest : public ToolTest {
 protected:
  static constexpr std::size_t frame_bytes = 278;  // 37 x 5 pixels of 12 bits

  /** Exit code of a shell's line, which finds the program as "$tool". */
  static int shell(const std::string& line) {
    const int status = std::system(("tool='" NEROVA_TOOL "'; " + line).c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

  std::string said(const std::string& arguments) const {
    EXPECT_EQ(shell("\"$tool\" " + arguments + " > said"), 0);
    return read("said");
  }
};

TEST_F(ProgramTest, ExitCodesAndStreamsAreThoseOfTheCommands) {
  EXPECT_EQ(shell("\"$tool\" simulate s.png --size 16x16 > out 2> errors"), 0);
  EXPECT_EQ(read("errors"), "");
  EXPECT_EQ(shell("\"$tool\" transform s.png --bit-depth 12 --outputs dolp >> out 2> errors"), 0);
  EXPECT_EQ(shell("\"$tool\" transform missing.png -o r > out 2> errors"), 1);
  EXPECT_EQ(read("errors").rfind("nerova-polarize: cannot read missing.png", 0), 0U);
  EXPECT_EQ(shell("\"$tool\" transform s.png --outputs dolp --sharpen > out 2> errors"), 2);
  EXPECT_EQ(read("out"), "");
}

// What it links is loaded at every start, whatever is wanted.
TEST_F(ProgramTest, StartsWithoutWhatDraws) {
  std::ifstream file(NEROVA_TOOL, std::ios::binary);
  const std::string program{std::istreambuf_iterator<char>(file), {}};
  EXPECT_NE(program.find("libpng"), std::string::npos);
  EXPECT_EQ(program.find("libopencv"), std::string::npos);
}

TEST_F(ProgramTest, VersionTellsTheRouteThatFramesTake) {
  const std::string beside_plugins = said("--version");
  EXPECT_EQ(beside_plugins.rfind("nerova-polarize " NEROVA_VERSION "\n", 0), 0U) << beside_plugins;
  EXPECT_NE(beside_plugins.find(NEROVA_LIBRARY), std::string::npos) << beside_plugins;
  const std::string other = said("--version --library '" NEROVA_BUILT_IN_ONLY_LIBRARY "'");
  EXPECT_NE(other.find("\nlibrary    " NEROVA_VERSION ", " NEROVA_BUILT_IN_ONLY_LIBRARY "\n"), std::string::npos)
      << other;
  EXPECT_EQ(shell("\"$tool\" --library x stats missing.png > out 2> errors"), 2);
  const char* const route = plugin_serves() ? "route +(AVX2|AVX-512) plugin" : "route +built-in kernels, SSE";
  EXPECT_TRUE(std::regex_search(beside_plugins, std::regex(route))) << beside_plugins;
  fs::copy_file(NEROVA_TOOL, path("tool"));
  const auto version = [&] {
    EXPECT_EQ(std::system(("'" + path("tool") + "' --version > '" + path("version") + "'").c_str()), 0);
    return read("version");
  };
  EXPECT_NE(version().find("none: cannot load"), std::string::npos) << version();
  fs::copy_file(NEROVA_BUILT_IN_ONLY_LIBRARY, path(fs::path(NEROVA_LIBRARY).filename().string()));
  EXPECT_TRUE(std::regex_search(version(), std::regex("route +built-in kernels, SSE"))) << version();
}

// The pipe stays open and idle: the first request must do.
TEST_F(ProgramTest, AnInterruptionEndsABatchWhoseInputIsIdle) {
  write("two.raw", std::string(2 * frame_bytes + 1, '\x5A'));
  write("script.sh",
        "mkfifo pipe\n"
        "\"$1\" transform -"
        " --raw 37x5 --pixel-format Mono12p --format npy -o results "
        "--outputs stokes,hv --jobs 2 < pipe > told 2>&1 &\n"
        "exec 3> pipe\n"
        "cat two.raw >&3\n"
        "until [ -e results/stdin_000001_hv.npy ]; do sleep 0.01; done\n"
        "kill -TERM $!\n"
        "wait $!\n"
        "[ $? -eq 143 ] && ls results | grep -v json > listing\n");
  const std::string command = "cd \"" + path("") + "\" && timeout 20 sh script.sh \"" NEROVA_TOOL "\"";
  EXPECT_EQ(std::system(command.c_str()), 0);
  EXPECT_NE(read("told").find("interrupted"), std::string::npos) << read("told");
  EXPECT_EQ(read("listing"),
            "stdin_000000_hv.npy\nstdin_000000_stokes.npy\nstdin_000001_hv.npy\nstdin_000001_stokes.npy\n");
}

TEST_F(ProgramTest, StandardOutputThatCannotBeWrittenIsAFailure) {
  ASSERT_EQ(shell("\"$tool\" simulate s.png --size 64x64 > out"), 0);
  for (const std::string command : {"--version", "--help", "manual", "completion bash", "stats s.png --json",
                                    "stats s.png", "simulate t.png --size 16x16", "transform s.png --outputs dolp"}) {
    for (const std::string to : {"> /dev/full", ">&-"}) {
      SCOPED_TRACE(command + " " + to);
      EXPECT_EQ(shell("\"$tool\" " + command + " " + to + " 2> errors"), 1);
      EXPECT_NE(read("errors").find("nerova-polarize: cannot write standard output: "), std::string::npos)
          << read("errors");
    }
  }
}

// Whoever reads the report may stop: the batch ends then, and leaves nothing half-written.
TEST_F(ProgramTest, AReportThatNobodyReadsEndsTheBatch) {
  write("many.raw", std::string(300 * frame_bytes, '\x5A'));
  EXPECT_EQ(shell("(\"$tool\" transform many.raw --raw 37x5 --pixel-format Mono12p -f npy -o results "
                  "--outputs power -j 2 2> errors; echo $? > code) | head -1 > first"),
            0);
  EXPECT_EQ(read("code"), "1\n");
  EXPECT_NE(read("errors").find("cannot write standard output: Broken pipe."), std::string::npos) << read("errors");
  EXPECT_FALSE(read("first").empty());
  const std::set<std::string> files = listing();
  EXPECT_EQ(files.count("results/many_000299_power.npy"), 0U);
  for (const std::string& name : files) {
    EXPECT_EQ(name.find(".partial"), std::string::npos) << name;
  }
}

// A closed descriptor would be given to the first file that is opened, and messages would be written into it.
TEST_F(ProgramTest, ClosedStandardStreamsAreNotUsedForFiles) {
  write("script.sh",
        "mkfifo pipe\n"
        "\"$1\" transform - --raw 37x5 --pixel-format Mono12p -f npy -o results --outputs power < pipe >&- 2>&- &\n"
        "exec 3> pipe\n"
        "until [ -d results ]; do sleep 0.01; done\n"
        "readlink /proc/$!/fd/1 /proc/$!/fd/2 > links\n"
        "kill -TERM $!\n");
  const std::string command = "cd \"" + path("") + "\" && timeout 20 sh script.sh \"" NEROVA_TOOL "\"";
  EXPECT_EQ(std::system(command.c_str()), 0);
  EXPECT_EQ(read("links"), "/dev/null\n/dev/null\n");
}

}  // namespace
}  // namespace nerova_zel::test
