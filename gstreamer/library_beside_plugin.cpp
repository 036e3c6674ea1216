#include "library_beside_plugin.h"

#include <dlfcn.h>

#include <filesystem>

#include "processor/dynamic_module.h"

namespace nerova_zel {

std::string library_beside_plugin() {
  namespace fs = std::filesystem;
  Dl_info plugin{};
  if (dladdr(reinterpret_cast<const void*>(&library_beside_plugin), &plugin) == 0) {
    return {};
  }
  const fs::path library =
      fs::path(plugin.dli_fname).parent_path().parent_path() / module_file_name("nerova_zel_polarization_processor");
  std::error_code error;
  return fs::exists(library, error) ? library.string() : std::string();
}

}  // namespace nerova_zel
