/**
 * @file polarization_processor.hpp
 * @brief The library for C++17, header only: what polarization_processor.h declares, with ownership, names and
 * exceptions.
 *
 * A program that links the library makes a Processor and needs nothing else. A program that loads the library at run
 * time fills an EntryPoints with the addresses it found and passes it to the constructor; nothing in this header then
 * refers to a symbol of the library.
 *
 * The C header says what the images hold and how the library behaves. No function here allocates memory per frame.
 */
#ifndef NEROVA_ZEL_POLARIZATION_PROCESSOR_HPP
#define NEROVA_ZEL_POLARIZATION_PROCESSOR_HPP

#include <array>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "nerova_zel/polarization_processor.h"

namespace nerova_zel {

/** The seven functions of the library. None may be NULL, and their module must stay loaded while one is in use. */
struct EntryPoints {
  decltype(&nv_polarization_processor_module_initialize) module_initialize = nullptr;
  decltype(&nv_polarization_processor_module_terminate) module_terminate = nullptr;
  decltype(&nv_polarization_processor_create_polarization_processor) create = nullptr;
  decltype(&nv_polarization_processor_destroy_polarization_processor) destroy = nullptr;
  decltype(&nv_polarization_processor_set_custom_calibration_coefficients) set_coefficients = nullptr;
  decltype(&nv_polarization_processor_get_custom_calibration_coefficients) get_coefficients = nullptr;
  decltype(&nv_polarization_processor_transform) transform = nullptr;
};

/** The functions that the program is linked with. Only a program that calls this needs to be. */
inline EntryPoints linked_entry_points() noexcept {
  return {&nv_polarization_processor_module_initialize,
          &nv_polarization_processor_module_terminate,
          &nv_polarization_processor_create_polarization_processor,
          &nv_polarization_processor_destroy_polarization_processor,
          &nv_polarization_processor_set_custom_calibration_coefficients,
          &nv_polarization_processor_get_custom_calibration_coefficients,
          &nv_polarization_processor_transform};
}

/** Code of a ProcessorError for a buffer of known size that does not fit the frame. The library itself never returns
 * it. */
constexpr std::int32_t buffer_size_error = -1;

/** What a code other than 0 means, as the end of a sentence. Static text; never NULL. */
inline const char* error_text(std::int32_t code) noexcept {
  switch (code) {
    case buffer_size_error:
      return "a buffer has another number of elements than the frame needs";
    case NV_POLARIZATION_PROCESSOR_ERROR_CREATION_FAILED:
      return "no processor could be created, most likely because the CPU lacks SSE";
    case NV_POLARIZATION_PROCESSOR_ERROR_NOT_INITIALIZED:
      return "the module is not initialized";
    case NV_POLARIZATION_PROCESSOR_ERROR_OUT_OF_MEMORY:
      return "memory ran out while a processor was created";
    case NV_POLARIZATION_PROCESSOR_ERROR_NULL_HANDLE:
      return "there is no processor";
    case NV_POLARIZATION_PROCESSOR_ERROR_NULL_INPUT:
      return "there are no input pixels";
    case NV_POLARIZATION_PROCESSOR_ERROR_NO_OUTPUT:
      return "no output is given";
    case NV_POLARIZATION_PROCESSOR_ERROR_OUTPUT_IS_INPUT:
      return "an output is the input";
    case NV_POLARIZATION_PROCESSOR_ERROR_OUTPUTS_EQUAL:
      return "two outputs are the same buffer";
    case NV_POLARIZATION_PROCESSOR_ERROR_PHASE:
      return "the phase must be 0 to 3";
    case NV_POLARIZATION_PROCESSOR_ERROR_OUTPUT_MAXIMUM:
      return "the output maximum must be 1 to 65535";
    case NV_POLARIZATION_PROCESSOR_ERROR_WIDTH:
      return "a frame must be at least 2 pixels wide";
    case NV_POLARIZATION_PROCESSOR_ERROR_HEIGHT:
      return "a frame must be at least 2 pixels high";
    case NV_POLARIZATION_PROCESSOR_ERROR_BIT_DEPTH:
      return "the bit depth must be 0 to 16";
    default:
      return "the reason is unknown";
  }
}

/** The only exception that this header throws. */
class ProcessorError : public std::runtime_error {
 public:
  explicit ProcessorError(std::int32_t code)
      : std::runtime_error("polarization processor, error " + std::to_string(code) + ": " + error_text(code)),
        code_(code) {}
  ProcessorError(std::int32_t code, const std::string& text) : std::runtime_error(text), code_(code) {}

