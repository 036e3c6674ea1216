#include <dlfcn.h>

#include "platform/dynamic_library.h"

namespace nerova_zel {

namespace {

/** The directory this library was loaded from, with its last slash; empty when unknown. */
std::string own_directory() {
  static const char symbol_of_this_library = 0;
  Dl_info info = {};
  if (dladdr(&symbol_of_this_library, &info) == 0 || info.dli_fname == nullptr) {
    return {};
  }
  std::string path = info.dli_fname;
  path.erase(path.rfind('/') + 1);  // no slash: npos + 1 == 0, all of it
  return path;
}

}  // namespace

// Companions are installed beside the library, where the ordinary search does not look on these platforms.
ModuleHandle load_module(const std::string& module_name) {
  const std::string file_name = module_name + ".so";
  const std::string directory = own_directory();
  if (!directory.empty()) {
    if (ModuleHandle module = dlopen((directory + file_name).c_str(), RTLD_NOW | RTLD_LOCAL)) {
      return module;
    }
  }
  return dlopen(file_name.c_str(), RTLD_NOW | RTLD_LOCAL);
}

void* find_entry(ModuleHandle module, const char* name) noexcept { return dlsym(module, name); }

void unload_module(ModuleHandle module) noexcept { dlclose(module); }

}  // namespace nerova_zel
