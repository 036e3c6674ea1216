#include <cstdio>
#include <opencv2/core/utils/logger.hpp>
#include <string>

#include "command_line.h"
#include "failure.h"
#include "interruption.h"
#include "quiet_errors.h"

namespace {

constexpr int exit_failure = 1;
constexpr int exit_usage = 2;

int complain(const std::string& sentence, int code) {
  std::fprintf(nerova_zel::messages(), "nerova-polarize: %s\n", sentence.c_str());
  return code;
}

int run(int argc, char** argv) {
  try {
    cv::utils::logging::setLogLevel(cv::utils::logging::LOG_LEVEL_SILENT);
    CLI::App app("Pictures of polarization from the raw frames of a polarization camera", "nerova-polarize");
    nerova_zel::CommandOptions options;
    nerova_zel::declare_commands(app, options);
    try {
      app.parse(argc, argv);
    } catch (const CLI::Success& help) {
      return app.exit(help);
    } catch (const CLI::ParseError& error) {
      return complain(error.what() + std::string("; see nerova-polarize --help."), exit_usage);
    }
    return 0;
  } catch (...) {
    return complain(nerova_zel::describe_current_failure(), exit_failure);
  }
}

}  // namespace

int main(int argc, char** argv) {
  nerova_zel::messages();  // before anything is silenced
  const int code = run(argc, argv);
  nerova_zel::Interruption::obey();
  return code;
}
