#include "commands/frame_options.h"

#include <algorithm>
#include <thread>

#include "calibration/calibration_file.h"
#include "commands/how_made.h"
#include "commands/recorded_frames.h"
#include "failure.h"
#include "frames/colour_formats.h"
#include "input_bytes.h"
#include "messages.h"
#include "number_text.h"
#include "option_declarations.h"
#include "option_values.h"
#include "platform/library_folder.h"
#include "usage_error.h"

namespace nerova_zel {

namespace {

constexpr int most_jobs = 1024;
constexpr long long most_bytes = 1'000'000'000;

/** Cameras' names for the same bits are taken too, but not listed; those of colour cameras say a pattern. */
void add_pixel_format(CLI::App* command, std::optional<PixelFormat>& format, std::optional<ColourPattern>& pattern,
                      const std::string& help) {
  const auto formats = pixel_format_names();
  std::vector<std::string> names;
  names.reserve(formats.size());
  for (const auto& [name, known] : formats) {
    names.push_back(name);
  }
  const auto parse = [names, &pattern](const std::string& text) -> std::optional<PixelFormat> {
    for (const auto& table : {pixel_format_names(), pixel_format_aliases()}) {
      for (const auto& [name, known] : table) {
        if (name == text) {
          return known;
        }
      }
    }
    for (const ColourFormat& known : colour_formats()) {
      if (known.name == text) {
        pattern = known.pattern;
        return known.format;
      }
    }
    refuse_choice("--pixel-format", text, names);
  };
  add_parsed<std::optional<PixelFormat>>(command, "--pixel-format", format, parse, help)->type_name(braced(names));
}

}  // namespace

void add_layout(CLI::App* command, MosaicLayout& layout, bool* is_given) {
  std::vector<std::string> names;
  names.reserve(mosaic_layouts.size());
  for (const int degrees : mosaic_layouts) {
    names.push_back(std::to_string(degrees));
  }
  const auto parse = [names, is_given](const std::string& text) {
    const auto known = std::find(names.begin(), names.end(), text);
    if (known == names.end()) {
      if (!parse_number(text)) {
        throw UsageError("--layout " + text + " is no number; it must be " + spoken(names) + ".");
      }
      throw UsageError("--layout " + text + " is no polarizer of the mosaic; it must be " + spoken(names) + ".");
    }
    if (is_given != nullptr) {
      *is_given = true;
    }
    return MosaicLayout(mosaic_layouts[static_cast<std::size_t>(known - names.begin())]);
  };
  add_parsed<MosaicLayout>(command, "--layout", layout, parse,
                           "Angle of the polarizer of the top-left pixel\n"
                           "It is that of the sensor's pixel 0,0 and names the whole 2 x 2 pattern: 0 [0,135/45,90], "
                           "45 [45,90/0,135], 90 [90,45/135,0], 135 [135,0/90,45].")
      ->type_name(braced(names))
      ->default_str(std::to_string(layout.angle_at(0, 0)));
}

CLI::Option* add_origin(CLI::App* command, Origin& origin, const std::string& frame) {
  return add_parsed<Origin>(command, "--origin", origin, parse_origin, "Sensor coordinates of the " + frame)
      ->type_name("X,Y")
      ->default_str("0,0");
}

void add_bit_depth(CLI::App* command, std::optional<int>& bit_depth, const std::string& help) {
  limit(command->add_option("--bit-depth", bit_depth, help)->type_name("BITS"), 1, 16);
}

void HeaderlessOptions::declare(CLI::App* command, const std::string& raw_help, const std::string& format_help) {
  const auto parse = [](const std::string& text) { return std::optional(parse_size("--raw", text)); };
  add_parsed<std::optional<FrameSize>>(command, "--raw", size_, parse, raw_help)->type_name("WxH");
  add_pixel_format(command, format_, pattern_, format_help);
  limit(
      command->add_option("--header", header_, "Bytes of a headerless file before its first frame")->type_name("BYTES"),
      0, most_bytes);
  limit(command
            ->add_option("--stride", stride_, "Bytes from one row of headerless pixels to the next, if rows are padded")
            ->type_name("BYTES"),
        1, most_bytes);
}

std::optional<HeaderlessLayout> HeaderlessOptions::layout() const {
  if (!size_) {
    const char* const alone = format_ ? "--pixel-format" : header_ ? "--header" : stride_ ? "--stride" : nullptr;
    if (alone != nullptr) {
      throw UsageError(std::string(alone) + " is for headerless pixels; say their size with --raw WxH.");
    }
    return std::nullopt;
  }
  const HeaderlessLayout layout{*size_, format_, header_.value_or(0), static_cast<std::size_t>(stride_.value_or(0))};
  try {
    check_layout(layout);
  } catch (const Failure& failure) {
    throw UsageError(failure.fact() == Fact::stride_without_format ? "--stride needs --pixel-format." : failure.what());
  }
  return layout;
}

void FrameOptions::declare(CLI::App* command, FrameRequest& request, bool needs_frames) {
  command
      ->add_option("FRAME", request.frames,
                   "Grey PNG, TIFF, PGM or NPY files, or headerless ones (--raw); folders; patterns; - (stdin)\n"
                   "Pixels of 8 or 16 bits. Of a folder its frames are taken, by name. Patterns with * and ? go in "
                   "quotes. Headerless frames can come from standard input, as -. Recordings "
                   "(FILE.raw with FILE.raw.json) need no further options.")
      ->type_name("FILE")
      ->required(needs_frames);
  command->add_flag("--recursive", request.recursive,
                    "Take folders with the folders below them\n"
                    "Outputs lie in folders of the same names.");
  headerless_.declare(
      command,
      "Files hold headerless pixels, frames of this size\n"
      "Without --pixel-format a file is one frame: one byte a pixel, or two with the low byte first, "
      "as its length says.",
      "How headerless pixels lie in bytes\n"
      "Files hold any number of frames then, which are told apart by number: STEM_000000_power.png. "
      "Mono8, Mono10, Mono12 and Mono16 (16 bits, low byte first), Mono10p and Mono12p (streams of "
      "bits), Mono10Packed, Mono12Packed. The names that polarization cameras have for the same bits "
      "are taken, too: Polarized12p and PolarizeMono12p are Mono12p, BayerRGPolarized12p is Mono12p with "
      "--colour RGGB.");
  add_layout(command, request.layout, &request.layout_is_given);
  origin_option_ = add_origin(command, request.origin, "frame's top-left pixel");
  colour_.declare(command);
  const auto parse = [](const std::string& text) { return std::optional(parse_region(text)); };
  add_parsed<std::optional<Region>>(command, "--roi", request.region, parse,
                                    "Only this region of the frame, as if the camera had read out no more")
      ->type_name("X,Y,W,H");
  add_bit_depth(
      command, request.depth.bit_depth,
      "Significant bits of a pixel; else as the file says\n"
      "A pixel format says it, a PGM file by its greatest value, a TIFF file by MaxSampleValue, a PNG file by "
      "a text BitDepth or by sBIT; otherwise 8 or 16 bits are taken, as many as the file has room for.");
  command->add_flag("--left-aligned", request.depth.left_aligned, "The significant bits are the upper ones of a pixel");
  command->add_flag("--allow-overflow", request.allow_overflow,
                    "Transform frames with many pixels beyond full scale, too\n"
                    "Without it a frame fails of which more than 16 pixels and more than 0.01 % exceed full scale.");
  const auto range = [](const std::string& text) { return parse_frames(text); };
  add_parsed<FrameRange>(command, "--frames", request.range, range,
                         "Only frames A to B - 1 of each file\n"
                         "Frames (pages, arrays) are counted from 0. A: goes on to the last, :B begins with the first. "
                         "Outputs keep the numbers.")
      ->type_name("A:B");
  limit(command->add_option("-j,--jobs", jobs_, "Frames to work on at once; else as many as there are cores")
            ->type_name("N"),
        1, most_jobs);
  command->add_option("--calibration", request.calibration_file, "Calibration file that calibrate has written")
      ->type_name("FILE");
  command
      ->add_option("--library", request.library,
                   "The polarization processor library\n"
                   "Else the one beside this program (../lib or where it was installed), then by the system.")
      ->type_name("FILE");
  add_verbosity(command);
}

void FrameOptions::take_recording(FrameRequest& request, std::optional<ColourPattern>& pattern) const {
  const std::optional<Recording> recording = find_recording(request.frames);
  if (!recording) {
    return;
  }
  if (!request.layout_is_given) {
    request.layout = recording->layout;
    request.layout_is_given = true;
  } else if (request.layout.phase() != recording->layout.phase()) {
    note("the recording says layout " + std::to_string(recording->layout.angle_at(0, 0)) + "; --layout " +
         std::to_string(request.layout.angle_at(0, 0)) + " is used.");
  }
  take_description(*recording, request, pattern);
}

void FrameOptions::take_description(const Recording& recording, FrameRequest& request,
                                    std::optional<ColourPattern>& pattern) const {
  request.headerless = HeaderlessLayout{recording.size, recording.format};
  if (origin_option_->count() == 0) {
    request.origin = recording.origin;
  }
  pattern = recording.colour;
}

void FrameOptions::finish(FrameRequest& request, const Recording* camera) const {
  search_folder_of(request.library);
  request.headerless = headerless_.layout();
  std::optional<ColourPattern> pattern = headerless_.pattern();
  if (camera != nullptr) {
    if (request.headerless) {
      throw UsageError("--raw is for files; the camera says how its frames lie.");
    }
    take_description(*camera, request, pattern);
  } else if (!request.headerless) {
    take_recording(request, pattern);
  }
  request.colour = colour_.settings(pattern);
  if (!request.calibration_file.empty()) {
    const Bytes bytes = read_file(request.calibration_file, "a calibration file");
    request.calibration_mark = calibration_mark(bytes);
    const std::string text(bytes.begin(), bytes.end());
    if (request.colour) {
      request.colour->calibrations = parse_colour_calibration(text, request.calibration_file);
    } else {
      request.calibration = parse_calibration(text, request.calibration_file);
    }
  }
  request.jobs = jobs_.value_or(std::clamp(static_cast<int>(std::thread::hardware_concurrency()), 1, most_jobs));
}

std::string layout_assumption(const MosaicLayout& layout) {
  return "layout " + std::to_string(layout.angle_at(0, 0)) + " assumed; --layout says another.";
}

void check_calibration(Library& library, const FrameRequest& request) {
  if (!request.calibration_file.empty() && !library.calibrates_every_pixel()) {
    note("the calibration " + request.calibration_file +
         " reaches only the last columns and rows of a frame: no vector plugin serves this computer, and the built-in "
         "kernels compute the other pixels with the default calibration.");
  }
}

}  // namespace nerova_zel
