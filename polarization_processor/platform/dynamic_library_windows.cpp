#include <windows.h>

#include "platform/dynamic_library.h"

namespace nerova_zel {

ModuleHandle load_module(const std::string& module_name) { return LoadLibraryA((module_name + ".dll").c_str()); }

void* find_entry(ModuleHandle module, const char* name) noexcept {
  return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(module), name));
}

void unload_module(ModuleHandle module) noexcept { FreeLibrary(static_cast<HMODULE>(module)); }

}  // namespace nerova_zel
