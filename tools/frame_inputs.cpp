#include "frame_inputs.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>

#include "failure.h"
#include "image_encoder.h"

namespace nerova_zel {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t number_width = 6;

/** Whether `name` fits a pattern of *, ? and characters that stand for themselves. */
bool matches(const char* pattern, const char* name) {
  const char* after_star = nullptr;
  const char* name_at_star = nullptr;
  while (*name != '\0') {
    if (*pattern == '*') {
      after_star = ++pattern;
      name_at_star = name;
    } else if (*pattern == '?' || *pattern == *name) {
      ++pattern;
      ++name;
    } else if (after_star != nullptr) {
      pattern = after_star;  // let the last star take one character more
      name = ++name_at_star;
    } else {
      return false;
    }
  }
  while (*pattern == '*') {
    ++pattern;
  }
  return *pattern == '\0';
}

/** Files in a folder that `accepts`, by name. */
template <class Accepts>
std::vector<std::string> files_in(const fs::path& folder, Accepts accepts) {
  std::vector<std::string> found;
  std::error_code error;
  fs::directory_iterator entries(folder.empty() ? fs::path(".") : folder, error);
  for (; !error && entries != fs::directory_iterator(); entries.increment(error)) {
    std::error_code not_a_file;
    if (entries->is_regular_file(not_a_file) && accepts(entries->path().filename().string())) {
      found.push_back((folder / entries->path().filename()).string());
    }
  }
  if (error) {
    throw Failure("cannot read the folder " + folder.string() + ": " + error.message() + ".");
  }
  std::sort(found.begin(), found.end());
  return found;
}

/** The files that an argument stands for. */
std::vector<std::string> expand(const std::string& argument, bool headerless) {
  static const std::set<std::string> picture_endings = {".png", ".tif", ".tiff", ".pgm"};
  static const std::set<std::string> headerless_endings = {".raw", ".bin"};
  std::error_code error;
  const fs::path path(argument);
  if (fs::is_directory(path, error)) {
    const auto& endings = headerless ? headerless_endings : picture_endings;
    std::vector<std::string> files =
        files_in(path, [&](const std::string& name) { return endings.count(lower_case_extension(name)) != 0; });
    if (files.empty()) {
      throw Failure("the folder " + argument + " holds no frames; they should end in " +
                    (headerless ? ".raw or .bin." : ".png, .tif, .tiff or .pgm."));
    }
    return files;
  }
  const std::string pattern = path.filename().string();
  if (pattern.find_first_of("*?") == std::string::npos || fs::exists(path, error)) {
    return {argument};
  }
  std::vector<std::string> files =
      files_in(path.parent_path(), [&](const std::string& name) { return matches(pattern.c_str(), name.c_str()); });
  if (files.empty()) {
    throw Failure("no file fits the pattern " + argument + ".");
  }
  return files;
}

std::uint64_t count_frames(const std::string& path, const std::optional<HeaderlessLayout>& headerless) {
  if (!headerless || !headerless->format) {
    return 1;
  }
  std::error_code error;
  const std::uint64_t bytes = fs::file_size(path, error);
  const std::uint64_t one = frame_bytes(*headerless);
  return error ? 1 : std::max<std::uint64_t>(1, (bytes + one - 1) / one);
}

/** "run" of "run_000012"; empty for what is no output stem of a stream. */
std::string stream_of(const std::string& output_stem) {
  const std::size_t end = output_stem.find_last_not_of("0123456789");
  const bool numbered = end != std::string::npos && output_stem[end] == '_' && output_stem.size() - end > number_width;
  return numbered ? output_stem.substr(0, end) : std::string();
}

/** Whose outputs begin with what. */
class OutputStems {
 public:
  /** The other input that has a claim on the same names, if any. */
  const FrameInput* claim(const FrameInput& input) {
    const auto [place, is_new] = (input.is_numbered() ? streams_ : singles_).emplace(input.stem, &input);
    return is_new ? nullptr : place->second;
  }

  /** The input that has outputs which begin with `output_stem`, if any. */
  const FrameInput* owner(const std::string& output_stem) const {
    const auto single = singles_.find(output_stem);
    if (single != singles_.end()) {
      return single->second;
    }
    return stream_owner(output_stem);
  }

  const FrameInput* stream_owner(const std::string& output_stem) const {
    const auto stream = streams_.find(stream_of(output_stem));
    return stream == streams_.end() ? nullptr : stream->second;
  }

 private:
  std::map<std::string, const FrameInput*> singles_;
  std::map<std::string, const FrameInput*> streams_;
};

std::string describe(const FrameInput& input) { return input.is_standard_input() ? "standard input" : input.path; }

}  // namespace

std::string FrameInput::frame_name(std::uint64_t number) const {
  return describe(*this) + (is_numbered() ? " frame " + std::to_string(number) : "");
}

std::string FrameInput::output_stem(std::uint64_t number) const {
  if (!is_numbered()) {
    return stem;
  }
  const std::string digits = std::to_string(number);
  return stem + "_" + std::string(number_width - std::min(number_width, digits.size()), '0') + digits;
}

std::vector<FrameInput> find_inputs(const std::vector<std::string>& arguments,
                                    const std::optional<HeaderlessLayout>& headerless) {
  std::vector<FrameInput> inputs;
  std::set<fs::path> seen;
  for (const std::string& argument : arguments) {
    if (argument == "-") {
      if (!headerless || !headerless->format) {
        throw Failure("standard input is a stream of headerless pixels; say --raw WxH and --pixel-format.");
      }
      if (seen.insert(argument).second) {
        inputs.push_back({argument, std::nullopt, "stdin"});
      }
      continue;
    }
    for (const std::string& path : expand(argument, headerless.has_value())) {
      std::error_code error;
      if (seen.insert(fs::weakly_canonical(path, error)).second) {
        inputs.push_back({path, count_frames(path, headerless), fs::path(path).stem().string()});
      }
    }
  }
  return inputs;
}

void check_output_names(const std::vector<FrameInput>& inputs, const std::string& directory,
                        const std::vector<std::string>& endings) {
  OutputStems stems;
  const auto refuse = [](const FrameInput& one, const FrameInput& other) {
    throw Failure("the outputs of " + describe(one) + " and " + describe(other) +
                  " would have the same names; transform them into different folders (--out).");
  };
  for (const FrameInput& input : inputs) {
    if (const FrameInput* other = stems.claim(input)) {
      refuse(*other, input);
    }
  }
  std::error_code error;
  const fs::path canonical_directory = fs::weakly_canonical(directory, error);
  for (const FrameInput& input : inputs) {
    const FrameInput* stream = input.is_numbered() ? nullptr : stems.stream_owner(input.stem);
    if (stream != nullptr) {
      refuse(*stream, input);
    }
    const fs::path path = fs::weakly_canonical(input.path, error);
    if (input.is_standard_input() || path.parent_path() != canonical_directory) {
      continue;
    }
    const std::string name = path.filename().string();
    for (const std::string& ending : endings) {
      if (name.size() <= ending.size() || name.compare(name.size() - ending.size(), ending.size(), ending) != 0) {
        continue;
      }
      if (const FrameInput* owner = stems.owner(name.substr(0, name.size() - ending.size()))) {
        throw Failure("an output of " + describe(*owner) + " would overwrite the frame " + input.path +
                      "; choose another folder with --out.");
      }
    }
  }
}

}  // namespace nerova_zel
