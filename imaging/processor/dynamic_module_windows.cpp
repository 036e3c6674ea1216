#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <filesystem>
#include <stdexcept>

#include "processor/dynamic_module.h"

namespace nerova_zel {

namespace {

/** A path as the system takes it; a bare name stays one, for the ordinary search. */
std::wstring native(const std::string& path) {
  const std::filesystem::path given = std::filesystem::u8path(path);
  return given.has_parent_path() ? std::filesystem::absolute(given).make_preferred().wstring() : given.wstring();
}

}  // namespace

DynamicModule::DynamicModule(const std::string& path) : module_(LoadLibraryW(native(path).c_str())) {
  if (module_ == nullptr) {
    throw std::runtime_error("error " + std::to_string(GetLastError()));
  }
}

DynamicModule::~DynamicModule() { FreeLibrary(static_cast<HMODULE>(module_)); }

void* DynamicModule::find(const char* name) const {
  return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(module_), name));
}

std::string program_directory() {
  std::wstring path(32768, L'\0');  // the longest that Windows has
  path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
  return std::filesystem::path(path).parent_path().u8string();
}

std::string module_file_name(const std::string& name) { return name + ".dll"; }

}  // namespace nerova_zel
