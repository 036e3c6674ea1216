// The seven exported functions: is the module initialized, is there a handle, and the code to return.

#include "nerova_zel/polarization_processor.h"

#include <new>

#include "cpu_features.h"
#include "module.h"
#include "platform/thread_cancellation.h"
#include "processor.h"
#include "records.h"
#include "transform.h"

// As in C, so that a definition that differs from the header does not compile.
// Callers on 32-bit x86 may align the stack to 4 bytes only; everything beneath these functions relies on 16.
#if defined(__i386__)
#define NEROVA_ENTRY extern "C" [[gnu::force_align_arg_pointer]]
#else
#define NEROVA_ENTRY extern "C"
#endif

namespace records = nerova_zel::records;
using nerova_zel::current_log_client;
using nerova_zel::HeldCancellation;
using nerova_zel::LogClient;

struct nv_polarization_processor final : nerova_zel::Processor {  // NOLINT(readability-identifier-naming): public name
  using Processor::Processor;
};

namespace {

std::int32_t out_of_memory(const LogClient& client) noexcept {
  records::create_out_of_memory(client);
  return NV_POLARIZATION_PROCESSOR_ERROR_OUT_OF_MEMORY;
}

}  // namespace

NEROVA_ENTRY std::int32_t nv_polarization_processor_module_initialize() {
  const HeldCancellation held_cancellation;
  nerova_zel::initialize_module();
  return NV_POLARIZATION_PROCESSOR_SUCCESS;
}

NEROVA_ENTRY std::int32_t nv_polarization_processor_module_terminate() {
  const HeldCancellation held_cancellation;
  nerova_zel::terminate_module();
  return NV_POLARIZATION_PROCESSOR_SUCCESS;
}

NEROVA_ENTRY std::int32_t nv_polarization_processor_create_polarization_processor(
    nv_polarization_processor** processor) {
  const HeldCancellation held_cancellation;
  const LogClient* const client = current_log_client();
  if (client == nullptr) {
    return NV_POLARIZATION_PROCESSOR_ERROR_NOT_INITIALIZED;
  }
  if (!nerova_zel::cpu_has_sse()) {
    records::create_without_sse(*client);
    return NV_POLARIZATION_PROCESSOR_ERROR_CREATION_FAILED;
  }
  try {
    if (auto* const made = new (std::nothrow) nv_polarization_processor(nerova_zel::measure_cpu_level())) {
      *processor = made;
      return NV_POLARIZATION_PROCESSOR_SUCCESS;
    }
    return out_of_memory(*client);
  } catch (const std::bad_alloc&) {  // of a plugin
    return out_of_memory(*client);
  } catch (...) {
    records::create_unknown_error(*client);
    return NV_POLARIZATION_PROCESSOR_ERROR_CREATION_FAILED;
  }
}

NEROVA_ENTRY std::int32_t nv_polarization_processor_destroy_polarization_processor(
    nv_polarization_processor* processor) {
  const HeldCancellation held_cancellation;
  const LogClient* const client = current_log_client();
  if (client == nullptr) {
    return NV_POLARIZATION_PROCESSOR_ERROR_NOT_INITIALIZED;
  }
  if (processor == nullptr) {
    records::destroy_null_handle(*client);
    return NV_POLARIZATION_PROCESSOR_ERROR_NULL_HANDLE;
  }
  delete processor;
  return NV_POLARIZATION_PROCESSOR_SUCCESS;
}

NEROVA_ENTRY std::int32_t nv_polarization_processor_set_custom_calibration_coefficients(
    nv_polarization_processor* processor, const float* matrix_0, const float* matrix_1, const float* matrix_2,
    const float* matrix_3) {
  const HeldCancellation held_cancellation;
  const LogClient* const client = current_log_client();
  if (client == nullptr) {
    return NV_POLARIZATION_PROCESSOR_ERROR_NOT_INITIALIZED;
  }
  if (processor == nullptr) {
    records::set_coefficients_null_handle(*client);
    return NV_POLARIZATION_PROCESSOR_ERROR_NULL_HANDLE;
  }
  const float* const matrices[] = {matrix_0, matrix_1, matrix_2, matrix_3};
  for (int index = 0; index < nerova_zel::phase_count; ++index) {
    if (matrices[index] != nullptr) {
      processor->set_matrix(index, matrices[index]);
    }
  }
  return NV_POLARIZATION_PROCESSOR_SUCCESS;
}

NEROVA_ENTRY std::int32_t nv_polarization_processor_get_custom_calibration_coefficients(
    nv_polarization_processor* processor, float* matrix_0, float* matrix_1, float* matrix_2, float* matrix_3) {
  const HeldCancellation held_cancellation;
  const LogClient* const client = current_log_client();
  if (client == nullptr) {
    return NV_POLARIZATION_PROCESSOR_ERROR_NOT_INITIALIZED;
  }
  if (processor == nullptr) {
    records::get_coefficients_null_handle(*client);
    return NV_POLARIZATION_PROCESSOR_ERROR_NULL_HANDLE;
  }
  float* const matrices[] = {matrix_0, matrix_1, matrix_2, matrix_3};
  for (int index = 0; index < nerova_zel::phase_count; ++index) {
    if (matrices[index] != nullptr) {
      processor->get_matrix(index, matrices[index]);
    }
  }
  return NV_POLARIZATION_PROCESSOR_SUCCESS;
}

NEROVA_ENTRY std::int32_t nv_polarization_processor_transform(
    nv_polarization_processor* processor, std::int32_t phase, const std::uint16_t* input, std::int32_t origin_x,
    std::int32_t origin_y, std::int32_t width, std::int32_t height, std::int32_t bit_depth,
    std::uint16_t output_maximum, float* normalized_stokes, std::uint16_t* total_power,
    std::uint16_t* horizontal_vertical, std::uint16_t* diagonal, std::uint16_t* azimuth,
    std::uint16_t* degree_of_linear_polarization) {
  const HeldCancellation held_cancellation;
  const LogClient* const client = current_log_client();
  if (client == nullptr) {
    return NV_POLARIZATION_PROCESSOR_ERROR_NOT_INITIALIZED;
  }
  return nerova_zel::transform(*client, {processor,
                                         phase,
                                         input,
                                         origin_x,
                                         origin_y,
                                         width,
                                         height,
                                         bit_depth,
                                         output_maximum,
                                         {normalized_stokes, total_power, horizontal_vertical, diagonal, azimuth,
                                          degree_of_linear_polarization}});
}
