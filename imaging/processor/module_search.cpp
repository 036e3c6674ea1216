#include <filesystem>

#include "processor/dynamic_module.h"

namespace nerova_zel {

namespace fs = std::filesystem;

std::string find_module(const std::string& file_name, const std::string& subfolder) {
  const fs::path directory = fs::u8path(program_directory());
  for (const fs::path& candidate : {directory / NEROVA_WAY_TO_LIBRARY / subfolder / file_name,
                                    directory / ".." / "lib" / subfolder / file_name, directory / file_name}) {
    std::error_code error;
    if (!directory.empty() && fs::exists(candidate, error)) {
      return candidate.lexically_normal().u8string();
    }
  }
  return file_name;
}

}  // namespace nerova_zel
