#include <windows.h>

#include <cstdio>

#include "platform/dynamic_library.h"

namespace nerova_zel {

namespace {

/** While it lives, a file that is no library makes a load of this thread fail instead of opening a message box. */
class NoMessageBox {
 public:
  NoMessageBox() { SetThreadErrorMode(SEM_FAILCRITICALERRORS, &before_); }
  ~NoMessageBox() { SetThreadErrorMode(before_, nullptr); }
  NoMessageBox(const NoMessageBox&) = delete;
  NoMessageBox& operator=(const NoMessageBox&) = delete;

 private:
  DWORD before_ = 0;
};

}  // namespace

ModuleHandle load_module(const char* module_name) noexcept {
  char file_name[69];
  std::snprintf(file_name, sizeof(file_name), "%s.dll", module_name);
  const NoMessageBox no_message_box;
  return LoadLibraryA(file_name);
}

void* find_entry(ModuleHandle module, const char* name) noexcept {
  return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(module), name));
}

void unload_module(ModuleHandle module) noexcept { FreeLibrary(static_cast<HMODULE>(module)); }

}  // namespace nerova_zel
