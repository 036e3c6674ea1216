#include "support/loaded_library.h"

#include <stdexcept>

#include "support/module_file.h"

namespace nerova_zel::test {

LoadedModule::LoadedModule(const std::string& path) : module_(open_module(path)) {}

LoadedModule::~LoadedModule() { close_module(module_); }

void* LoadedModule::find(const char* name) const { return find_name(module_, name); }

void* LoadedModule::existing(const char* name) const {
  void* const entry = find(name);
  if (entry == nullptr) {
    throw std::runtime_error(std::string("the library does not export ") + name);
  }
  return entry;
}

LoadedLibrary::LoadedLibrary(const std::string& path) : LoadedModule(path) {
  resolve("nv_polarization_processor_module_initialize", module_initialize);
  resolve("nv_polarization_processor_module_terminate", module_terminate);
  resolve("nv_polarization_processor_create_polarization_processor", create);
  resolve("nv_polarization_processor_destroy_polarization_processor", destroy);
  resolve("nv_polarization_processor_set_custom_calibration_coefficients", set_coefficients);
  resolve("nv_polarization_processor_get_custom_calibration_coefficients", get_coefficients);
  resolve("nv_polarization_processor_transform", transform);
}

LoadedProcessor::LoadedProcessor(const std::string& path) : LoadedLibrary(path) {
  module_initialize();
  if (create(&handle) != NV_POLARIZATION_PROCESSOR_SUCCESS) {
    throw std::runtime_error("the library creates no processor");
  }
}

LoadedProcessor::~LoadedProcessor() {
  destroy(handle);
  module_terminate();
}

std::string library_path() { return NEROVA_LIBRARY_PATH; }

}  // namespace nerova_zel::test
