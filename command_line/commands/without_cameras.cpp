// Takes the place of the command record and of cameras to look at where Aravis is missing.
#include "commands/frame_stream.h"
#include "commands/record_command.h"

#include <CLI/App.hpp>

#include "failure.h"

namespace nerova_zel {

namespace {

constexpr const char* sentence =
    "this program was built without Aravis, and knows no camera; on Linux it can be built with it.";

}  // namespace

void declare_record(CLI::App& app) {
  CLI::App* command = app.add_subcommand("record", "Record the frames of a camera (not in this build)");
  command->allow_extras();
  command->callback([] { throw Failure(sentence); });
}

std::unique_ptr<CameraFeed> open_camera_feed(const std::string&) { throw Failure(sentence); }

}  // namespace nerova_zel
