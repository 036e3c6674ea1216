#include "commands/info_command.h"

#include <CLI/App.hpp>
#include <algorithm>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>

#include "batch/frame_reader.h"
#include "batch/input_files.h"
#include "commands/frame_options.h"
#include "failure.h"
#include "failure_text.h"
#include "file_texts.h"
#include "formatted.h"
#include "frames/bit_depth.h"
#include "frames/pixel_counts.h"
#include "messages.h"
#include "results.h"

namespace nerova_zel {

namespace {

struct InfoOptions {
  std::vector<std::string> files;
  HeaderlessOptions headerless;
  bool json = false;
};

/** What there is to say of a file; pixels are those of its first frame. */
struct FileInfo {
  std::string path;
  std::string format;
  std::uint64_t frames = 1;
  RawFrame frame;
  int least = 0;
  PixelCounts counts;
  std::optional<DepthDoubt> doubt;
  std::vector<TextEntry> texts;
};

std::string format_of(const std::string& path, const std::optional<HeaderlessLayout>& headerless) {
  if (headerless) {
    return headerless->format ? name_of(*headerless->format) : "headerless";
  }
  switch (PictureFile(path).format()) {
    case PictureFormat::png:
      return "PNG";
    case PictureFormat::tiff:
      return "TIFF";
    case PictureFormat::pgm:
      return "PGM";
    default:
      return "NPY";
  }
}

FileInfo examine(const std::string& path, const std::optional<HeaderlessLayout>& headerless) {
  FileInfo info;
  info.path = path;
  info.format = format_of(path, headerless);
  FrameInput input;
  input.path = path;
  count_frames_of(input, headerless);
  info.frames = input.frames.value_or(1);
  Bytes bytes;
  read_frame({0, &input, 0}, headerless, bytes, info.frame);
  const std::vector<std::uint16_t>& pixels = info.frame.pixels;
  info.least = pixels.empty() ? 0 : *std::min_element(pixels.begin(), pixels.end());
  const int depth = info.frame.scaled_from_bits > 0 ? info.frame.storage_bits : info.frame.bit_depth;
  info.counts = count_pixels(pixels.data(), pixels.size(), (1 << depth) - 1);
  info.doubt = doubt_bit_depth(info.counts, info.frame);
  if (!headerless) {
    info.texts = read_texts(std::filesystem::u8path(path));
  }
  return info;
}

double share(std::uint32_t count, const FileInfo& info) {
  return static_cast<double>(count) / static_cast<double>(std::max<std::size_t>(1, info.frame.pixels.size()));
}

const char* alignment_of(const FileInfo& info) {
  const bool is_left = info.doubt && info.doubt->reason == DepthDoubt::Reason::left_aligned;
  return info.frame.scaled_from_bits > 0 ? "scaled to full depth" : is_left ? "left" : "right";
}

std::string as_text(const FileInfo& info) {
  const RawFrame& frame = info.frame;
  std::string text =
      formatted("%s: %s, %d x %d, %llu %s\n", info.path.c_str(), info.format.c_str(), frame.width, frame.height,
                static_cast<unsigned long long>(info.frames), info.frames == 1 ? "frame" : "frames");
  text += formatted("  bits       %d of %d, %s\n", frame.bit_depth, frame.storage_bits,
                    frame.depth_is_stated ? "as the file says" : "which nothing says");
  if (info.doubt) {
    text += formatted("  guess      %d bits, %s-aligned\n", info.doubt->likely_depth, alignment_of(info));
  } else if (frame.scaled_from_bits > 0) {
    text += "  alignment  samples are scaled to full depth\n";
  }
  text += formatted("  values     %d to %d, %.2f %% saturated, %.2f %% beyond full scale, %.2f %% dark\n", info.least,
                    info.counts.greatest, 100.0 * share(info.counts.saturated, info),
                    100.0 * share(info.counts.above, info), 100.0 * share(info.counts.dark, info));
  if (frame.orientation != 1) {
    text += formatted("  orientation tag %d, which is ignored\n", frame.orientation);
  }
  for (const TextEntry& entry : info.texts) {
    text += "  " + entry.key + ": " + entry.text + "\n";
  }
  return text;
}

nlohmann::ordered_json as_json(const FileInfo& info) {
  const RawFrame& frame = info.frame;
  nlohmann::ordered_json object;
  object["name"] = info.path;
  object["format"] = info.format;
  object["width"] = frame.width;
  object["height"] = frame.height;
  object["frames"] = info.frames;
  object["storage_bits"] = frame.storage_bits;
  object["bit_depth"] = frame.bit_depth;
  object["bit_depth_is_stated"] = frame.depth_is_stated;
  object["likely_bit_depth"] = info.doubt ? info.doubt->likely_depth : frame.bit_depth;
  object["alignment"] = alignment_of(info);
  object["least"] = info.least;
  object["greatest"] = info.counts.greatest;
  object["saturated_share"] = share(info.counts.saturated, info);
  object["beyond_full_scale_share"] = share(info.counts.above, info);
  object["dark_share"] = share(info.counts.dark, info);
  object["orientation"] = frame.orientation;
  object["texts"] = nlohmann::ordered_json::object();
  for (const TextEntry& entry : info.texts) {
    object["texts"][entry.key] = entry.text;
  }
  return object;
}

void run_info(const InfoOptions& options) {
  const std::optional<HeaderlessLayout> headerless = options.headerless.layout();
  nlohmann::ordered_json documents = nlohmann::ordered_json::array();
  std::size_t failed = 0;
  std::vector<std::string> files;
  for (const std::string& argument : options.files) {  // not every shell replaces patterns
    const std::vector<std::string> found = expand_pattern(argument);
    files.insert(files.end(), found.begin(), found.end());
  }
  for (const std::string& path : files) {
    try {
      const FileInfo info = examine(path, headerless);
      if (options.json) {
        documents.push_back(as_json(info));
      } else {
        print_result(as_text(info));
      }
    } catch (const std::exception&) {
      if (files.size() == 1) {
        throw;
      }
      ++failed;
      print_message("nerova-polarize: " + describe_current_failure() + "\n");
    }
  }
  if (options.json) {
    // File names need not be UTF-8.
    print_result(documents.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n");
  }
  if (failed > 0) {
    throw Failure(std::to_string(failed) + " of " + std::to_string(files.size()) + " files failed, as said above.");
  }
}

}  // namespace

void declare_info(CLI::App& app) {
  const auto options = std::make_shared<InfoOptions>();
  CLI::App* command = app.add_subcommand("info", "Print what files of frames are");
  command
      ->add_option(
          "FILE", options->files,
          "Files of frames, or outputs of this program\n"
          "Size, frames, bits, the range of values, saturation and texts of each; values are those of the first "
          "frame. Where nothing says the bit depth, it is guessed from the values.")
      ->type_name("FILE")
      ->required();
  options->headerless.declare(command, "Files hold headerless pixels, frames of this size",
                              "How headerless pixels lie in bytes");
  command->add_flag("--json", options->json, "Print a JSON document");
  command->footer("Examples:\n  nerova-polarize info frame.png\n  nerova-polarize info --json night/*.tiff");
  command->callback([options] { run_info(*options); });
}

}  // namespace nerova_zel
