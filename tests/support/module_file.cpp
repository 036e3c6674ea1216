#include "support/module_file.h"

#include <stdexcept>

#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace nerova_zel::test {

#if defined(_WIN32)

namespace {

std::string absolute(const std::string& path) {
  char full[MAX_PATH] = {};
  GetFullPathNameA(path.c_str(), MAX_PATH, full, nullptr);
  return full;
}

}  // namespace

void* open_module(const std::string& path) {
  SetDllDirectoryA(absolute(folder_of(path)).c_str());
  void* const module = LoadLibraryA(absolute(path).c_str());
  if (module == nullptr) {
    throw std::runtime_error("cannot load " + path + ": error " + std::to_string(GetLastError()));
  }
  return module;
}

void close_module(void* module) { FreeLibrary(static_cast<HMODULE>(module)); }

void* find_name(void* module, const char* name) {
  return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(module), name));
}

bool module_is_loaded(const std::string& path) { return GetModuleHandleA(absolute(path).c_str()) != nullptr; }

#else

void* open_module(const std::string& path) {
  void* const module = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (module == nullptr) {
    throw std::runtime_error("cannot load " + path + ": " + dlerror());
  }
  return module;
}

void close_module(void* module) { dlclose(module); }

void* find_name(void* module, const char* name) { return dlsym(module, name); }

bool module_is_loaded(const std::string& path) {
  void* const module = dlopen(path.c_str(), RTLD_NOLOAD | RTLD_NOW);
  if (module != nullptr) {
    dlclose(module);
  }
  return module != nullptr;
}

#endif

std::string folder_of(const std::string& path) { return path.substr(0, path.find_last_of("/\\") + 1); }

}  // namespace nerova_zel::test
