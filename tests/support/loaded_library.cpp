#include "support/loaded_library.h"

#include <dlfcn.h>

#include <stdexcept>

namespace nerova_zel::test {

namespace {

template <class Function>
void resolve(const LoadedLibrary& library, const char* name, Function& function) {
  function = reinterpret_cast<Function>(library.find(name));
  if (function == nullptr) {
    throw std::runtime_error(std::string("the library does not export ") + name);
  }
}

}  // namespace

LoadedLibrary::LoadedLibrary(const std::string& path) : module_(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) {
  if (module_ == nullptr) {
    throw std::runtime_error("cannot load " + path + ": " + dlerror());
  }
  resolve(*this, "nv_polarization_processor_module_initialize", module_initialize);
  resolve(*this, "nv_polarization_processor_module_terminate", module_terminate);
  resolve(*this, "nv_polarization_processor_create_polarization_processor", create);
  resolve(*this, "nv_polarization_processor_destroy_polarization_processor", destroy);
  resolve(*this, "nv_polarization_processor_set_custom_calibration_coefficients", set_coefficients);
  resolve(*this, "nv_polarization_processor_get_custom_calibration_coefficients", get_coefficients);
  resolve(*this, "nv_polarization_processor_transform", transform);
}

LoadedLibrary::~LoadedLibrary() { dlclose(module_); }

void* LoadedLibrary::find(const char* name) const { return dlsym(module_, name); }

std::string library_path() { return NEROVA_LIBRARY_PATH; }

}  // namespace nerova_zel::test
