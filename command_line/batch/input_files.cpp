#include "batch/input_files.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <set>
#include <system_error>

#include "failure.h"
#include "file_marks.h"
#include "frame_files.h"
#include "platform/files.h"

namespace nerova_zel {

namespace {

namespace fs = std::filesystem;

#if defined(_WIN32)
/** Names of files differ in more than that there. */
char letter(char c) { return static_cast<char>(std::tolower(static_cast<unsigned char>(c))); }
#else
char letter(char c) { return c; }
#endif

/** Whether `name` fits a pattern of *, ? and characters that stand for themselves. */
bool matches(const std::string& pattern, const std::string& name) {
  std::size_t at = 0;
  std::size_t next = 0;
  std::size_t star = std::string::npos;  // the last one that was met, and what it takes of the name
  std::size_t taken = 0;
  while (next < name.size()) {
    if (at < pattern.size() && pattern[at] == '*') {
      star = at++;
      taken = next;
    } else if (at < pattern.size() && pattern[at] == '?') {
      ++at;
      do {
        ++next;
      } while (next < name.size() && (static_cast<unsigned char>(name[next]) & 0xC0U) == 0x80U);  // one in UTF-8
    } else if (at < pattern.size() && letter(pattern[at]) == letter(name[next])) {
      ++at;
      ++next;
    } else if (star != std::string::npos) {
      at = star + 1;
      next = ++taken;
    } else {
      return false;
    }
  }
  return pattern.find_first_not_of('*', at) == std::string::npos;
}

/** Adds the files of a folder whose names `accepts` takes, and of those below it if `recursive`. */
template <class Accepts>
void add_accepted(const fs::path& folder, const fs::path& shown, bool recursive, Accepts accepts,
                  std::vector<std::string>& found) {
  std::error_code error;
  for (const DirectoryEntry& entry : directory_entries(folder, error)) {
    if (entry.is_file && accepts(entry.name.u8string())) {
      found.push_back((shown / entry.name).u8string());
    } else if (recursive && entry.is_directory) {
      add_accepted(folder / entry.name, shown / entry.name, recursive, accepts, found);
    }
  }
  if (error) {
    throw Failure("cannot read the folder " + shown.u8string() + ": " + error.message() + ".");
  }
}

template <class Accepts>
std::vector<std::string> accepted(const fs::path& folder, bool recursive, Accepts accepts) {
  std::vector<std::string> found;
  add_accepted(folder.empty() ? fs::path(".") : folder, folder, recursive, accepts, found);
  std::sort(found.begin(), found.end());
  return found;
}

bool is_pattern(const fs::path& path) {
  return path.filename().u8string().find_first_of("*?") != std::string::npos && !file_facts(path);
}

/** Without the files that are outputs. Throws Failure if none is left. */
FoundFiles only_frames(std::vector<std::string> paths, const std::string& place, bool headerless) {
  FoundFiles found;
  for (std::string& path : paths) {
    if (!headerless && !output_in_file(fs::u8path(path)).empty()) {
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
  const fs::path path = fs::u8path(argument);
  if (is_folder(path)) {
    const auto& endings = rules.headerless ? headerless_endings : picture_endings;
    const auto ends_well = [&](const std::string& name) { return endings.count(lower_case_extension(name)) != 0; };
    std::vector<std::string> files = accepted(path, rules.recursive, ends_well);
    if (files.empty()) {
      throw Failure("the folder " + argument + " holds no frames; they should end in " +
                    (rules.headerless ? ".raw or .bin." : ".png, .tif, .tiff, .pgm or .npy."));
    }
    return only_frames(std::move(files), "the folder " + argument, rules.headerless);
  }
  if (!is_pattern(path)) {
    if (!rules.headerless) {
      refuse_output(argument);
    }
    return {{argument}, 0};
  }
  return only_frames(expand_pattern(argument), "the pattern " + argument, rules.headerless);
}

std::vector<std::string> expand_pattern(const std::string& argument) {
  const fs::path path = fs::u8path(argument);
  if (!is_pattern(path)) {
    return {argument};
  }
  std::vector<std::string> files =
      accepted(path.parent_path(), false,
               [pattern = path.filename().u8string()](const std::string& name) { return matches(pattern, name); });
  if (files.empty()) {
    throw Failure("no file fits the pattern " + argument + ".");
  }
  return files;
}

void refuse_output(const std::string& path) {
  if (const std::string output = output_in_file(fs::u8path(path)); !output.empty()) {
    throw Failure(path + " is no frame: it says that it is the output " + output + " of nerova-polarize.");
  }
}

}  // namespace nerova_zel
