#include <dlfcn.h>

#include <climits>
#include <cstdlib>

#include "platform/dynamic_library.h"
#include "platform/elf_file_posix.h"

namespace nerova_zel {

namespace {

char own_path[PATH_MAX];  // empty when unknown

// As the library is loaded: a relative path would mean another place once the program changes its working directory.
__attribute__((constructor)) void find_own_path() {
  Dl_info info = {};
  if (dladdr(own_path, &info) == 0 || info.dli_fname == nullptr || realpath(info.dli_fname, own_path) == nullptr) {
    own_path[0] = '\0';
  }
}

/** The directory this library was loaded from, absolute and with its last slash; empty when unknown. */
std::string own_directory() {
  std::string path = own_path;
  path.erase(path.rfind('/') + 1);  // no slash: npos + 1 == 0, all of it
  return path;
}

}  // namespace

// Companions are installed beside the library, where the ordinary search does not look on these platforms.
ModuleHandle load_module(const std::string& module_name) {
  const std::string file_name = module_name + ".so";
  const std::string directory = own_directory();
  if (!directory.empty()) {
    const std::string path = directory + file_name;
    if (!is_whole_library(path.c_str())) {
      return nullptr;
    }
    if (ModuleHandle module = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) {
      return module;
    }
  }
  return dlopen(file_name.c_str(), RTLD_NOW | RTLD_LOCAL);
}

void* find_entry(ModuleHandle module, const char* name) noexcept { return dlsym(module, name); }

void unload_module(ModuleHandle module) noexcept { dlclose(module); }

}  // namespace nerova_zel
