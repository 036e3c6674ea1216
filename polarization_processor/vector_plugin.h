#pragma once

#include <cstdint>

#include "kernels/shared/kernels.h"
#include "platform/dynamic_library.h"

namespace nerova_zel {

/** Where a vector plugin is found: its library and the entries it exports. */
struct VectorPluginNames {
  const char* module;
  const char* initialize;
  const char* transform;
  const char* terminate;
};

inline constexpr VectorPluginNames avx512_plugin_names = {
    "nerova_zel_polarization_processor_vector_avx512",
    "nv_polarization_processor_vector_avx512_module_initialize",
    "nv_polarization_processor_transform_vector_avx512",
    "nv_polarization_processor_vector_avx512_module_terminate",
};

inline constexpr VectorPluginNames avx2_plugin_names = {
    "nerova_zel_polarization_processor_vector_avx2",
    "nv_polarization_processor_vector_avx2_module_initialize",
    "nv_polarization_processor_transform_vector_avx2",
    "nv_polarization_processor_vector_avx2_module_terminate",
};

/**
 * One loaded vector plugin. Whatever is missing or fails makes it unusable, silently; its terminate entry, once found,
 * is called on destruction even so.
 */
class VectorPlugin {
 public:
  /** Throws what the plugin's initialize entry throws; the plugin's library then stays loaded. */
  explicit VectorPlugin(const VectorPluginNames& names);
  ~VectorPlugin();
  VectorPlugin(const VectorPlugin&) = delete;
  VectorPlugin& operator=(const VectorPlugin&) = delete;

  bool usable() const noexcept { return !unusable_; }

  /** Computes a checked frame on the caller's thread; only when usable. */
  void transform(const TransformParameters& parameters, MatrixRow matrices) const {
    transform_entry_(&parameters, matrices);
  }

 private:
  using InitializeEntry = std::int32_t (*)();
  using TransformEntry = void (*)(const TransformParameters* parameters, MatrixRow matrices);
  using TerminateEntry = std::int32_t (*)();  ///< the result is not looked at

  bool load(const VectorPluginNames& names);

  ModuleHandle module_ = nullptr;
  bool unusable_ = false;
  InitializeEntry initialize_entry_ = nullptr;
  TransformEntry transform_entry_ = nullptr;
  TerminateEntry terminate_entry_ = nullptr;
};

}  // namespace nerova_zel
