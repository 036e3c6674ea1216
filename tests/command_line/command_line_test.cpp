// What the program says of itself: version and route, completions, manual page, all made from its declared options.
#include <cstdlib>
#include <regex>
#include <sstream>

#include "tool_run.h"

namespace nerova_zel::test {
namespace {

class CommandLineTest : public ToolTest {
 protected:
  std::string output(const std::string& arguments) const {
    const RunResult result = run(arguments);
    EXPECT_EQ(result.exit_code, 0) << result.errors;
    return result.output;
  }

  /** Long options of a command by its help. */
  std::set<std::string> options_of(const std::string& command) const {
    const std::string help = output(command + " --help");
    const std::regex option("\\n  (   |-[a-z],) (--[a-z-]+)");
    std::set<std::string> options;
    for (std::sregex_iterator found(help.begin(), help.end(), option), none; found != none; ++found) {
      options.insert((*found)[2]);
    }
    return options;
  }

  /** What bash offers for the last of the words. */
  std::set<std::string> completed(const std::string& words) const {
    write("completion", output("completion bash"));
    write("try.bash",
          "source \"$1/completion\"\ncompopt() { :; }\nshift\nCOMP_WORDS=(nerova-polarize \"$@\")\nCOMP_CWORD=$#\n"
          "_nerova_polarize\nprintf '%s\\n' \"${COMPREPLY[@]}\"\n");
    EXPECT_EQ(std::system(
                  ("bash '" + path("try.bash") + "' '" + path("") + "' " + words + " > '" + path("offered") + "' 2>&1")
                      .c_str()),
              0);
    std::istringstream lines(read("offered"));
    std::set<std::string> offered;
    for (std::string line; std::getline(lines, line);) {
      if (!line.empty()) {
        offered.insert(line);
      }
    }
    return offered;
  }

  /** Where it is installed, runs a checker over a document; says nothing of what is right. */
  void check(const std::string& program, const std::string& arguments, const std::string& document) const {
    if (std::system(("command -v " + program + " > /dev/null").c_str()) != 0) {
      return;
    }
    write("document", document);
    EXPECT_EQ(
        std::system(
            (program + " " + arguments + " '" + path("document") + "' > '" + path("complaints") + "' 2>&1").c_str()),
        0);
    EXPECT_EQ(read("complaints"), "") << program;
  }
};

TEST_F(CommandLineTest, CompletionsAndManualKnowEveryCommandAndOption) {
  const std::string manual = output("manual");
  const std::string zsh = output("completion zsh");
  const std::set<std::string> commands = completed("''");
  EXPECT_EQ(
      commands.count("transform") + commands.count("stats") + commands.count("calibrate") + commands.count("simulate"),
      4U);
  EXPECT_EQ(completed("--v"), std::set<std::string>{"--version"});
  for (const std::string& command : commands) {
    std::istringstream help(output(command + " --help"));
    for (std::string line; std::getline(help, line);) {
      EXPECT_LE(line.size(), 100U) << line;
    }
    const std::set<std::string> options = options_of(command);
    EXPECT_EQ(completed(command + " --"), options) << command;
    for (const std::string& option : options) {
      EXPECT_TRUE(std::regex_search(zsh, std::regex(option + "=?(}')?\\["))) << option;
      const std::string escaped = std::regex_replace(option, std::regex("-"), "\\-");
      EXPECT_NE(manual.find("\\fB" + escaped + "\\fR"), std::string::npos) << option;
    }
  }
  EXPECT_EQ(completed("transform --outputs azimuth,d"), (std::set<std::string>{"azimuth,diagonal", "azimuth,dolp"}));
  EXPECT_EQ(completed("transform --format = t"), std::set<std::string>{"tiff"});
  EXPECT_TRUE(completed("transform --output ''").empty());  // left to bash, which knows files
  for (const char* option : {"--library", "--calibration", "--truth"}) {
    EXPECT_TRUE(std::regex_search(zsh, std::regex(std::string(option) + "[^\n]*:_files"))) << option;
  }
  EXPECT_FALSE(std::regex_search(zsh, std::regex("--jobs[^\n]*_files")));
  check("zsh", "-n", zsh);
  check("groff", "-man -ww -Tutf8 -z", manual);
}

// Were a choice added to the program and not to the declaration, the refusal of another would tell.
TEST_F(CommandLineTest, ChoicesAreThoseThatTheProgramTakes) {
  ASSERT_EQ(run("simulate s.png --size 16x16").exit_code, 0);
  for (const std::string option : {"transform --layout", "transform --outputs", "transform --format",
                                   "transform --azimuth-style", "transform --pixel-format", "stats --weight"}) {
    const std::set<std::string> choices = completed(option + " ''");
    EXPECT_FALSE(choices.empty()) << option;
    const std::string command = option.substr(0, option.find(' '));
    const RunResult refused = run(command + " s.png --raw 4x4" + option.substr(command.size()) + " 7");
    EXPECT_NE(refused.exit_code, 0);
    const std::size_t start = refused.errors.find(';');
    ASSERT_NE(start, std::string::npos) << refused.errors;
    const std::string sentence = refused.errors.substr(start);
    const std::regex word("[A-Za-z0-9-]+");
    std::set<std::string> named;
    for (std::sregex_iterator found(sentence.begin(), sentence.end(), word), none; found != none; ++found) {
      named.insert(found->str());
    }
    for (const char* filler : {"it", "must", "be", "one", "of", "or", "and", "takes", "a", "list"}) {
      named.erase(filler);
    }
    EXPECT_EQ(choices, named) << option;
  }
}

}  // namespace
}  // namespace nerova_zel::test
