#include "commands/transform_command.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <thread>

#include "batch/batch_runner.h"
#include "batch/interruption.h"
#include "batch/output_names.h"
#include "commands/colour_files.h"
#include "commands/frame_options.h"
#include "commands/picture_options.h"
#include "commands/transform_job.h"
#include "failure.h"
#include "file_set.h"
#include "frame_files.h"
#include "messages.h"
#include "option_declarations.h"
#include "platform/files.h"
#include "processor/route.h"
#include "usage_error.h"

namespace nerova_zel {

namespace {

constexpr std::array<std::pair<const char*, FileFormat>, 3> formats = {
    {{"png", FileFormat::png}, {"tiff", FileFormat::tiff}, {"npy", FileFormat::npy}}};

constexpr std::array<std::pair<const char*, Sampling>, 3> samplings = {
    {{"window", Sampling::window}, {"superpixel", Sampling::superpixel}, {"bilinear", Sampling::bilinear}}};

/** Options as given, and the request that is made of them. */
struct TransformOptions {
  FrameOptions frames;
  TransformRequest request;
  std::optional<std::filesystem::path> directory;
  std::optional<std::string> product_list;
  FileFormat format = FileFormat::png;
  int benchmark = 0;  ///< transforms of each frame
};

std::vector<std::string> endings(const std::vector<OutputFile>& files) {
  std::vector<std::string> all;
  all.reserve(files.size());
  for (const OutputFile& file : files) {
    all.push_back(file.ending);
  }
  return all;
}

bool looks_like_file(const std::string& extension) {
  return extension == ".png" || extension == ".tif" || extension == ".tiff" || extension == ".npy";
}

/** The folder for the results. Without --output it is the working directory, if the user named what to put there. */
std::filesystem::path directory_of(const TransformOptions& options) {
  if (!options.directory) {
    if (options.product_list.value_or("all").find("all") != std::string::npos) {
      throw UsageError("--output DIR is missing, the folder for the results.");
    }
    return ".";
  }
  const std::string extension = lower_case_extension(options.directory->u8string());
  if (!is_folder(*options.directory) && looks_like_file(extension)) {
    throw UsageError("--output " + options.directory->u8string() +
                     " reads like a file; transform takes a folder there.");
  }
  return *options.directory;
}

void remark_route(Library& library) {
  if (verbosity() == Verbosity::verbose) {
    remark("library " + library.path() + ", " + route_of(library));
  }
}

/** What an earlier run left that was ended at once. */
void remove_stale_outputs(const std::vector<FrameInput>& inputs, const TransformRequest& request) {
  std::set<std::filesystem::path> folders;
  for (const FrameInput& input : inputs) {
    folders.insert((request.directory / std::filesystem::u8path(input.stem)).parent_path());
  }
  for (const std::filesystem::path& folder : folders) {
    remove_stale_files(folder, [&](const std::string& name) {
      return std::any_of(request.files.begin(), request.files.end(), [&](const OutputFile& file) {
        const std::size_t at = name.rfind(file.ending);
        const std::string rest = at == std::string::npos ? "?" : name.substr(at + file.ending.size());
        return rest.empty() || rest == ".json";
      });
    });
  }
}

void run_transform(TransformOptions& options) {
  TransformRequest& request = options.request;
  request.directory = directory_of(options);
  options.frames.finish(request);
  if (!request.calibration_file.empty()) {
    if (const auto facts = file_facts(std::filesystem::u8path(request.calibration_file))) {
      request.calibrated = facts->changed;
    }
  }
  Products products = parse_products(options.product_list.value_or("all"));
  if (request.sampling == Sampling::superpixel) {
    if (options.product_list.value_or("all").find("all") == std::string::npos && !products.pictures.empty()) {
      throw UsageError("--sampling superpixel makes no pictures to look at; --outputs names one.");
    }
    products.pictures.clear();
  }
  request.needed = products.needed_outputs();
  request.files = output_files(products, options.format, request.picture_style.azimuth);
  if (request.colour) {
    request.files = colour_files(request.files, *request.colour);
  } else if (products.pictures.count(PictureKind::power_picture) != 0 || request.picture_style.balance) {
    throw UsageError(std::string(request.picture_style.balance ? "--white-balance" : "--outputs power-picture") +
                     " is for frames of a colour sensor; say its pattern with --colour.");
  }
  request.repeat = std::max(1, options.benchmark);
  FrameSequence frames(find_inputs(request.frames, request.headerless, request.recursive, request.range),
                       request.headerless);
  const auto cores = std::max<std::uint64_t>(1, std::thread::hardware_concurrency());
  const auto at_once =
      std::min<std::uint64_t>(static_cast<std::uint64_t>(request.jobs), frames.total().value_or(cores));
  request.writers = static_cast<std::size_t>(std::max<std::uint64_t>(1, cores / std::max<std::uint64_t>(1, at_once)));
  check_output_names(frames.inputs(), request.directory.u8string(), endings(request.files));
  SensorLibraries libraries(request.library, request, request.colour);
  remark_route(libraries.first());
  check_calibration(libraries.first(), request);
  const Interruption interruption;
  FileSet directory;  // goes again if no frame succeeds
  directory.make_directory(request.directory);
  remove_stale_outputs(frames.inputs(), request);
  BatchReport report(frames.total(), frames.is_lone_frame(), BatchReport::Detail::full);
  if (request.calibration_file.empty() && !libraries.first().calibrates_every_pixel()) {
    // A calibration has a note of its own.
    report.add_note("frames are computed by the " + route_of(libraries.first()) +
                    ". Every fourth column follows other rules than the rest.");
  }
  if (!request.layout_is_given) {
    report.add_note(layout_assumption(request.layout));
  }
  FrameNotes notes;
  run_batch(
      frames, request.jobs, [&] { return std::make_unique<TransformJob>(request, libraries, notes); }, report);
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
  add_output_maximum(command, request.output_maximum);
  std::vector<std::string> products = product_names();
  products.insert(products.begin(), "all");
  command
      ->add_option_function<std::string>(
          "--outputs",
          [options](const std::string& text) {
            parse_products(text);  // refuses at once what makes no sense
            options->product_list = text;
          },
          "What to write\n"
          "stokes: S1/P and S2/P, two float TIFFs, or one array. power, hv, diagonal, azimuth, dolp: 16 bits. s0, s1, "
          "s2: P, S1, S2 as floats in pixel values, not clipped. angle: the angle of polarization as floats, 0 to 180 "
          "degrees. The azimuth is the angle plus 90 degrees: 0 is an angle of -90 degrees from the image's horizontal "
          "axis, the output maximum +90, so that light at 30 degrees has 120 / 180 of it. To look at: sheet "
          "(everything on a page), azimuth-picture (the azimuth in colour at the frame's "
          "size) and "
          "azimuth-legend (what its colours mean), and with --colour power-picture (the power in colour). all is "
          "everything but s0, s1, s2, angle and power-picture. With --colour there is a file for each colour, "
          "STEM_power_r.png, or an array of all, STEM_power_r_g1_g2_b.npy, and one sheet.")
      ->type_name(braced(products) + ",...")
      ->default_str("all");
  CLI::Option* directory = add_parsed<std::optional<std::filesystem::path>>(
                               command, "-o,--output", options->directory,
                               [](const std::string& text) { return std::filesystem::u8path(text); },
                               "Folder for the results, made if missing\n"
                               "Earlier results of the same names are replaced. It can be left out where --outputs "
                               "names what to write into the working directory.")
                               ->type_name("DIR");
  add_former_name(command, "--out", directory);
  add_choice<Sampling>(
      command, "--sampling", request.sampling, samplings,
      "How samples of the four polarizers come together in a pixel\n"
      "window: the 2 x 2 samples that begin at the pixel. superpixel: of these windows those that share "
      "no sample, so that images have half the size; no pictures to look at. bilinear: the mean of the "
      "four windows that hold the pixel, taken before the angle, symmetric and smoother.");
  command->add_flag("--power-headroom", request.power_headroom,
                    "Scale power for twice full scale, which P can reach\n"
                    "Without it power ends at full scale, and the report says the share of pixels that do. Not for "
                    "frames of 16 bits; s0 of --outputs is never clipped.");
  command->add_flag("--no-clobber", request.no_clobber, "Refuse frames of which there are results already");
  command->add_flag("--resume", request.resume,
                    "Skip frames whose results are all there, newer, and made in the same way\n"
                    "They must be newer than the frame and the calibration (for standard input it is enough that they "
                    "are there), and made by the same options, calibration and version.");
  add_former_flag(command, "--overwrite");
  add_choice<FileFormat>(command, "-f,--format", options->format, formats, "Form of the outputs; npy is for arrays");
  add_azimuth_style(command, request.picture_style.azimuth);
  add_scale_ends(command, request.picture_style.ends);
  add_white_balance(command, request.picture_style.balance);
  CLI::Option* benchmark = limit(
      command->add_flag("--benchmark{5}", options->benchmark, "Print the time of the best of 5 transforms; =N for N")
          ->type_name("N"),
      1, 100'000);
  add_former_name(command, "--repeat", benchmark);
  options->frames.declare(command, request);
  command->footer(
      "Examples:\n"
      "  nerova-polarize transform frame.png --bit-depth 12 --output pictures\n"
      "  nerova-polarize transform frame.png --calibration camera.json --outputs azimuth,dolp -f npy\n"
      "  nerova-polarize transform run.raw --raw 2448x2048 --pixel-format Mono12p --output run\n"
      "  recorder | nerova-polarize transform - --raw 2448x2048 --pixel-format Mono12 --output run");
  command->callback([options] { run_transform(*options); });
}

}  // namespace nerova_zel
