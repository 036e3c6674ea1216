#include "command_line.h"

#include <CLI/CLI.hpp>
#include <memory>
#include <sstream>
#include <string>

#include "commands/calibrate_command.h"
#include "commands/document_commands.h"
#include "commands/info_command.h"
#include "commands/record_command.h"
#include "commands/simulate_command.h"
#include "commands/stats_command.h"
#include "commands/transform_command.h"
#include "commands/view_command.h"
#include "failure_text.h"
#include "format_list.h"
#include "help_page.h"
#include "messages.h"
#include "results.h"
#include "usage_error.h"
#include "usage_text.h"
#include "version_text.h"

namespace nerova_zel {

namespace {

constexpr int exit_failure = 1;
constexpr int exit_usage = 2;

int complain(const std::string& sentence, int code) {
  print_message("nerova-polarize: " + sentence + "\n");
  return code;
}

void declare_commands(CLI::App& app) {
  app.formatter(std::make_shared<HelpPage>());  // before the commands, which take it from here
  app.require_subcommand(1);
  // Declared, and therefore taken, before the flag that uses it.
  auto library = std::make_shared<std::string>();
  CLI::Option* const path =
      app.add_option("--library", *library, "With --version: the library to tell of")->type_name("FILE");
  path->needs(app.set_version_flag(
      "--version", [library] { return version_text(*library); },
      "Print the version, and what will compute frames on this computer"));
  app.add_flag_callback(
      "--list-formats", [] { throw CLI::CallForVersion(format_list(), 0); },
      "Print the pixel formats that are read and the outputs that are written");
  app.footer(
      "Examples:\n"
      "  nerova-polarize simulate frame.png --bit-depth 12\n"
      "  nerova-polarize transform frame.png --bit-depth 12 --output pictures\n\n"
      "Each command has its own --help, with more of them.");
  declare_transform(app);
  declare_view(app);
  declare_stats(app);
  declare_info(app);
  declare_calibrate(app);
  declare_simulate(app);
  declare_record(app);
  declare_documents(app);
}

}  // namespace

int run_command_line(int argc, const char* const* argv) {
  set_verbosity(Verbosity::usual);
  try {
    CLI::App app("Pictures of polarization from the raw frames of a polarization camera", "nerova-polarize");
    app.allow_windows_style_options(false);  // "/frames/a.png" is a file, on Windows too
    declare_commands(app);
    try {
      app.parse(argc, argv);
    } catch (const CLI::Success& wanted) {
      std::ostringstream text;
      app.exit(wanted, text, text);
      print_result(text.str());
    } catch (const CLI::ParseError& error) {
      return complain(describe_parse_error(app, error), exit_usage);
    }
    return 0;
  } catch (const UsageError&) {
    return complain(describe_current_failure(), exit_usage);
  } catch (...) {
    return complain(describe_current_failure(), exit_failure);
  }
}

}  // namespace nerova_zel
