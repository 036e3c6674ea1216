#include "batch/frame_inputs.h"

#include <filesystem>
#include <set>

#include "batch/frame_reader.h"
#include "batch/input_files.h"
#include "messages.h"
#include "platform/files.h"
#include "usage_error.h"

namespace nerova_zel {

namespace fs = std::filesystem;

std::string FrameInput::name() const { return is_standard_input() ? "standard input" : path; }

std::optional<std::uint64_t> FrameInput::wanted_frames() const {
  if (!frames && !range.end) {
    return std::nullopt;
  }
  const std::uint64_t end = !frames ? *range.end : !range.end ? *frames : std::min(*frames, *range.end);
  return end - range.first;
}

std::string FrameInput::frame_name(std::uint64_t number) const {
  return name() + (is_numbered() ? " frame " + std::to_string(number) : "");
}

std::string FrameInput::output_stem(std::uint64_t number) const {
  if (!is_numbered()) {
    return stem;
  }
  const std::string digits = std::to_string(number);
  return stem + "_" + std::string(least_frame_digits - std::min(least_frame_digits, digits.size()), '0') + digits;
}

namespace {

/** The file's own name, and the folders between it and the one that was given. */
std::string stem_of(const fs::path& path, const fs::path& argument) {
  const fs::path folders = is_folder(argument) ? path.lexically_relative(argument).parent_path() : "";
  return (folders / path.stem()).generic_u8string();
}

}  // namespace

std::vector<FrameInput> find_inputs(const std::vector<std::string>& arguments,
                                    const std::optional<HeaderlessLayout>& headerless, bool recursive,
                                    const FrameRange& range) {
  std::vector<FrameInput> inputs;
  std::set<fs::path> seen;
  std::size_t outputs = 0;
  for (const std::string& argument : arguments) {
    if (argument == "-") {
      if (!headerless || !headerless->format) {
        throw UsageError("standard input is a stream of headerless pixels; say --raw WxH and --pixel-format.");
      }
      if (seen.insert(argument).second) {
        inputs.push_back({argument, std::nullopt, "stdin", range, nullptr});
      }
      continue;
    }
    const FoundFiles found = expand_argument(argument, {headerless.has_value(), recursive});
    outputs += found.outputs;
    for (const std::string& path : found.paths) {
      std::error_code error;
      if (seen.insert(fs::weakly_canonical(fs::u8path(path), error)).second) {
        FrameInput input{path, 1, stem_of(fs::u8path(path), fs::u8path(argument)), range, nullptr};
        count_frames_of(input, headerless);
        if (range.first >= *input.frames) {
          throw Failure(path + " holds " + std::to_string(*input.frames) + (*input.frames == 1 ? " frame" : " frames") +
                        ", numbered from 0; --frames begins at " + std::to_string(range.first) + ".");
        }
        inputs.push_back(std::move(input));
      }
    }
  }
  if (outputs > 0) {
    note(std::to_string(outputs) + (outputs == 1 ? " file is an output" : " files are outputs") +
         " of nerova-polarize and left out.");
  }
  return inputs;
}

}  // namespace nerova_zel
