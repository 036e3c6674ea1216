#include "commands/colour_files.h"

#include <filesystem>

#include "commands/colour_options.h"

namespace nerova_zel {

namespace {

bool shows_all_colours(const OutputFile& file) {
  const auto* kind = std::get_if<PictureKind>(&file.content);
  return kind != nullptr && (*kind == PictureKind::sheet || *kind == PictureKind::power_picture);
}

/** "_power_r.png" of "_power.png". */
std::string with_colours(const std::string& ending, const std::string& colours) {
  const std::string extension = std::filesystem::path(ending).extension().string();
  return ending.substr(0, ending.size() - extension.size()) + colours + extension;
}

}  // namespace

std::vector<OutputFile> colour_files(const std::vector<OutputFile>& files, const ColourSettings& colour) {
  std::string all;
  for (std::size_t i = 0; i < colour.plane_count(); ++i) {
    all += colour_ending(colour.name(i));
  }
  std::vector<OutputFile> result;
  for (OutputFile file : files) {
    const std::string ending = file.ending;
    if (shows_all_colours(file) || std::filesystem::path(ending).extension() == ".npy") {
      file.ending = shows_all_colours(file) ? ending : with_colours(ending, all);
      file.plane = all_planes;
      result.push_back(file);
      continue;
    }
    for (std::size_t i = 0; i < colour.plane_count(); ++i) {
      file.ending = with_colours(ending, colour_ending(colour.name(i)));
      file.plane = static_cast<int>(i);
      result.push_back(file);
    }
  }
  return result;
}

}  // namespace nerova_zel
