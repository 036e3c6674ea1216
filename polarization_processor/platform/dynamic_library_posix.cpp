#include <dlfcn.h>

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>

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

// Companions are installed beside the library, where the ordinary search does not look on these platforms.
ModuleHandle load_module(const char* module_name) noexcept {
  char path[sizeof(own_directory) + 68];
  std::snprintf(path, sizeof(path), "%s%s.so", own_directory, module_name);
  if (!is_whole_library(path)) {
    return nullptr;
  }
  if (ModuleHandle module = dlopen(path, RTLD_NOW | RTLD_LOCAL)) {
    return module;
  }
  return dlopen(path + std::strlen(own_directory), RTLD_NOW | RTLD_LOCAL);
}

void* find_entry(ModuleHandle module, const char* name) noexcept { return dlsym(module, name); }

void unload_module(ModuleHandle module) noexcept { dlclose(module); }

}  // namespace nerova_zel
