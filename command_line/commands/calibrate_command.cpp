#include "commands/calibrate_command.h"

#include <algorithm>
#include <filesystem>
#include <memory>
#include <optional>

#include "batch/frame_reader.h"
#include "batch/interruption.h"
#include "calibration/calibration_file.h"
#include "calibration/colour_series.h"
#include "calibration/fit_text.h"
#include "calibration/series.h"
#include "calibration_plot.h"
#include "commands/colour_options.h"
#include "commands/frame_options.h"
#include "commands/output_files.h"
#include "commands/source_list.h"
#include "failure.h"
#include "file_marks.h"
#include "file_set.h"
#include "formatted.h"
#include "frame_files.h"
#include "frames/bit_depth.h"
#include "messages.h"
#include "option_declarations.h"
#include "results.h"
#include "usage_error.h"

namespace nerova_zel {

namespace {

namespace fs = std::filesystem;

constexpr const char* extension = ".json";

struct CalibrateOptions {
  std::vector<std::string> frames;  ///< "ANGLE:FILE" each
  std::optional<std::string> list;
  std::optional<std::string> dark;
  HeaderlessOptions headerless;
  MosaicLayout layout{90};
  Origin origin{};
  std::optional<ColourPattern> colour;
  std::optional<int> bit_depth;
  bool steady_source = false;
  std::string file;
  bool force = false;
  bool layout_is_given = false;
};

std::vector<SourceFile> sources_of(const CalibrateOptions& options) {
  std::vector<SourceFile> sources;
  for (const std::string& frame : options.frames) {
    sources.push_back(parse_source(frame));
  }
  if (options.list) {
    const std::vector<SourceFile> listed = read_source_list(*options.list);
    sources.insert(sources.end(), listed.begin(), listed.end());
  }
  if (const std::string reason = why_sources_do_not_suffice(sources); !reason.empty()) {
    if (options.list) {
      throw Failure(reason);
    }
    throw UsageError(reason);
  }
  return sources;
}

/** Of frames with or without colours. */
template <class Series>
void read_series(const CalibrateOptions& options, Series& series) {
  const std::optional<HeaderlessLayout> headerless = options.headerless.layout();
  for (const SourceFile& source : sources_of(options)) {
    RawFrame frame = read_only_frame(source.path, headerless);
    const int bit_depth = settle_bit_depth(frame, {options.bit_depth}, source.path);
    series.add(source.path, source.angle, frame, bit_depth);
  }
  if (options.dark) {
    RawFrame frame = read_only_frame(*options.dark, headerless);
    const int bit_depth = settle_bit_depth(frame, {options.bit_depth}, *options.dark);
    series.set_dark(*options.dark, frame, bit_depth);
  }
}

/** The fit of a sensor without colours, or of one colour. */
struct NamedFit {
  std::string colour;
  const CalibrationSeries* series;
  PolarizerFit fit;
};

/** What is doubtful is told to the user. */
std::vector<NamedFit> fit_series(const CalibrateOptions& options,
                                 const std::vector<std::pair<std::string, const CalibrationSeries*>>& all) {
  for (const auto& [colour, series] : all) {
    for (const std::string& doubt : series->check_light()) {
      note(doubt);
    }
  }
  if (!options.layout_is_given) {
    note(layout_assumption(options.layout));
  }
  std::vector<NamedFit> fits;
  for (const auto& [colour, series] : all) {
    fits.push_back({colour, series, series->fit(options.steady_source)});
    for (const std::string& doubt : series->doubtful_frames(fits.back().fit, options.steady_source)) {
      note(doubt);
    }
  }
  return fits;
}

std::string report_of(const NamedFit& named, bool with_dark) {
  const PolarizerFit& fit = named.fit;
  const auto [dimmest, brightest] = std::minmax_element(fit.source.begin(), fit.source.end());
  std::string text = named.colour.empty() ? "" : named.colour + ": ";
  text += formatted("%zu frames, source %.0f..%.0f pixel values%s\n", named.series->size(), *dimmest, *brightest,
                    with_dark ? formatted(", dark level %.1f", named.series->dark_level()).c_str() : "");
  text += "polarizer  angle error (degrees)  extinction ratio    gain  residual (rms)\n";
  for (std::size_t k = 0; k < 4; ++k) {
    text += formatted("%9zu  %8s +- %-9.3f  %16s  %6.4f  %12.4f %%\n", 45 * k, angle_error_text(fit, k).c_str(),
                      fit.uncertainties[k].angle_degrees, extinction_text(fit, k).c_str(), fit.responses[k].gain(),
                      100.0 * fit.residual_of(k));
  }
  return text + formatted("   common  %+8.3f\n", named.fit.common_angle_error());
}

/** The plots of all fits, one below the other. */
Picture draw_plots(const std::vector<NamedFit>& fits, const std::string& name) {
  Picture page;
  for (const NamedFit& named : fits) {
    const std::string title = named.colour.empty() ? name : name + ", " + named.colour;
    const Picture plot = draw_calibration(named.fit, named.series->angles(), title);
    page.width = plot.width;
    page.height += plot.height;
    page.pixels.insert(page.pixels.end(), plot.pixels.begin(), plot.pixels.end());
  }
  return page;
}

void write_calibration(const CalibrateOptions& options, const fs::path& plot_file, const std::string& text,
                       const std::vector<NamedFit>& fits) {
  const Interruption interruption;
  FileSet files(options.force ? FileSet::Earlier::replaced : FileSet::Earlier::refused);
  files.write(fs::u8path(options.file), {{text.data(), text.size()}});
  std::string plot = "and no plot: what draws it is not installed";
  if (can_draw()) {
    const std::string name = fs::u8path(options.file).filename().u8string();
    files.write(plot_file,
                encode_drawing(draw_plots(fits, name), output_texts("calibration-plot", "the fit of a calibration")));
    plot = "plot in " + plot_file.u8string();
  }
  commit_unless_interrupted(files);
  if (verbosity() == Verbosity::quiet) {
    return;
  }
  std::string report;
  for (const NamedFit& named : fits) {
    report += report_of(named, options.dark.has_value());
  }
  print_result(report + "calibration in " + options.file + ", " + plot + "\n");
}

void calibrate_colours(const CalibrateOptions& options, ColourPattern pattern, const fs::path& plot_file) {
  ColourCalibrationSeries series(pattern, options.layout, options.origin);
  read_series(options, series);
  std::vector<std::pair<std::string, const CalibrationSeries*>> all;
  all.reserve(colour_plane_count);
  for (const ColourPlane plane : colour_planes) {
    all.emplace_back(name_of(plane), &series.plane(plane));
  }
  const std::vector<NamedFit> named = fit_series(options, all);
  PerPlane<CameraCalibration> calibrations;
  PerPlane<PolarizerFit> fits;
  for (std::size_t i = 0; i < colour_plane_count; ++i) {
    fits[i] = named[i].fit;
    calibrations[i] = named[i].series->calibration(fits[i]);
  }
  write_calibration(options, plot_file, encode_colour_calibration(calibrations, fits), named);
}

void run_calibrate(const CalibrateOptions& options) {
  if (lower_case_extension(options.file) != extension) {
    throw UsageError("--output " + options.file + " should end in " + extension +
                     "; the plot takes its name with .png.");
  }
  const fs::path plot_file = fs::u8path(options.file).replace_extension(".png");
  if (!options.force) {
    for (const fs::path& path : {fs::u8path(options.file), plot_file}) {
      refuse_existing(path, "--force replaces it");
    }
  }
  if (const auto pattern = sensor_pattern(options.colour, options.headerless.pattern())) {
    calibrate_colours(options, *pattern, plot_file);
    return;
  }
  CalibrationSeries series(options.layout, options.origin);
  read_series(options, series);
  const std::vector<NamedFit> fits = fit_series(options, {{"", &series}});
  write_calibration(options, plot_file, encode_calibration(series.calibration(fits.front().fit), fits.front().fit),
                    fits);
}

}  // namespace

void declare_calibrate(CLI::App& app) {
  const auto options = std::make_shared<CalibrateOptions>();
  CLI::App* command =
      app.add_subcommand("calibrate", "Find a camera's calibration from frames of a source behind a linear polarizer");
  command
      ->add_option("--frame", options->frames,
                   "A frame and its angle; repeat it for four angles or more\n"
                   "Angles are degrees from the image's horizontal axis, counter-clockwise as seen in the image.")
      ->type_name("ANGLE:FILE")
      ->allow_extra_args(false);
  command
      ->add_option("--list", options->list,
                   "Text file with a line ANGLE,FILE for each frame\n"
                   "Semicolons or tabs may stand for the commas, a first line may name the columns, and lines that "
                   "begin with # are comments. Files lie relative to the list.")
      ->type_name("FILE");
  command->add_option("--dark", options->dark, "Frame without light, for the dark level")->type_name("FILE");
  options->headerless.declare(command, "Files are headerless pixels of this size, a frame each",
                              "How headerless pixels lie in bytes");
  add_layout(command, options->layout, &options->layout_is_given);
  add_origin(command, options->origin, "frames' top-left pixel");
  add_colour(command, options->colour, "The frames are of a sensor with colour filters; calibrate each colour");
  add_bit_depth(command, options->bit_depth, "Significant bits of a pixel; else as the file says");
  command->add_flag("--steady-source", options->steady_source,
                    "Take the source as equally bright in all frames\n"
                    "Else its brightness is fitted for each.");
  CLI::Option* file = command
                          ->add_option("FILE,-o,--output", options->file,
                                       "Calibration file to write (.json); its plot goes beside it (.png)")
                          ->type_name("FILE")
                          ->required();
  add_former_name(command, "--out", file);
  command->add_flag("--force", options->force, "Replace an earlier calibration and its plot");
  add_verbosity(command);
  command->footer(
      "Examples:\n"
      "  nerova-polarize calibrate --list angles.csv --dark dark.png --bit-depth 12 --output camera.json\n"
      "  nerova-polarize calibrate c.json --frame 0:a.png --frame 45:b.png \\\n"
      "    --frame 90:c.png --frame 135:d.png");
  command->callback([options] { run_calibrate(*options); });
}

}  // namespace nerova_zel
