#include "commands/record_command.h"

#include <chrono>
#include <memory>
#include <optional>

#include "batch/interruption.h"
#include "batch/progress_bar.h"
#include "commands/frame_options.h"
#include "commands/output_files.h"
#include "failure.h"
#include "formatted.h"
#include "messages.h"
#include "option_declarations.h"
#include "recorder.h"
#include "results.h"
#include "usage_error.h"

namespace nerova_zel {

namespace {

struct RecordOptions {
  std::string camera;
  bool list = false;
  bool layout_is_given = false;
  CameraChoices choices;
  RecordingRequest request;
  double patience = 5.0;
};

void print_cameras() {
  const std::vector<CameraDescription> cameras = list_cameras();
  if (cameras.empty()) {
    throw Failure("no camera answers.");
  }
  std::string lines;
  for (const CameraDescription& camera : cameras) {
    lines += formatted("%s: %s %s, serial number %s, at %s\n", camera.id.c_str(), camera.vendor.c_str(),
                       camera.model.c_str(), camera.serial_number.c_str(), camera.address.c_str());
  }
  print_result(lines);
}

/** "25 frames of 612 x 512 pixels in Mono12p in r.raw, 25.0 frames/s; 1 frame incomplete, 2 dropped". */
std::string summary(const Recording& recording, const std::string& file, double seconds) {
  std::string text = formatted("%s: %llu frames of %d x %d pixels in %s, layout %d", file.c_str(),
                               static_cast<unsigned long long>(recording.frames), recording.size.width,
                               recording.size.height, name_of(recording.format), recording.layout.angle_at(0, 0));
  if (seconds > 0.0) {
    text += formatted(", %.1f frames/s", static_cast<double>(recording.frames) / seconds);
  }
  return text + formatted("; %llu incomplete, %llu dropped\n",
                          static_cast<unsigned long long>(recording.incomplete_frames),
                          static_cast<unsigned long long>(recording.dropped_frames));
}

void run_record(RecordOptions& options) {
  if (options.list) {
    print_cameras();
    return;
  }
  if (options.request.file.empty()) {
    throw UsageError("--output FILE.raw is missing, which the frames are to go to.");
  }
  if (!options.request.replace) {
    refuse_existing(options.request.file, "--force replaces it");
  }
  if (!options.layout_is_given) {
    note(layout_assumption(options.request.layout));
  }
  options.request.patience = std::chrono::milliseconds(static_cast<long long>(options.patience * 1e3));
  const Interruption interruption;
  Camera camera(options.camera, options.choices);
  ProgressBar bar(verbosity() != Verbosity::quiet);
  const auto start = std::chrono::steady_clock::now();
  const auto seconds = [start] {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  };
  RecordingObserver observer;
  observer.stop = [] { return Interruption::is_requested(); };
  observer.warn = [&bar](const std::string& sentence) {
    bar.erase();
    note(sentence);
  };
  observer.frame = [&](const Recording& recording) {
    bar.draw({recording.frames, recording.frames, options.request.frames, seconds()});
  };
  const Recording recording = record(camera, options.request, observer);
  const double time = seconds();
  bar.erase();
  if (recording.frames == 0) {
    throw Failure("no frame came before the recording was ended; there is no file.");
  }
  if (verbosity() != Verbosity::quiet) {
    print_result(summary(recording, options.request.file, time));
  }
  if (recording.incomplete_frames + recording.dropped_frames > 0) {
    note("the recording has gaps: " + std::to_string(recording.incomplete_frames + recording.dropped_frames) +
         " frames that the camera sent are missing. A smaller --frame-rate or a faster disk helps.");
  }
}

}  // namespace

void declare_record(CLI::App& app) {
  auto options = std::make_shared<RecordOptions>();
  RecordingRequest& request = options->request;
  CLI::App* command = app.add_subcommand("record", "Record the frames of a camera (GigE Vision, USB3 Vision)");
  command->add_option("camera", options->camera, "Id, serial number or address; not needed where there is only one")
      ->type_name("CAMERA");
  command->add_flag("-l,--list", options->list, "List the cameras that answer");
  command
      ->add_option("-o,--output", request.file,
                   "File for the frames, as the camera sends them\n"
                   "FILE.raw.json beside it describes them, so that transform and stats read them without further "
                   "options.")
      ->type_name("FILE.raw");
  limit(command->add_option("-n,--count", request.frames, "Frames to record; without it, until Ctrl-C")->type_name("N"),
        1, 1LL << 40);
  add_layout(command, request.layout, &options->layout_is_given);
  add_choice<ColourPattern>(command, "--colour", request.colour, colour_patterns,
                            "Colour filters over the polarizers, for a format that does not tell them");
  command
      ->add_option("--pixel-format", options->choices.pixel_format,
                   "Pixel format to ask the camera for, such as Mono12p; else the one that it has")
      ->type_name("NAME");
  limit(
      command->add_option("--exposure", options->choices.exposure_us, "Exposure time")->type_name("MICROSECONDS"),
      [](double value) { return value > 0.0 && value <= 1e9; }, "above 0 and at most 1e9");
  command->add_option("--gain", options->choices.gain, "Gain, in the camera's unit")->type_name("NUMBER");
  limit(
      command->add_option("--frame-rate", options->choices.frame_rate, "Frames a second")->type_name("HZ"),
      [](double value) { return value > 0.0 && value <= 1e6; }, "above 0 and at most 1e6");
  limit(
      command->add_option("--timeout", options->patience, "Without a frame for so long the recording ends and fails")
          ->type_name("SECONDS")
          ->capture_default_str(),
      [](double value) { return value >= 0.1 && value <= 1e6; }, "0.1 to 1e6");
  command->add_flag("--force", request.replace, "Replace an earlier recording");
  add_verbosity(command);
  command->footer(
      "Examples:\n"
      "  nerova-polarize record --list\n"
      "  nerova-polarize record --output scene.raw --count 100 --layout 90 --pixel-format Mono12p\n"
      "  nerova-polarize transform scene.raw --output pictures");
  command->callback([options] { run_record(*options); });
}

}  // namespace nerova_zel
