// The three entries of a plugin, by the names of its instruction set. Built without that set, so that a processor
// without it can still be asked.

#include <cstdint>

#include "cpu_features.h"
#include "wide_frame.h"

#if defined(_WIN32)
#define NEROVA_EXPORT
#else
#define NEROVA_EXPORT __attribute__((visibility("default")))
#endif

// Callers on 32-bit x86 may align the stack to 4 bytes only.
#if defined(__i386__)
#define NEROVA_ENTRY __attribute__((force_align_arg_pointer)) NEROVA_EXPORT
#else
#define NEROVA_ENTRY NEROVA_EXPORT
#endif

#if defined(NEROVA_PLUGIN_AVX512)
#define NEROVA_INITIALIZE nv_polarization_processor_vector_avx512_module_initialize
#define NEROVA_TRANSFORM nv_polarization_processor_transform_vector_avx512
#define NEROVA_TERMINATE nv_polarization_processor_vector_avx512_module_terminate
#define NEROVA_SUPPORTED nerova_zel::system_runs_avx512
#else
#define NEROVA_INITIALIZE nv_polarization_processor_vector_avx2_module_initialize
#define NEROVA_TRANSFORM nv_polarization_processor_transform_vector_avx2
#define NEROVA_TERMINATE nv_polarization_processor_vector_avx2_module_terminate
#define NEROVA_SUPPORTED nerova_zel::system_runs_avx2
#endif

extern "C" {

/** Returns 0, or 1 when the processor or the operating system does not support the instruction set. Any thread. */
NEROVA_ENTRY std::int32_t NEROVA_INITIALIZE() { return NEROVA_SUPPORTED() ? 0 : 1; }

/** Only after a successful initialize. Neither argument is kept. Any number of calls at the same time. */
NEROVA_ENTRY void NEROVA_TRANSFORM(const nerova_zel::TransformParameters* parameters, nerova_zel::MatrixRow matrices) {
  nerova_zel::compute_wide_frame(*parameters, matrices);
}

/** There is nothing to give back. */
NEROVA_ENTRY std::int32_t NEROVA_TERMINATE() { return 0; }
}
