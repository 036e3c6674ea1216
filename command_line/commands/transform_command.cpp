#include "commands/transform_command.h"

#include <memory>

#include "batch/batch_runner.h"
#include "batch/interruption.h"
#include "batch/output_names.h"
#include "commands/frame_options.h"
#include "commands/transform_job.h"
#include "failure.h"
#include "file_set.h"
#include "option_declarations.h"

namespace nerova_zel {

namespace {

constexpr int repeat_of_lone_frame = 5;

constexpr std::array<std::pair<const char*, FileFormat>, 3> formats = {
    {{"png", FileFormat::png}, {"tiff", FileFormat::tiff}, {"npy", FileFormat::npy}}};

std::vector<std::pair<const char*, AzimuthStyle>> style_names() {
  std::vector<std::pair<const char*, AzimuthStyle>> names;
  for (const NamedAzimuthStyle& style : azimuth_styles) {
    names.emplace_back(style.name, style.style);
  }
  return names;
}

/** Options as given, and the request that is made of them. */
struct TransformOptions {
  FrameOptions frames;
  TransformRequest request;
  Products products = parse_products("all");
  FileFormat format = FileFormat::png;
  std::optional<int> repeat;
};

void limit_scale_end(CLI::Option* option) {
  limit(
      option->type_name("SHARE"), [](double end) { return end > 0.0 && end <= 1.0; }, "above 0 and at most 1");
}

std::vector<std::string> endings(const std::vector<OutputFile>& files) {
  std::vector<std::string> all;
  all.reserve(files.size());
  for (const OutputFile& file : files) {
    all.push_back(file.ending);
  }
  return all;
}

void run_transform(TransformOptions& options) {
  TransformRequest& request = options.request;
  options.frames.finish(request);
  if (request.calibration) {
    request.calibrated = std::filesystem::last_write_time(request.calibration_file);
  }
  request.needed = options.products.needed_outputs();
  request.files = output_files(options.products, options.format, request.picture_style.azimuth);
  FrameSequence frames(find_inputs(request.frames, request.headerless), request.headerless);
  check_output_names(frames.inputs(), request.directory.string(), endings(request.files));
  request.repeat = options.repeat.value_or(frames.is_lone_frame() ? repeat_of_lone_frame : 1);
  Library library(request.library);
  use_calibration(library, request);
  FileSet directory;  // goes again if no frame succeeds
  directory.make_directory(request.directory);
  BatchReport report(frames.total(), frames.is_lone_frame(), BatchReport::Detail::full);
  const Interruption interruption;
  run_batch(
      frames, request.jobs, [&] { return std::make_unique<TransformJob>(request, library); }, report);
  if (report.done() > 0) {
    directory.commit();
  }
  report.finish(Interruption::is_requested());
}

}  // namespace

void declare_transform(CLI::App& app) {
  const auto options = std::make_shared<TransformOptions>();
  TransformRequest& request = options->request;
  CLI::App* command = app.add_subcommand("transform", "Turn raw mosaic frames into pictures of polarization");
  options->frames.declare(command, request);
  limit(command->add_option("--output-max", request.output_maximum, "What full scale, 180 degrees and degree 1 map to")
            ->type_name("N")
            ->capture_default_str(),
        1, 65535);
  std::vector<std::string> products = product_names();
  products.insert(products.begin(), "all");
  add_parsed<Products>(
      command, "--outputs", options->products, parse_products,
      "What to write: a list of stokes (S1/P and S2/P: two float TIFFs, or one array), power, hv, diagonal, "
      "azimuth, dolp (16-bit), s0, s1, s2 (P, S1, S2 as floats in pixel values, not clipped), angle (the angle of "
      "polarization as floats, 0 to 180 degrees), and to look at sheet (everything on a page), azimuth-picture (the "
      "azimuth in colour at the frame's size) and azimuth-legend (what its colours mean); all is everything but s0, "
      "s1, s2 and angle")
      ->type_name(braced(products) + ",...")
      ->default_str("all");
  add_parsed<std::filesystem::path>(
      command, "--out", request.directory, [](const std::string& text) { return text; },
      "Directory for the results, made if missing")
      ->type_name("DIR")
      ->default_str(".");
  command->add_flag(
      "--overwrite", request.overwrite,
      "Replace existing outputs. Without it a frame is skipped whose outputs are all there and newer than "
      "its file (for standard input: are there) and the calibration, with whatever other options they "
      "were made");
  add_choice<FileFormat>(command, "--format", options->format, formats,
                         "Form of the outputs: png, tiff, or npy for arrays");
  add_choice<AzimuthStyle>(
      command, "--azimuth-style", request.picture_style.azimuth, style_names(),
      "How azimuth pictures show more than the angle: plain not at all, light by the degree as saturation, "
      "dark by the degree as brightness, composite by the degree as saturation and the power as brightness");
  limit_scale_end(
      command->add_option("--degree-max", request.picture_style.ends.degree,
                          "In pictures, the degree at which colour scales end; chosen for each frame if not given"));
  limit_scale_end(
      command->add_option("--power-max", request.picture_style.ends.power,
                          "In pictures, the power at which colour scales end, as a share of full scale; likewise"));
  limit(command
            ->add_option("--repeat", options->repeat,
                         "How often to transform a frame, for the time of the best; else 5 for a single frame, 1 for "
                         "many")
            ->type_name("N"),
        1, 100'000);
  command->footer(
      "Examples:\n"
      "  nerova-polarize transform frame.png --bit-depth 12 --out pictures\n"
      "  nerova-polarize transform frame.png --calibration camera.json --outputs azimuth,dolp --format npy\n"
      "  nerova-polarize transform run.raw --raw 2448x2048 --pixel-format Mono12p --out run\n"
      "  recorder | nerova-polarize transform - --raw 2448x2048 --pixel-format Mono12 --out run");
  command->callback([options] { run_transform(*options); });
}

}  // namespace nerova_zel
