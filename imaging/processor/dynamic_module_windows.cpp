#include <windows.h>

#include <cstring>
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

// Without version.dll, which would be one more DLL to depend on.
std::string DynamicModule::version() const {
  const auto module = static_cast<HMODULE>(module_);
  // 16 is RT_VERSION, which has the type of the narrow functions unless UNICODE is defined.
  HRSRC__* const resource = FindResourceW(module, MAKEINTRESOURCEW(VS_VERSION_INFO), MAKEINTRESOURCEW(16));
  void* const loaded = resource != nullptr ? LoadResource(module, resource) : nullptr;
  const char* const block = loaded != nullptr ? static_cast<const char*>(LockResource(loaded)) : nullptr;
  // Three words, the name of the block in 16 two-byte characters, and what fills up to a multiple of 4.
  constexpr DWORD header_size = 40;
  VS_FIXEDFILEINFO info{};
  if (block == nullptr || SizeofResource(module, resource) < header_size + sizeof(info)) {
    return {};
  }
  std::memcpy(&info, block + header_size, sizeof(info));
  if (info.dwSignature != VS_FFI_SIGNATURE) {
    return {};
  }
  return std::to_string(HIWORD(info.dwFileVersionMS)) + "." + std::to_string(LOWORD(info.dwFileVersionMS)) + "." +
         std::to_string(HIWORD(info.dwFileVersionLS));
}

std::string program_directory() {
  std::wstring path(32768, L'\0');  // the longest that Windows has
  path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
  return std::filesystem::path(path).parent_path().u8string();
}

std::string module_file_name(const std::string& name) { return name + ".dll"; }

}  // namespace nerova_zel
