#include "support/loaded_library.h"

#include <stdexcept>

#include "support/module_file.h"

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

LoadedLibrary::LoadedLibrary(const std::string& path) : module_(open_module(path)) {
  resolve(*this, "nv_polarization_processor_module_initialize", module_initialize);
  resolve(*this, "nv_polarization_processor_module_terminate", module_terminate);
  resolve(*this, "nv_polarization_processor_create_polarization_processor", create);
  resolve(*this, "nv_polarization_processor_destroy_polarization_processor", destroy);
  resolve(*this, "nv_polarization_processor_set_custom_calibration_coefficients", set_coefficients);
  resolve(*this, "nv_polarization_processor_get_custom_calibration_coefficients", get_coefficients);
  resolve(*this, "nv_polarization_processor_transform", transform);
}

LoadedLibrary::~LoadedLibrary() { close_module(module_); }

void* LoadedLibrary::find(const char* name) const { return find_name(module_, name); }

std::string library_path() { return NEROVA_LIBRARY_PATH; }

}  // namespace nerova_zel::test
