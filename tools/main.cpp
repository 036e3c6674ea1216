#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <opencv2/core.hpp>
#include <opencv2/core/utils/logger.hpp>
#include <string>

#include "failure.h"
#include "simulate_command.h"
#include "transform_command.h"

namespace {

constexpr int exit_failure = 1;
constexpr int exit_usage = 2;

const std::string memory_ran_out = "memory ran out; a smaller frame or fewer --outputs need less.";

const char* const layout_help =
    "Angle of the top-left pixel when the origin is even, which names the whole 2 x 2 pattern: 0 [0,135/45,90], "
    "45 [45,90/0,135], 90 [90,45/135,0], 135 [135,0/90,45]";

void add_transform(CLI::App& app, nerova_zel::TransformOptions& options) {
  CLI::App* command = app.add_subcommand("transform", "Turn a raw mosaic frame into pictures of polarization");
  command->add_option("FRAME", options.frame, "8- or 16-bit grey PNG, TIFF or binary PGM, or headerless pixels")
      ->required();
  command->add_option("--raw", options.raw,
                      "FRAME is headerless pixels of this size, WxH: one byte each, or two with the low byte first, as "
                      "the file's length says");
  command->add_option("--layout", options.layout, layout_help)->capture_default_str();
  command->add_option("--origin", options.origin, "Sensor coordinates X,Y of the frame's top-left pixel")
      ->capture_default_str();
  command->add_option("--bit-depth", options.bit_depth,
                      "Significant bits of a pixel; 8 or 16 by the file, for PGM by its greatest value");
  command->add_option("--output-max", options.output_maximum, "What full scale, 180 degrees and degree 1 map to")
      ->capture_default_str();
  command
      ->add_option("--outputs", options.outputs,
                   "all, or a list of stokes (S1/P and S2/P as float TIFF), power, hv, diagonal, azimuth, dolp "
                   "(16-bit), sheet (a picture of everything to look at)")
      ->capture_default_str();
  command->add_option("--out", options.directory, "Directory for the results, made if missing")->capture_default_str();
  command->add_option("--format", options.format, "Form of the 16-bit outputs: png or tiff")->capture_default_str();
  command
      ->add_option("--azimuth-brightness", options.azimuth_brightness,
                   "In the sheet, what darkens the azimuth: degree, or full for nothing")
      ->capture_default_str();
  command->add_option("--degree-max", options.degree_limit,
                      "In the sheet, the degree at which colour scales end; chosen from the picture if not given");
  command->add_option("--repeat", options.repeat, "How often to transform, for the time of the best")
      ->capture_default_str();
  command->add_option("--library", options.library,
                      "The polarization processor library; else the one beside this program (../lib or where it was "
                      "installed), then by the system");
  command->callback([&options] { nerova_zel::run_transform(options); });
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
  command->add_option("--truth", options.truth_directory,
                      "Directory for the true angle (degrees) and degree as float TIFF, for each output pixel at the "
                      "centre of the 2 x 2 pixels it is computed from");
  command->callback([&options] { nerova_zel::run_simulate(options); });
}

int complain(const std::string& sentence, int code) {
  std::fprintf(stderr, "nerova-polarize: %s\n", sentence.c_str());
  return code;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    cv::utils::logging::setLogLevel(cv::utils::logging::LOG_LEVEL_SILENT);
    CLI::App app("Pictures of polarization from the raw frames of a polarization camera", "nerova-polarize");
    app.require_subcommand(1);
    nerova_zel::TransformOptions transform;
    nerova_zel::SimulateOptions simulate;
    add_transform(app, transform);
    add_simulate(app, simulate);
    try {
      app.parse(argc, argv);
    } catch (const CLI::Success& help) {
      return app.exit(help);
    } catch (const CLI::ParseError& error) {
      return complain(error.what() + std::string("; see nerova-polarize --help."), exit_usage);
    }
    return 0;
  } catch (const nerova_zel::Failure& failure) {
    return complain(failure.what(), exit_failure);
  } catch (const std::bad_alloc&) {
    return complain(memory_ran_out, exit_failure);
  } catch (const cv::Exception& error) {
    return complain(
        error.code == cv::Error::StsNoMem ? memory_ran_out : "the picture library fails: " + error.err + ".",
        exit_failure);
  } catch (const std::exception& error) {
    return complain(std::string("unexpected failure: ") + error.what(), exit_failure);
  }
}
