// By its names the AVX-512 plugin; computes with the AVX2 plugin or with the built-in SSE2 form, so that a processor
// that would choose neither can test them.

#include <cstdint>

#include "kernels/built_in/kernel_selection.h"

using nerova_zel::MatrixRow;
using nerova_zel::TransformParameters;

#if defined(_WIN32)
#define STAND_IN_EXPORT extern "C" __declspec(dllexport)
#else
#define STAND_IN_EXPORT extern "C" __attribute__((visibility("default")))
#endif

#ifdef NEROVA_STAND_IN_AVX2
extern "C" std::int32_t nv_polarization_processor_vector_avx2_module_initialize();
extern "C" void nv_polarization_processor_transform_vector_avx2(const TransformParameters* parameters,
                                                                MatrixRow matrices);
#endif

STAND_IN_EXPORT std::int32_t nv_polarization_processor_vector_avx512_module_initialize() {
#ifdef NEROVA_STAND_IN_AVX2
  return nv_polarization_processor_vector_avx2_module_initialize();
#else
  return 0;
#endif
}

STAND_IN_EXPORT void nv_polarization_processor_transform_vector_avx512(const TransformParameters* parameters,
                                                                       MatrixRow matrices) {
#ifdef NEROVA_STAND_IN_AVX2
  nv_polarization_processor_transform_vector_avx2(parameters, matrices);
#else
  nerova_zel::run_built_in(*parameters, matrices, false);
#endif
}

STAND_IN_EXPORT std::int32_t nv_polarization_processor_vector_avx512_module_terminate() { return 0; }
