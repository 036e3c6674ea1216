#include <dlfcn.h>

#include <filesystem>
#include <stdexcept>

#include "processor/dynamic_module.h"

namespace nerova_zel {

DynamicModule::DynamicModule(const std::string& path) : module_(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) {
  if (module_ == nullptr) {
    const char* const reason = dlerror();
    throw std::runtime_error(reason != nullptr ? reason : "unknown reason");
  }
}

DynamicModule::~DynamicModule() { dlclose(module_); }

void* DynamicModule::find(const char* name) const { return dlsym(module_, name); }

std::string program_directory() {
  std::error_code error;
  return std::filesystem::read_symlink("/proc/self/exe", error).parent_path().string();
}

std::string module_file_name(const std::string& name) { return "lib" + name + ".so"; }

}  // namespace nerova_zel
