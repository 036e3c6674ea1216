#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "kernels/shared/default_calibration.h"
#include "kernels/shared/kernels.h"
#include "support/frame_images.h"
#include "support/module_file.h"

namespace nerova_zel::test {

/** A vector plugin, loaded and called as the library does it. */
class PluginModule {
 public:
  PluginModule(const std::string& file, std::string set) : set_(std::move(set)), module_(open_module(file)) {}
  ~PluginModule() { close_module(module_); }
  PluginModule(const PluginModule&) = delete;
  PluginModule& operator=(const PluginModule&) = delete;

  void* initialize_entry() const { return find("vector_" + set_ + "_module_initialize"); }
  void* transform_entry() const { return find("transform_vector_" + set_); }
  void* terminate_entry() const { return find("vector_" + set_ + "_module_terminate"); }

  std::int32_t initialize() const { return reinterpret_cast<std::int32_t (*)()>(initialize_entry())(); }
  void transform(const TransformParameters& parameters, MatrixRow matrices) const {
    reinterpret_cast<void (*)(const TransformParameters*, MatrixRow)>(transform_entry())(&parameters, matrices);
  }

 private:
  void* find(const std::string& name) const {
    return find_name(module_, ("nv_polarization_processor_" + name).c_str());
  }

  std::string set_;
  void* module_;
};

/** Where the build leaves a plugin, beside the library. */
inline std::string plugin_path(const std::string& library, const std::string& set) {
  return folder_of(library) + "nerova_zel_polarization_processor_vector_" + set + module_ending;
}

/** The default matrices of phase 0, by the parity of row and column. */
inline const CalibrationMatrix* const default_row[] = {&default_matrices[0], &default_matrices[3], &default_matrices[1],
                                                       &default_matrices[2]};

/** A call for 12-bit samples of phase 0. */
inline TransformParameters plugin_call(const std::vector<std::uint16_t>& frame, std::int32_t width,
                                       std::uint16_t output_maximum, FrameImages& images) {
  return {static_cast<std::int32_t>(frame.size()) / width,
          width,
          0,
          frame.data(),
          12,
          4095.0F,
          static_cast<float>(output_maximum),
          output_maximum,
          {images.stokes.data(), images.others[0].data(), images.others[1].data(), images.others[2].data(),
           images.others[3].data(), images.others[4].data()}};
}

}  // namespace nerova_zel::test