  /** One of nv_polarization_processor_error, or buffer_size_error. */
  std::int32_t code() const noexcept { return code_; }

 private:
  std::int32_t code_;
};

/**
 * Elements that belong to the caller: a plain pointer, whose room is trusted, or memory of known size, which transform
 * checks against the frame. Keeps the address and the size, so a vector must outlive the Buffer and must not grow.
 */
template <class Element>
class Buffer {
  using Value = std::remove_const_t<Element>;

 public:
  /** Nothing: an output that is not wanted. */
  constexpr Buffer() noexcept = default;
  constexpr Buffer(std::nullptr_t) noexcept {}
  constexpr Buffer(Element* data) noexcept : data_(data) {}
  constexpr Buffer(Element* data, std::size_t size) noexcept : data_(data), size_(size), sized_(true) {}
  template <class Allocator>
  Buffer(std::vector<Value, Allocator>& elements) noexcept : Buffer(elements.data(), elements.size()) {}
  template <class Allocator, class E = Element, std::enable_if_t<std::is_const_v<E>, int> = 0>
  Buffer(const std::vector<Value, Allocator>& elements) noexcept : Buffer(elements.data(), elements.size()) {}
  template <class Allocator>
  Buffer(const std::vector<Value, Allocator>&& temporary) = delete;

  constexpr Element* data() const noexcept { return data_; }

  /** Whether there is room for exactly `size` elements, as far as the size is known. */
  constexpr bool fits(std::uint64_t size) const noexcept { return !sized_ || size_ == size; }

 private:
  Element* data_ = nullptr;
  std::size_t size_ = 0;
  bool sized_ = false;
};

/** nv_polarization_processor_phase: the polarizer angle of the top-left pixel for an origin at even coordinates. */
enum class Phase : std::int32_t { degrees_0 = 0, degrees_45 = 1, degrees_90 = 2, degrees_135 = 3 };

/** One raw frame, row by row without gaps. */
struct Frame {
  Buffer<const std::uint16_t> pixels;  ///< width * height samples, read only
  std::int32_t width = 0;              ///< columns, at least 2
  std::int32_t height = 0;             ///< rows, at least 2
  std::int32_t origin_x = 0;           ///< sensor column of the top-left pixel; only its parity matters
  std::int32_t origin_y = 0;           ///< sensor row of it
  Phase phase = Phase::degrees_0;
  std::int32_t bit_depth = 16;  ///< significant bits of a sample, 0 to 16
};

/** Where the images go, as large as the frame. They must not overlap; an empty Buffer is an output not wanted. */
struct Outputs {
  Buffer<float> normalized_stokes;                      ///< 2 * width * height: S1 / P, S2 / P of each pixel
  Buffer<std::uint16_t> total_power;                    ///< width * height, as are those below
  Buffer<std::uint16_t> horizontal_vertical;            ///< S1
  Buffer<std::uint16_t> diagonal;                       ///< S2
  Buffer<std::uint16_t> azimuth;                        ///< 0 is -90 degrees, the output maximum +90 degrees
  Buffer<std::uint16_t> degree_of_linear_polarization;  ///< the output maximum is 1
  std::uint16_t output_maximum = 65535;                 ///< at least 1: what full scale maps to in 16-bit images
};

/** Matrix m serves the pixels under the polarizer at 45 * m degrees: 4 x 4 weights by rows, see the C header. */
using CalibrationMatrix = std::array<float, 16>;
using Calibration = std::array<CalibrationMatrix, 4>;

/**
 * A processor with its own count of the module: initialize on construction, terminate on destruction. So processors may
 * come and go in any order and number, beside other users of the library. Move-only. A moved-from Processor may be
 * destroyed or assigned to; its other functions throw ProcessorError with the code for a NULL handle.
 *
 * Thread safety: transform and calibration may run at the same time in any number of threads, also on one Processor.
 * set_calibration, moving and destruction need it alone.
 */
class Processor {
 public:
  /** Uses the functions that the program is linked with. Throws ProcessorError: creation, memory. */
  Processor() : Processor(linked_entry_points()) {}

