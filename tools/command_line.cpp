#include "command_line.h"

#include <cstdio>

#include "failure.h"
#include "manual_page.h"
#include "shell_completion.h"
#include "transform_command.h"
#include "version_text.h"

namespace nerova_zel {

namespace {

const char* const layout_help =
    "Angle of the top-left pixel when the origin is even, which names the whole 2 x 2 pattern: 0 [0,135/45,90], "
    "45 [45,90/0,135], 90 [90,45/135,0], 135 [135,0/90,45]";

/** The options that all commands have which transform frames. */
void add_frame_options(CLI::App* command, FrameOptions& options) {
  command
      ->add_option("FRAME", options.frames,
                   "8- or 16-bit grey PNG, TIFF or binary PGM, or headerless pixels (--raw); any number of files, "
                   "folders (their frames by name), patterns with * and ? in quotes, or - for headerless frames from "
                   "standard input")
      ->type_name("FILE")
      ->required();
  command
      ->add_option("--raw", options.raw,
                   "Files hold headerless pixels, frames of this size, WxH. Without --pixel-format a file is one "
                   "frame: one byte a pixel, or two with the low byte first, as its length says")
      ->type_name("WxH");
  command
      ->add_option("--pixel-format", options.pixel_format,
                   "How headerless pixels lie in bytes, in files of any number of frames: Mono8, Mono10, Mono12, "
                   "Mono16 (16 bits, low byte first), Mono10p, Mono12p (streams of bits), Mono12Packed. Frames of a "
                   "file of several are told apart by number: STEM_000000_power.png")
      ->type_name("{Mono8,Mono10,Mono12,Mono16,Mono10p,Mono12p,Mono12Packed}");
  command->add_option("--layout", options.layout, layout_help)->type_name("{0,45,90,135}")->capture_default_str();
  command->add_option("--origin", options.origin, "Sensor coordinates X,Y of the frame's top-left pixel")
      ->type_name("X,Y")
      ->capture_default_str();
  command
      ->add_option("--roi", options.region,
                   "Only the region X,Y,W,H of the frame, as if the camera had read out no more")
      ->type_name("X,Y,W,H");
  command
      ->add_option("--bit-depth", options.bit_depth,
                   "Significant bits of a pixel; else by the pixel format, for PGM by the greatest value, otherwise 8 "
                   "or 16 by the file")
      ->type_name("BITS");
  command->add_option("--jobs", options.jobs, "How many frames to work on at once; else as many as there are cores")
      ->type_name("N");
  command->add_option("--calibration", options.calibration, "Calibration file that calibrate has written")
      ->type_name("FILE");
  command
      ->add_option("--library", options.library,
                   "The polarization processor library; else the one beside this program (../lib or where it was "
                   "installed), then by the system")
      ->type_name("FILE");
}

void add_transform(CLI::App& app, TransformOptions& options) {
  CLI::App* command = app.add_subcommand("transform", "Turn raw mosaic frames into pictures of polarization");
  add_frame_options(command, options);
  command->add_option("--output-max", options.output_maximum, "What full scale, 180 degrees and degree 1 map to")
      ->type_name("N")
      ->capture_default_str();
  command
      ->add_option(
          "--outputs", options.outputs,
          "What to write: all, or a list of stokes (S1/P and S2/P: two float TIFFs, or one array), power, hv, "
          "diagonal, "
          "azimuth, dolp (16-bit), and to look at sheet (everything on a page), azimuth-picture (the azimuth in "
          "colour at the frame's size) and azimuth-legend (what its colours mean)")
      ->type_name("{all,stokes,power,hv,diagonal,azimuth,dolp,sheet,azimuth-picture,azimuth-legend},...")
      ->capture_default_str();
  command->add_option("--out", options.directory, "Directory for the results, made if missing")
      ->type_name("DIR")
      ->capture_default_str();
  command->add_flag("--overwrite", options.overwrite,
                    "Make all outputs anew. Without it a frame is skipped whose outputs are all there and newer than "
                    "its file (for standard input: are there) and the calibration, with whatever other options they "
                    "were made");
  command->add_option("--format", options.format, "Form of the outputs: png, tiff, or npy for arrays")
      ->type_name("{png,tiff,npy}")
      ->capture_default_str();
  command
      ->add_option(
          "--azimuth-style", options.azimuth_style,
          "How azimuth pictures show more than the angle: plain not at all, light by the degree as saturation, "
          "dark by the degree as brightness, composite by the degree as saturation and the power as brightness")
      ->type_name("{plain,light,dark,composite}")
      ->capture_default_str();
  command
      ->add_option("--degree-max", options.degree_end,
                   "In pictures, the degree at which colour scales end; chosen for each frame if not given")
      ->type_name("SHARE");
  command
      ->add_option("--power-max", options.power_end,
                   "In pictures, the power at which colour scales end, as a share of full scale; likewise")
      ->type_name("SHARE");
  command
      ->add_option("--repeat", options.repeat,
                   "How often to transform a frame, for the time of the best; else 5 for a single frame, 1 for many")
      ->type_name("N");
  command->footer(
      "Examples:\n"
      "  nerova-polarize transform frame.png --bit-depth 12 --out pictures\n"
      "  nerova-polarize transform frame.png --calibration camera.json --outputs azimuth,dolp --format npy\n"
      "  nerova-polarize transform run.raw --raw 2448x2048 --pixel-format Mono12p --out run\n"
      "  recorder | nerova-polarize transform - --raw 2448x2048 --pixel-format Mono12 --out run");
  command->callback([&options] { run_transform(options); });
}

void add_stats(CLI::App& app, StatsOptions& options) {
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
      ->type_name("{equal,power}")
      ->capture_default_str();
  command->add_flag("--summary", options.summary, "Only all frames together");
  command->add_flag("--json", options.json, "As a JSON document");
  command->footer(
      "Examples:\n"
      "  nerova-polarize stats frame.png --bit-depth 12 --roi 800,600,200,200\n"
      "  nerova-polarize stats 'night/*.tiff' --summary --json");
  command->callback([&options] { run_stats(options); });
}

void add_simulate(CLI::App& app, SimulateOptions& options) {
  CLI::App* command = app.add_subcommand(
      "simulate", "Make a raw mosaic frame of a glossy sphere and a wheel of polarizers, with known polarization");
  command->add_option("FILE,--out", options.file, "Frame to write: .png, .tif, .tiff, .pgm, or .raw without header")
      ->type_name("FILE")
      ->capture_default_str();
  command->add_option("--size", options.size, "WxH in pixels")->type_name("WxH")->capture_default_str();
  command->add_option("--layout", options.layout, layout_help)->type_name("{0,45,90,135}")->capture_default_str();
  command->add_option("--origin", options.origin, "Sensor coordinates X,Y of the frame's top-left pixel")
      ->type_name("X,Y")
      ->capture_default_str();
  command->add_option("--bit-depth", options.bit_depth, "1 to 16; one byte per pixel up to 8, else two")
      ->type_name("BITS")
      ->capture_default_str();
  command
      ->add_option("--photons", options.photons,
                   "Photo-electrons that fill a pixel, for shot noise; a usual sensor holds 10000; 0 for none")
      ->type_name("N")
      ->capture_default_str();
  command->add_option("--seed", options.seed, "Start of the noise; the same seed gives the same frame")
      ->type_name("N")
      ->capture_default_str();
  command->add_option("--index", options.refractive_index, "Refractive index of the sphere")
      ->type_name("NUMBER")
      ->capture_default_str();
  command
      ->add_option("--source-angle", options.source_angle,
                   "In place of the scene, a uniform source behind a linear polarizer at this angle in degrees")
      ->type_name("DEGREES");
  command
      ->add_option("--source-power", options.source_power,
                   "Light of that source, as a share of what fills a pixel behind an aligned polarizer; 0 for a dark "
                   "frame")
      ->type_name("SHARE")
      ->capture_default_str();
  command
      ->add_option("--angle-errors", options.angle_errors,
                   "Degrees by which the sensor's polarizers are turned: one number, or four for 0,45,90,135")
      ->type_name("DEGREES")
      ->capture_default_str();
  command->add_option("--extinction", options.extinctions, "Extinction ratios of the sensor's polarizers, likewise")
      ->type_name("NUMBER")
      ->capture_default_str();
  command->add_option("--gains", options.gains, "Relative response of the pixels behind them, likewise")
      ->type_name("NUMBER")
      ->capture_default_str();
  command->add_option("--dark-level", options.dark_level, "Pixel value without light")
      ->type_name("NUMBER")
      ->capture_default_str();
  command
      ->add_option("--truth", options.truth_directory,
                   "Directory for the true angle (degrees) and degree as float TIFF, for each output pixel at the "
                   "centre of the 2 x 2 pixels it is computed from")
      ->type_name("DIR");
  command->footer(
      "Examples:\n"
      "  nerova-polarize simulate frame.png --bit-depth 12 --photons 10000 --truth truth\n"
      "  nerova-polarize simulate a30.png --source-angle 30 --angle-errors=1.2,-0.8,-1.5,0.6 --extinction 200");
  command->callback([&options] { run_simulate(options); });
}

void add_calibrate(CLI::App& app, CalibrateOptions& options) {
  CLI::App* command = app.add_subcommand(
      "calibrate", "Find the calibration of a camera from frames of a uniform source behind a linear polarizer");
  command
      ->add_option("--frame", options.frames,
                   "ANGLE:FILE of a frame; repeat it for four angles or more. Angles are degrees from the image's "
                   "horizontal axis, counter-clockwise as seen in the image")
      ->type_name("ANGLE:FILE")
      ->allow_extra_args(false);
  command->add_option("--list", options.list, "Text file with a line ANGLE,FILE for each frame")->type_name("FILE");
  command->add_option("--dark", options.dark, "Frame without light, for the dark level")->type_name("FILE");
  command->add_option("--raw", options.raw, "The files are headerless pixels of this size, WxH, a frame each")
      ->type_name("WxH");
  command
      ->add_option("--pixel-format", options.pixel_format,
                   "How headerless pixels lie in bytes, by the names that transform takes")
      ->type_name("{Mono8,Mono10,Mono12,Mono16,Mono10p,Mono12p,Mono12Packed}");
  command->add_option("--layout", options.layout, layout_help)->type_name("{0,45,90,135}")->capture_default_str();
  command->add_option("--origin", options.origin, "Sensor coordinates X,Y of the frames' top-left pixel")
      ->type_name("X,Y")
      ->capture_default_str();
  command
      ->add_option("--bit-depth", options.bit_depth,
                   "Significant bits of a pixel; 8 or 16 by the file, for PGM by its greatest value")
      ->type_name("BITS");
  command->add_flag("--steady-source", options.steady_source,
                    "Take the source as equally bright in all frames; else its brightness is fitted for each");
  command->add_option("FILE,--out", options.file, "Calibration to write, .json; its plot goes beside it as .png")
      ->type_name("FILE")
      ->capture_default_str();
  command->footer(
      "Examples:\n"
      "  nerova-polarize calibrate --list angles.csv --dark dark.png --bit-depth 12 --out camera.json\n"
      "  nerova-polarize calibrate --frame 0:a.png --frame 45:b.png --frame 90:c.png --frame 135:d.png");
  command->callback([&options] { run_calibrate(options); });
}

/** What describes the program itself. */
void add_documents(CLI::App& app, std::string& shell) {
  CLI::App* completion = app.add_subcommand("completion", "Print the file that lets a shell complete this command");
  completion->add_option("SHELL", shell, "Which shell")->type_name("{bash,zsh}")->required();
  completion->footer("Examples:\n  source <(nerova-polarize completion bash)");
  completion->callback([&app, &shell] {
    if (shell != "bash" && shell != "zsh") {
      throw Failure("completion knows no shell " + shell + "; it must be bash or zsh.");
    }
    std::fputs((shell == "bash" ? bash_completion(app) : zsh_completion(app)).c_str(), stdout);
  });
  CLI::App* manual = app.add_subcommand("manual", "Print the manual page, for man -l -");
  manual->callback([&app] { std::fputs(manual_page(app).c_str(), stdout); });
}

}  // namespace

void declare_commands(CLI::App& app, CommandOptions& options) {
  app.require_subcommand(1);
  app.set_version_flag("--version", version_text, "Print the version, and what will compute frames on this computer");
  app.footer(
      "Examples:\n"
      "  nerova-polarize simulate frame.png --bit-depth 12\n"
      "  nerova-polarize transform frame.png --bit-depth 12 --out pictures\n\n"
      "Each command has its own --help, with more of them.");
  add_transform(app, options.transform);
  add_stats(app, options.stats);
  add_calibrate(app, options.calibrate);
  add_simulate(app, options.simulate);
  add_documents(app, options.shell);
}

}  // namespace nerova_zel
