#pragma once

#include <string>

#include "nerova_zel/polarization_processor.h"

namespace nerova_zel::test {

/** A library opened by path at run time. Throws std::runtime_error when there is none. Unloads on destruction. */
class LoadedModule {
 public:
  explicit LoadedModule(const std::string& path);
  ~LoadedModule();
  LoadedModule(const LoadedModule&) = delete;
  LoadedModule& operator=(const LoadedModule&) = delete;

  /** Address of any exported name, or NULL. */
  void* find(const char* name) const;

  /** The function of that name. Throws std::runtime_error when there is none. */
  template <class Function>
  void resolve(const char* name, Function& function) const {
    function = reinterpret_cast<Function>(existing(name));
  }

 private:
  void* existing(const char* name) const;

  void* module_ = nullptr;
};

/** The library loaded at run time: its seven functions resolved by name. */
class LoadedLibrary : public LoadedModule {
 public:
  explicit LoadedLibrary(const std::string& path);

  decltype(&nv_polarization_processor_module_initialize) module_initialize = nullptr;
  decltype(&nv_polarization_processor_module_terminate) module_terminate = nullptr;
  decltype(&nv_polarization_processor_create_polarization_processor) create = nullptr;
  decltype(&nv_polarization_processor_destroy_polarization_processor) destroy = nullptr;
  decltype(&nv_polarization_processor_set_custom_calibration_coefficients) set_coefficients = nullptr;
  decltype(&nv_polarization_processor_get_custom_calibration_coefficients) get_coefficients = nullptr;
  decltype(&nv_polarization_processor_transform) transform = nullptr;
};

/** A library with its module initialized and a processor made. Throws std::runtime_error when there is none. */
class LoadedProcessor : public LoadedLibrary {
 public:
  explicit LoadedProcessor(const std::string& path);
  ~LoadedProcessor();

  nv_polarization_processor* handle = nullptr;
};

/** Where this build left the library, its companions beside it. */
std::string library_path();

}  // namespace nerova_zel::test
