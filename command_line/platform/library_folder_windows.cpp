#include <windows.h>

#include <filesystem>

#include "platform/library_folder.h"

namespace nerova_zel {

void search_folder_of(const std::string& library) {
  const std::filesystem::path path = std::filesystem::u8path(library);
  if (path.has_parent_path()) {
    SetDllDirectoryW(std::filesystem::absolute(path).parent_path().make_preferred().c_str());
  }
}

}  // namespace nerova_zel
