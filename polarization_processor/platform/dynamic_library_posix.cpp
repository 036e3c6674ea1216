#include <dlfcn.h>

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>

#include "platform/dynamic_library.h"
#include "platform/elf_file_posix.h"

namespace nerova_zel {

namespace {

/** Where this library was loaded from, absolute and with its last slash; empty when unknown. */
char own_directory[PATH_MAX];

// As the library is loaded: a relative path would mean another place once the program changes its working directory.
__attribute__((constructor)) void find_own_directory() {
  Dl_info info = {};
  const bool found = dladdr(own_directory, &info) != 0 && realpath(info.dli_fname, own_directory) != nullptr;
  *(found ? std::strrchr(own_directory, '/') + 1 : own_directory) = '\0';
}

}  // namespace

// Companions are installed beside the library or in a folder of their own below, where the ordinary search does not
// look on these platforms.
ModuleHandle load_module(const char* module_name) noexcept {
  char file_name[68];
  std::snprintf(file_name, sizeof(file_name), "%s.so", module_name);
  if (own_directory[0] != '\0') {
    for (const char* folder : {"", "nerova_zel/"}) {
      char path[sizeof(own_directory) + sizeof(file_name) + 11];
      std::snprintf(path, sizeof(path), "%s%s%s", own_directory, folder, file_name);
      if (!is_whole_library(path)) {
        return nullptr;
      }
      if (ModuleHandle module = dlopen(path, RTLD_NOW | RTLD_LOCAL)) {
        return module;
      }
    }
  }
  return dlopen(file_name, RTLD_NOW | RTLD_LOCAL);
}

void* find_entry(ModuleHandle module, const char* name) noexcept { return dlsym(module, name); }

void unload_module(ModuleHandle module) noexcept { dlclose(module); }

}  // namespace nerova_zel
