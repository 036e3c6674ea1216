#include "commands/view_command.h"

#include <algorithm>
#include <chrono>
#include <memory>
#include <thread>

#include "batch/interruption.h"
#include "calibration/calibration_file.h"
#include "commands/frame_options.h"
#include "commands/picture_options.h"
#include "commands/viewed_inputs.h"
#include "input_bytes.h"
#include "messages.h"
#include "option_declarations.h"
#include "platform/browser.h"
#include "results.h"
#include "usage_error.h"
#include "viewer.h"

namespace nerova_zel {

namespace {

constexpr long long mebibyte = 1LL << 20;
constexpr std::chrono::milliseconds look_again{20};

struct ViewOptions {
  FrameOptions frames;
  FrameRequest request;
  ViewSettings settings;
  std::vector<std::string> compared;
  std::optional<std::string> camera;
  PictureScales ends{0.0, 0.0};
  long long memory = 1024;
  bool no_open = false;
};

/** None, and those of the files. */
std::vector<ViewedCalibration> read_calibrations(const ViewOptions& options) {
  const FrameRequest& request = options.request;
  std::vector<ViewedCalibration> calibrations(1);
  calibrations.front().name = "none";
  if (!request.calibration_file.empty()) {
    ViewedCalibration first{request.calibration_file, request.calibration, std::nullopt};
    first.colour = request.colour ? request.colour->calibrations : std::nullopt;
    calibrations.push_back(std::move(first));
  }
  for (const std::string& file : options.compared) {
    const Bytes bytes = read_file(file, "a calibration file");
    const std::string text(bytes.begin(), bytes.end());
    ViewedCalibration calibration{file, std::nullopt, std::nullopt};
    if (request.colour) {
      calibration.colour = parse_colour_calibration(text, file);
    } else {
      calibration.grey = parse_calibration(text, file);
    }
    calibrations.push_back(std::move(calibration));
  }
  return calibrations;
}

/** Serves until an interruption, or until the last page is closed. */
void serve(ViewOptions& options, std::unique_ptr<CameraFeed> camera) {
  ViewSettings& settings = options.settings;
  const bool has_stream = camera || std::count(options.request.frames.begin(), options.request.frames.end(), "-") > 0;
  const auto bytes = static_cast<std::size_t>(options.memory * mebibyte);
  settings.frames.most_bytes = has_stream ? bytes / 2 : bytes;
  const Interruption interruption;
  ViewedInputs frames(options.request, std::move(camera), bytes / 2);
  const std::unique_ptr<Viewer> viewer = start_viewer(settings, frames);
  while (!Interruption::is_requested() && !viewer->is_over()) {
    std::this_thread::sleep_for(look_again);
  }
}

void run_view(ViewOptions& options) {
  FrameRequest& request = options.request;
  std::unique_ptr<CameraFeed> camera;
  if (options.camera) {
    if (!request.frames.empty()) {
      throw UsageError("--camera shows what a camera sends; FRAME is for files.");
    }
    camera = open_camera_feed(*options.camera);
  } else if (request.frames.empty()) {
    throw UsageError("FRAME is missing: files, folders, patterns or - (stdin).");
  }
  options.frames.finish(request, camera ? &camera->description() : nullptr);
  ViewSettings& settings = options.settings;
  settings.frames.settings = request;
  settings.frames.settings.calibration.reset();
  if (request.region) {
    settings.frames.settings.region.reset();  // cut out when frames are read
    settings.frames.settings.origin.x += request.region->x;
    settings.frames.settings.origin.y += request.region->y;
  }
  settings.frames.settings.threads = request.jobs;
  settings.frames.colour = request.colour;
  settings.frames.calibrations = read_calibrations(options);
  settings.calibration = request.calibration_file.empty() ? 0 : 1;
  settings.frames.library = request.library;
  settings.layout_is_given = request.layout_is_given;
  settings.version = NEROVA_VERSION;
  const auto end_of = [](double end) { return end > 0.0 ? std::optional(end) : std::nullopt; };
  settings.degree_end = end_of(options.ends.degree);
  settings.power_end = end_of(options.ends.power);
  if (!request.layout_is_given) {
    settings.notes.push_back(layout_assumption(request.layout));
  }
  settings.tell_address = [first = true, &options](const std::string& address) mutable {
    print_result(address + "\n");
    if (first && !options.no_open && !open_in_browser(address)) {
      note("no browser can be opened from here; open the address by hand.");
    }
    first = false;
  };
  serve(options, std::move(camera));
  Interruption::forget();  // it is how the command ends
}

}  // namespace

void declare_view(CLI::App& app) {
  const auto options = std::make_shared<ViewOptions>();
  CLI::App* command = app.add_subcommand("view", "Look at frames in the browser");
  limit(command
            ->add_option("--port", options->settings.port,
                         "Port to serve on, of this computer only\n"
                         "0 is one that is free.")
            ->type_name("N")
            ->capture_default_str(),
        0, 65535);
  command->add_flag("--no-open", options->no_open, "Print the address, and open no browser");
  command->add_flag("--once", options->settings.once,
                    "End when the last page was closed\n"
                    "That is when none has been open for 5 seconds after one was.");
  command
      ->add_option("--compare", options->compared,
                   "Another calibration file, to choose from in the page\n"
                   "Can be given several times.")
      ->type_name("FILE")
      ->allow_extra_args(false);
  limit(command
            ->add_option("--memory", options->memory,
                         "Most memory for frames and images that are kept, in MiB\n"
                         "What was used least recently is dropped first, and computed again when it is wanted. Half of "
                         "it holds the "
                         "last frames of standard input or a camera.")
            ->type_name("MIB")
            ->capture_default_str(),
        1, 1 << 20);
  command->add_option("--camera", options->camera, "Id, serial number or address of a camera, to look at what it sends")
      ->type_name("CAMERA");
  add_azimuth_style(command, options->settings.style);
  add_scale_ends(command, options->ends);
  add_output_maximum(command, options->request.output_maximum);
  options->frames.declare(command, options->request, false);
  command->footer(
      "Examples:\n"
      "  nerova-polarize view frame.png --bit-depth 12 --layout 90\n"
      "  nerova-polarize view run.raw --raw 2448x2048 --pixel-format Mono12p --no-open --port 8080");
  command->callback([options] { run_view(*options); });
}

}  // namespace nerova_zel
