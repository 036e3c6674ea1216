#include "batch/input_files.h"

#include <fnmatch.h>

#include <algorithm>
#include <filesystem>
#include <set>

#include "failure.h"
#include "file_marks.h"
#include "frame_files.h"

namespace nerova_zel {

namespace {

namespace fs = std::filesystem;

/** Whether `name` fits a pattern of *, ? and characters that stand for themselves. */
bool matches(const std::string& pattern, const std::string& name) {
  std::string literal;  // brackets would name sets of characters
  for (const char c : pattern) {
    literal += c == '[' ? "[[]" : std::string(1, c);
  }
  return fnmatch(literal.c_str(), name.c_str(), FNM_NOESCAPE) == 0;
}

/** Files whose names `accepts` takes among the entries of a folder, or of those below, too. */
template <class Entries, class Accepts>
std::vector<std::string> accepted(const fs::path& folder, Accepts accepts) {
  std::vector<std::string> found;
  std::error_code error;
  const fs::path start = folder.empty() ? fs::path(".") : folder;
  for (Entries entries(start, error); !error && entries != Entries(); entries.increment(error)) {
    std::error_code not_a_file;
    if (entries->is_regular_file(not_a_file) && accepts(entries->path().filename().string())) {
      found.push_back((folder / entries->path().lexically_relative(start)).string());
    }
  }
  if (error) {
    throw Failure("cannot read the folder " + folder.string() + ": " + error.message() + ".");
  }
  std::sort(found.begin(), found.end());
  return found;
}

/** Without the files that are outputs. Throws Failure if none is left. */
FoundFiles only_frames(std::vector<std::string> paths, const std::string& place, bool headerless) {
  FoundFiles found;
  for (std::string& path : paths) {
    if (!headerless && !output_in_file(path).empty()) {
      ++found.outputs;
    } else {
      found.paths.push_back(std::move(path));
    }
  }
  if (found.paths.empty()) {
    throw Failure(place + " holds no frames, only outputs of nerova-polarize.");
  }
  return found;
}

}  // namespace

FoundFiles expand_argument(const std::string& argument, const FolderRules& rules) {
  static const std::set<std::string> picture_endings = {".png", ".tif", ".tiff", ".pgm", ".npy"};
  static const std::set<std::string> headerless_endings = {".raw", ".bin"};
  std::error_code error;
  const fs::path path(argument);
  if (fs::is_directory(path, error)) {
    const auto& endings = rules.headerless ? headerless_endings : picture_endings;
    const auto ends_well = [&](const std::string& name) { return endings.count(lower_case_extension(name)) != 0; };
    std::vector<std::string> files = rules.recursive ? accepted<fs::recursive_directory_iterator>(path, ends_well)
                                                     : accepted<fs::directory_iterator>(path, ends_well);
    if (files.empty()) {
      throw Failure("the folder " + argument + " holds no frames; they should end in " +
                    (rules.headerless ? ".raw or .bin." : ".png, .tif, .tiff, .pgm or .npy."));
    }
    return only_frames(std::move(files), "the folder " + argument, rules.headerless);
  }
  const std::string pattern = path.filename().string();
  if (pattern.find_first_of("*?") == std::string::npos || fs::exists(path, error)) {
    if (!rules.headerless) {
      refuse_output(argument);
    }
    return {{argument}, 0};
  }
  std::vector<std::string> files = accepted<fs::directory_iterator>(
      path.parent_path(), [&](const std::string& name) { return matches(pattern, name); });
  if (files.empty()) {
    throw Failure("no file fits the pattern " + argument + ".");
  }
  return only_frames(std::move(files), "the pattern " + argument, rules.headerless);
}

void refuse_output(const std::string& path) {
  if (const std::string output = output_in_file(path); !output.empty()) {
    throw Failure(path + " is no frame: it says that it is the output " + output + " of nerova-polarize.");
  }
}

}  // namespace nerova_zel
