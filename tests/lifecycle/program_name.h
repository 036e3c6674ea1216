#pragma once

#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace nerova_zel::test {

/** What the running program exports by that name; for a module that it loaded. */
inline void* find_in_program(const char* name) {
#if defined(_WIN32)
  return reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA(nullptr), name));
#else
  return dlsym(RTLD_DEFAULT, name);
#endif
}

}  // namespace nerova_zel::test
