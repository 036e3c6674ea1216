#include <CLI/CLI.hpp>
#include <cstdio>
#include <opencv2/core/utils/logger.hpp>
#include <string>

#include "calibrate_command.h"
#include "failure.h"
#include "interruption.h"
#include "quiet_errors.h"
#include "simulate_command.h"
#include "stats_command.h"
#include "transform_command.h"

namespace {

constexpr int exit_failure = 1;
constexpr int exit_usage = 2;

const char* const layout_help =
    "Angle of the top-left pixel when the origin is even, which names the whole 2 x 2 pattern: 0 [0,135/45,90], "
    "45 [45,90/0,135], 90 [90,45/135,0], 135 [135,0/90,45]";

/** The options that all commands have which transform frames. */
void add_frame_options(CLI::App* command, nerova_zel::FrameOptions& options) {
  command
      ->add_option("FRAME", options.frames,
                   "8- or 16-bit grey PNG, TIFF or binary PGM, or headerless pixels (--raw); any number of files, "
                   "folders (their frames by name), patterns with * and ? in quotes, or - for headerless frames from "
                   "standard input")
      ->required();
  command->add_option("--raw", options.raw,
                      "Files hold headerless pixels, frames of this size, WxH. Without --pixel-format a file is one "
                      "frame: one byte a pixel, or two with the low byte first, as its length says");
  command->add_option("--pixel-format", options.pixel_format,
                      "How headerless pixels lie in bytes, in files of any number of frames: Mono8, Mono10, Mono12, "
                      "Mono16 (16 bits, low byte first), Mono10p, Mono12p (streams of bits), Mono12Packed. Frames of a "
                      "file of several are told apart by number: STEM_000000_power.png");
  command->add_option("--layout", options.layout, layout_help)->capture_default_str();
  command->add_option("--origin", options.origin, "Sensor coordinates X,Y of the frame's top-left pixel")
      ->capture_default_str();
  command->add_option("--roi", options.region,
                      "Only the region X,Y,W,H of the frame, as if the camera had read out no more");
  command->add_option(
      "--bit-depth", options.bit_depth,
      "Significant bits of a pixel; else by the pixel format, for PGM by the greatest value, otherwise 8 "
      "or 16 by the file");
  command->add_option("--jobs", options.jobs, "How many frames to work on at once; else as many as there are cores");
  command->add_option("--calibration", options.calibration, "Calibration file that calibrate has written");
  command->add_option("--library", options.library,
                      "The polarization processor library; else the one beside this program (../lib or where it was "
                      "installed), then by the system");
}

void add_transform(CLI::App& app, nerova_zel::TransformOptions& options) {
  CLI::App* command = app.add_subcommand("transform", "Turn raw mosaic frames into pictures of polarization");
  add_frame_options(command, options);
  command->add_option("--output-max", options.output_maximum, "What full scale, 180 degrees and degree 1 map to")
      ->capture_default_str();
  command
      ->add_option(
          "--outputs", options.outputs,
          "all, or a list of stokes (S1/P and S2/P: two float TIFFs, or one array), power, hv, diagonal, "
          "azimuth, dolp (16-bit), and to look at sheet (everything on a page), azimuth-picture (the azimuth in "
          "colour at the frame's size) and azimuth-legend (what its colours mean)")
      ->capture_default_str();
  command->add_option("--out", options.directory, "Directory for the results, made if missing")->capture_default_str();
  command->add_flag("--overwrite", options.overwrite,
                    "Make all outputs anew. Without it a frame is skipped whose outputs are all there and newer than "
                    "its file (for standard input: are there) and the calibration, with whatever other options they "
                    "were made");
  command->add_option("--format", options.format, "Form of the outputs: png, tiff, or npy for arrays")
      ->capture_default_str();
  command
      ->add_option(
          "--azimuth-style", options.azimuth_style,
          "How azimuth pictures show more than the angle: plain not at all, light by the degree as saturation, "
          "dark by the degree as brightness, composite by the degree as saturation and the power as brightness")
      ->capture_default_str();
  command->add_option("--degree-max", options.degree_end,
                      "In pictures, the degree at which colour scales end; chosen for each frame if not given");
  command->add_option("--power-max", options.power_end,
                      "In pictures, the power at which colour scales end, as a share of full scale; likewise");
  command->add_option(
      "--repeat", options.repeat,
      "How often to transform a frame, for the time of the best; else 5 for a single frame, 1 for many");
  command->callback([&options] { nerova_zel::run_transform(options); });
}

void add_stats(CLI::App& app, nerova_zel::StatsOptions& options) {
  CLI::App* command =
      app.add_subcommand("stats",
                         "Print mean angle and degree of polarization, and how many pixels are saturated or "
                         "dark, of frames and of all together");
  add_frame_options(command, options);
  command
      ->add_option(
          "--weight", options.weight,
          "What a pixel counts for in means: equal, or power for its light, so that the means are those of all "
          "light together")
      ->capture_default_str();
  command->add_flag("--summary", options.summary, "Only all frames together");
  command->add_flag("--json", options.json, "As a JSON document");
  command->callback([&options] { nerova_zel::run_stats(options); });
}

void add_simulate(CLI::App& app, nerova_zel::SimulateOptions& options) {
  CLI::App* command = app.add_subcommand(
      "simulate", "Make a raw mosaic frame of a glossy sphere and a wheel of polarizers, with known polarization");
  command->add_option("FILE,--out", options.file, "Frame to write: .png, .tif, .tiff, .pgm, or .raw without header")
      ->capture_default_str();
  command->add_option("--size", options.size, "WxH in pixels")->capture_default_str();
  command->add_option("--layout", options.layout, layout_help)->capture_default_str();
  command->add_option("--origin", options.origin, "Sensor coordinates X,Y of the frame's top-left pixel")
      ->capture_default_str();
  command->add_option("--bit-depth", options.bit_depth, "1 to 16; one byte per pixel up to 8, else two")
      ->capture_default_str();
  command
      ->add_option("--photons", options.photons,
                   "Photo-electrons that fill a pixel, for shot noise; a usual sensor holds 10000; 0 for none")
      ->capture_default_str();
  command->add_option("--seed", options.seed, "Start of the noise; the same seed gives the same frame")
      ->capture_default_str();
  command->add_option("--index", options.refractive_index, "Refractive index of the sphere")->capture_default_str();
  command->add_option("--source-angle", options.source_angle,
                      "In place of the scene, a uniform source behind a linear polarizer at this angle in degrees");
  command
      ->add_option("--source-power", options.source_power,
                   "Light of that source, as a share of what fills a pixel behind an aligned polarizer; 0 for a dark "
                   "frame")
      ->capture_default_str();
  command
      ->add_option("--angle-errors", options.angle_errors,
                   "Degrees by which the sensor's polarizers are turned: one number, or four for 0,45,90,135")
      ->capture_default_str();
  command->add_option("--extinction", options.extinctions, "Extinction ratios of the sensor's polarizers, likewise")
      ->capture_default_str();
  command->add_option("--gains", options.gains, "Relative response of the pixels behind them, likewise")
      ->capture_default_str();
  command->add_option("--dark-level", options.dark_level, "Pixel value without light")->capture_default_str();
  command->add_option("--truth", options.truth_directory,
                      "Directory for the true angle (degrees) and degree as float TIFF, for each output pixel at the "
                      "centre of the 2 x 2 pixels it is computed from");
  command->callback([&options] { nerova_zel::run_simulate(options); });
}

void add_calibrate(CLI::App& app, nerova_zel::CalibrateOptions& options) {
  CLI::App* command = app.add_subcommand(
      "calibrate", "Find the calibration of a camera from frames of a uniform source behind a linear polarizer");
  command
      ->add_option("--frame", options.frames,
                   "ANGLE:FILE of a frame; repeat it for four angles or more. Angles are degrees from the image's "
                   "horizontal axis, counter-clockwise as seen in the image")
      ->allow_extra_args(false);
  command->add_option("--list", options.list, "Text file with a line ANGLE,FILE for each frame");
  command->add_option("--dark", options.dark, "Frame without light, for the dark level");
  command->add_option("--raw", options.raw, "The files are headerless pixels of this size, WxH, a frame each");
  command->add_option("--pixel-format", options.pixel_format,
                      "How headerless pixels lie in bytes, by the names that transform takes");
  command->add_option("--layout", options.layout, layout_help)->capture_default_str();
  command->add_option("--origin", options.origin, "Sensor coordinates X,Y of the frames' top-left pixel")
      ->capture_default_str();
  command->add_option("--bit-depth", options.bit_depth,
                      "Significant bits of a pixel; 8 or 16 by the file, for PGM by its greatest value");
  command->add_flag("--steady-source", options.steady_source,
                    "Take the source as equally bright in all frames; else its brightness is fitted for each");
  command->add_option("FILE,--out", options.file, "Calibration to write, .json; its plot goes beside it as .png")
      ->capture_default_str();
  command->callback([&options] { nerova_zel::run_calibrate(options); });
}

int complain(const std::string& sentence, int code) {
  std::fprintf(nerova_zel::messages(), "nerova-polarize: %s\n", sentence.c_str());
  return code;
}

int run(int argc, char** argv) {
  try {
    cv::utils::logging::setLogLevel(cv::utils::logging::LOG_LEVEL_SILENT);
    CLI::App app("Pictures of polarization from the raw frames of a polarization camera", "nerova-polarize");
    app.require_subcommand(1);
    nerova_zel::TransformOptions transform;
    nerova_zel::SimulateOptions simulate;
    nerova_zel::CalibrateOptions calibrate;
    nerova_zel::StatsOptions stats;
    add_transform(app, transform);
    add_stats(app, stats);
    add_calibrate(app, calibrate);
    add_simulate(app, simulate);
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