  /** Uses the given functions; their module must stay loaded until the Processor is destroyed. Throws as above. */
  explicit Processor(const EntryPoints& library) : library_(library) {
    check(library_.module_initialize());
    const std::int32_t code = library_.create(&handle_);
    if (code != NV_POLARIZATION_PROCESSOR_SUCCESS) {
      library_.module_terminate();
      throw ProcessorError(code);
    }
  }

  Processor(const Processor&) = delete;
  Processor& operator=(const Processor&) = delete;

  Processor(Processor&& other) noexcept : library_(other.library_), handle_(std::exchange(other.handle_, nullptr)) {}

  Processor& operator=(Processor&& other) noexcept {
    if (this != &other) {
      release();
      library_ = other.library_;
      handle_ = std::exchange(other.handle_, nullptr);
    }
    return *this;
  }

  ~Processor() { release(); }

  /**
   * Computes the images that are wanted. Throws ProcessorError with the library's code, or with buffer_size_error where
   * the size of a Buffer is known and is not the frame's; nothing is written then.
   */
  void transform(const Frame& frame, const Outputs& outputs) const {
    require_handle();
    check_sizes(frame, outputs);
    check(library_.transform(handle_, static_cast<std::int32_t>(frame.phase), frame.pixels.data(), frame.origin_x,
                             frame.origin_y, frame.width, frame.height, frame.bit_depth, outputs.output_maximum,
                             outputs.normalized_stokes.data(), outputs.total_power.data(),
                             outputs.horizontal_vertical.data(), outputs.diagonal.data(), outputs.azimuth.data(),
                             outputs.degree_of_linear_polarization.data()));
  }

  /** Replaces all four matrices. Which pixels they reach depends on the route, see the C header. Throws ProcessorError.
   */
  void set_calibration(const Calibration& matrices) {
    require_handle();
    check(library_.set_coefficients(handle_, matrices[0].data(), matrices[1].data(), matrices[2].data(),
                                    matrices[3].data()));
  }

  /** The matrices in force. Throws ProcessorError. */
  Calibration calibration() const {
    require_handle();
    Calibration matrices{};
    check(library_.get_coefficients(handle_, matrices[0].data(), matrices[1].data(), matrices[2].data(),
                                    matrices[3].data()));
    return matrices;
  }

 private:
  static void check(std::int32_t code) {
    if (code != NV_POLARIZATION_PROCESSOR_SUCCESS) {
      throw ProcessorError(code);
    }
  }

  /** The library itself would say "not initialized" where this object held the last count of the module. */
  void require_handle() const {
    if (handle_ == nullptr) {
      throw ProcessorError(NV_POLARIZATION_PROCESSOR_ERROR_NULL_HANDLE);
    }
  }

  static void check_sizes(const Frame& frame, const Outputs& outputs) {
    if (frame.width < 2 || frame.height < 2) {
      return;  // refused by the library, whatever the buffers
    }
    const std::uint64_t count = static_cast<std::uint64_t>(frame.width) * static_cast<std::uint64_t>(frame.height);
    check_size(frame.pixels, count, "pixels");
    check_size(outputs.normalized_stokes, 2 * count, "normalized_stokes");
    check_size(outputs.total_power, count, "total_power");
    check_size(outputs.horizontal_vertical, count, "horizontal_vertical");
    check_size(outputs.diagonal, count, "diagonal");
    check_size(outputs.azimuth, count, "azimuth");
    check_size(outputs.degree_of_linear_polarization, count, "degree_of_linear_polarization");
  }

  template <class Element>
  static void check_size(const Buffer<Element>& buffer, std::uint64_t count, const char* name) {
    if (!buffer.fits(count)) {
      throw ProcessorError(buffer_size_error, std::string("polarization processor: the buffer ") + name +
                                                  " must have " + std::to_string(count) + " elements");
    }
  }

  void release() noexcept {
    if (handle_ != nullptr) {
      library_.destroy(handle_);
      library_.module_terminate();
      handle_ = nullptr;
    }
  }

  EntryPoints library_;
  nv_polarization_processor* handle_ = nullptr;
};

}  // namespace nerova_zel

#endif
