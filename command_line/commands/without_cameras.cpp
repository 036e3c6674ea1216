// Takes the place of the command record where Aravis is missing.
#include "commands/record_command.h"

#include <CLI/App.hpp>

#include "failure.h"

namespace nerova_zel {

void declare_record(CLI::App& app) {
  CLI::App* command = app.add_subcommand("record", "Record the frames of a camera (not in this build)");
  command->allow_extras();
  command->callback([] {
    throw Failure(
        "this program was built without Aravis, and records from no camera; on Linux it can be built with it.");
  });
}

}  // namespace nerova_zel
