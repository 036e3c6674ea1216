#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "nerova_zel/polarization_processor.h"

namespace nerova_zel {

/** One frame, as handed to the library. */
struct TransformInput {
  int phase = 0;
  const std::uint16_t* pixels = nullptr;
  int origin_x = 0;
  int origin_y = 0;
  int width = 0;
  int height = 0;
  int bit_depth = 0;
  std::uint16_t output_maximum = 0;
};

/** Where the results go; NULL where one is not wanted. */
struct TransformOutput {
  float* normalized_stokes = nullptr;
  std::uint16_t* total_power = nullptr;
  std::uint16_t* horizontal_vertical = nullptr;
  std::uint16_t* diagonal = nullptr;
  std::uint16_t* azimuth = nullptr;
  std::uint16_t* degree_of_linear_polarization = nullptr;
};

/**
 * The polarization processor library, opened at run time, with one processor. Everything is released on destruction,
 * in reverse order. Throws Failure.
 */
class Library {
 public:
  /**
   * Opens the library at `path`; if empty, the one that lies where it was installed or in ../lib beside the program or
   * in the program's own directory, else whatever the system's ordinary search finds.
   */
  explicit Library(const std::string& path);
  ~Library();
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;

  /** Where it was opened, or the name that the system found it by. */
  const std::string& path() const { return path_; }

  void transform(const TransformInput& input, const TransformOutput& output) const;

  /** Matrices 0 to 3, 16 weights each by rows. Not while another thread transforms. */
  void set_calibration(const std::array<std::array<float, 16>, 4>& matrices);

  /**
   * Whether the route that serves this computer applies the matrices to every pixel and not only to the last columns
   * and rows. Found out by a trial, because the library does not say. Not while another thread transforms.
   */
  bool calibrates_every_pixel();

 private:
  template <class Function>
  void resolve(Function& function, const char* name);
  void start();
  void check(std::int32_t code) const;
  void close();

  std::string path_;
  void* module_ = nullptr;
  bool initialized_ = false;
  nv_polarization_processor* processor_ = nullptr;
  decltype(&nv_polarization_processor_module_initialize) module_initialize_ = nullptr;
  decltype(&nv_polarization_processor_module_terminate) module_terminate_ = nullptr;
  decltype(&nv_polarization_processor_create_polarization_processor) create_ = nullptr;
  decltype(&nv_polarization_processor_destroy_polarization_processor) destroy_ = nullptr;
  decltype(&nv_polarization_processor_set_custom_calibration_coefficients) set_matrices_ = nullptr;
  decltype(&nv_polarization_processor_get_custom_calibration_coefficients) get_matrices_ = nullptr;
  decltype(&nv_polarization_processor_transform) transform_ = nullptr;
};

}  // namespace nerova_zel
