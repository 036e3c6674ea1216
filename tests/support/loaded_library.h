#pragma once

#include <string>

#include "nerova_zel/polarization_processor.h"

namespace nerova_zel::test {

/**
 * The library as a stranger loads it: opened by path at run time, its seven functions resolved by name. Throws
 * std::runtime_error when the file or a name is missing. Unloads on destruction.
 */
class LoadedLibrary {
 public:
  explicit LoadedLibrary(const std::string& path);
  ~LoadedLibrary();
  LoadedLibrary(const LoadedLibrary&) = delete;
  LoadedLibrary& operator=(const LoadedLibrary&) = delete;

  decltype(&nv_polarization_processor_module_initialize) module_initialize = nullptr;
  decltype(&nv_polarization_processor_module_terminate) module_terminate = nullptr;
  decltype(&nv_polarization_processor_create_polarization_processor) create = nullptr;
  decltype(&nv_polarization_processor_destroy_polarization_processor) destroy = nullptr;
  decltype(&nv_polarization_processor_set_custom_calibration_coefficients) set_coefficients = nullptr;
  decltype(&nv_polarization_processor_get_custom_calibration_coefficients) get_coefficients = nullptr;
  decltype(&nv_polarization_processor_transform) transform = nullptr;

  /** Address of any exported name, or NULL. */
  void* find(const char* name) const;

 private:
  void* module_ = nullptr;
};

/** Where this build left the library, its companions beside it. */
std::string library_path();

}  // namespace nerova_zel::test
