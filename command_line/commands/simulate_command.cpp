#include "commands/simulate_command.h"

#include <cmath>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>

#include "angles.h"
#include "batch/interruption.h"
#include "calibration/polarizer_fit.h"
#include "commands/colour_options.h"
#include "commands/frame_options.h"
#include "commands/output_files.h"
#include "commands/truth_files.h"
#include "file_set.h"
#include "formatted.h"
#include "frame_files.h"
#include "messages.h"
#include "option_declarations.h"
#include "option_values.h"
#include "results.h"
#include "simulation/colour_scene.h"
#include "usage_error.h"

namespace nerova_zel {

namespace {

namespace fs = std::filesystem;

struct SimulateOptions {
  std::string file;
  bool no_clobber = false;
  FrameSize size{2448, 2048};
  CameraSettings camera;
  Origin origin{};
  std::optional<ColourPattern> colour;
  double refractive_index = 1.5;
  double dispersion = 0.0042;
  std::optional<double> source_angle;
  double source_power = 0.8;
  PerPolarizer angle_errors{};
  PerPolarizer extinctions{HUGE_VAL, HUGE_VAL, HUGE_VAL, HUGE_VAL};
  PerPolarizer gains{1.0, 1.0, 1.0, 1.0};
  std::optional<std::string> truth_directory;
};

SceneSettings scene_of(const SimulateOptions& options) {
  SceneSettings settings;
  settings.refractive_index = options.refractive_index;
  if (options.source_angle) {
    const double twice = *options.source_angle * pi / 90.0;
    const double power = options.source_power;
    settings.uniform_light = {power, power * std::cos(twice), power * std::sin(twice)};
  }
  return settings;
}

CameraSettings camera_of(const SimulateOptions& options) {
  check_frame_extension(options.file);
  CameraSettings camera = options.camera;
  if (!(camera.dark_level >= 0.0 && camera.dark_level < (1 << camera.bit_depth))) {
    throw UsageError("--dark-level must be 0 or more, and less than the pixel values there are.");
  }
  camera.width = options.size.width;
  camera.height = options.size.height;
  camera.origin_x = options.origin.x;
  camera.origin_y = options.origin.y;
  if (options.colour && cauchy_index(options.refractive_index, options.dispersion, longest_wavelength) <= 1.0) {
    throw UsageError("--index and --dispersion give red light an index that is not above 1.");
  }
  for (std::size_t i = 0; i < camera.polarizers.size(); ++i) {
    camera.polarizers[i] = {options.angle_errors[i], options.extinctions[i], options.gains[i]};
  }
  return camera;
}

/** The command that transforms what was written. */
std::string next_command(const SimulateOptions& options) {
  const CameraSettings& camera = options.camera;
  std::string command = "nerova-polarize transform " + options.file + " --layout " +
                        std::to_string(camera.layout.angle_at(0, 0)) + " --origin " + std::to_string(options.origin.x) +
                        "," + std::to_string(options.origin.y) + " --bit-depth " + std::to_string(camera.bit_depth);
  if (lower_case_extension(options.file) == ".raw") {
    command += " --raw " + std::to_string(options.size.width) + "x" + std::to_string(options.size.height);
  }
  if (options.colour) {
    command += std::string(" --colour ") + name_of(*options.colour);
  }
  return command;
}

/** The frame's pixels; its truth, if wanted, goes into `files`. */
std::vector<std::uint16_t> simulate(const SimulateOptions& options, const CameraSettings& camera, FileSet& files) {
  const std::string stem = fs::u8path(options.file).stem().u8string();
  if (!options.colour) {
    const SimulatedScene scene(camera.width, camera.height, scene_of(options));
    if (options.truth_directory) {
      write_truth(files, fs::u8path(*options.truth_directory), stem, scene, camera);
    }
    return simulate_frame(scene, camera);
  }
  const ColourScene scene(camera.width, camera.height, scene_of(options), options.dispersion);
  if (options.truth_directory) {
    write_colour_truth(files, fs::u8path(*options.truth_directory), stem, scene,
                       {*options.colour, options.origin, {camera.width, camera.height}});
  }
  return simulate_colour_frame(scene, camera, *options.colour);
}

void run_simulate(const SimulateOptions& options) {
  const CameraSettings camera = camera_of(options);
  const Interruption interruption;
  FileSet files(options.no_clobber ? FileSet::Earlier::refused : FileSet::Earlier::replaced);
  const std::vector<std::uint16_t> pixels = simulate(options, camera, files);
  files.write(fs::u8path(options.file),
              encode_frame(pixels, camera.width, camera.height, camera.bit_depth, options.file));
  commit_unless_interrupted(files);
  if (verbosity() != Verbosity::quiet) {
    print_result(formatted("%s: %d x %d, %d-bit, layout %d; transform it with: %s\n", options.file.c_str(),
                           camera.width, camera.height, camera.bit_depth, camera.layout.angle_at(0, 0),
                           next_command(options).c_str()));
  }
}

/** Numbers for the four polarizers. */
void add_four(CLI::App* command, const std::string& name, PerPolarizer& values, double least, double greatest,
              const std::string& type, const std::string& default_text, const std::string& help) {
  add_parsed<PerPolarizer>(
      command, name, values, [=](const std::string& text) { return parse_four(name, text, least, greatest); }, help)
      ->type_name(type)
      ->default_str(default_text);
}

}  // namespace

void declare_simulate(CLI::App& app) {
  const auto options = std::make_shared<SimulateOptions>();
  CameraSettings& camera = options->camera;
  CLI::App* command =
      app.add_subcommand("simulate", "Make a raw frame of a glossy sphere and a wheel of polarizers, with known truth");
  CLI::Option* file =
      command->add_option("FILE,-o,--output", options->file, "Frame to write: .png, .tiff, .pgm, or headerless .raw")
          ->type_name("FILE")
          ->required();
  add_former_name(command, "--out", file);
  command->add_flag("--no-clobber", options->no_clobber, "Refuse to replace files");
  add_parsed<FrameSize>(
      command, "--size", options->size, [](const std::string& text) { return parse_size("--size", text); },
      "Columns and rows")
      ->type_name("WxH")
      ->default_str("2448x2048");
  add_layout(command, camera.layout);
  add_origin(command, options->origin, "frame's top-left pixel");
  limit(command
            ->add_option("--bit-depth", camera.bit_depth,
                         "Significant bits: 1 to 16; one byte per pixel up to 8, else two")
            ->type_name("BITS")
            ->capture_default_str(),
        1, 16);
  limit(
      command
          ->add_option("--photons", camera.full_well,
                       "Photo-electrons that fill a pixel, for shot noise; 0 for none\n"
                       "A usual sensor holds 10000.")
          ->type_name("N")
          ->capture_default_str(),
      [](double photons) { return photons >= 0.0 && photons <= 1e12; }, "0 (no shot noise) to 1e12");
  command->add_option("--seed", camera.seed, "Start of the noise; the same seed gives the same frame")
      ->type_name("N")
      ->capture_default_str();
  limit(
      command
          ->add_option("--index", options->refractive_index, "Refractive index of the sphere, with --colour at 589 nm")
          ->type_name("NUMBER")
          ->capture_default_str(),
      [](double index) { return index > 1.0 && index <= 10.0; }, "above 1 and at most 10");
  add_colour(command, options->colour, "The sensor has colour filters in this pattern");
  limit(
      command
          ->add_option(
              "--dispersion", options->dispersion,
              "With --colour, by how much the index rises for blue\n"
              "In square micrometres, the second coefficient of Cauchy's formula: 0.0042 for crown glass, 0.013 "
              "for dense flint.")
          ->type_name("NUMBER")
          ->capture_default_str(),
      [](double dispersion) { return dispersion >= 0.0 && dispersion <= 0.1; }, "0 (none) to 0.1");
  limit(
      command
          ->add_option("--source-angle", options->source_angle,
                       "In place of the scene, a uniform source behind a polarizer at this angle")
          ->type_name("DEGREES"),
      [](double angle) { return std::abs(angle) <= 360.0; }, "-360 to 360 degrees");
  limit(
      command
          ->add_option("--source-power", options->source_power,
                       "Light of that source; 0 for a dark frame\n"
                       "As a share of what fills a pixel behind an aligned polarizer.")
          ->type_name("SHARE")
          ->capture_default_str(),
      [](double power) { return power >= 0.0 && power <= 10.0; }, "0 (no light) to 10");
  add_four(command, "--angle-errors", options->angle_errors, -20.0, 20.0, "DEGREES", "0",
           "How far the sensor's polarizers are turned: one number, or four\n"
           "Four are for the polarizers 0,45,90,135.");
  add_four(command, "--extinction", options->extinctions, 1.0, HUGE_VAL, "NUMBER", "inf",
           "Extinction ratios of the sensor's polarizers, likewise");
  add_four(command, "--gains", options->gains, 0.01, 10.0, "NUMBER", "1",
           "Relative response of the pixels behind them, likewise");
  command->add_option("--dark-level", camera.dark_level, "Pixel value without light")
      ->type_name("NUMBER")
      ->capture_default_str();
  command
      ->add_option("--truth", options->truth_directory,
                   "Folder for the true angle (degrees) and degree, as float TIFF\n"
                   "Of each output pixel it is that at the centre of the 2 x 2 pixels that it is computed from.")
      ->type_name("DIR");
  add_verbosity(command);
  command->footer(
      "Examples:\n"
      "  nerova-polarize simulate frame.png --bit-depth 12 --photons 10000 --truth truth\n"
      "  nerova-polarize simulate a30.png --source-angle 30 --angle-errors=1.2,-0.8,-1.5,0.6");
  command->callback([options] { run_simulate(*options); });
}

}  // namespace nerova_zel
