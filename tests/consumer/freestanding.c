/* A caller from another toolchain, with no C library: its exit code is the total power of one 2 x 2 frame. */
#include <nerova_zel/polarization_processor.h>

int start(void);

int start(void) {
  static const uint16_t frame[4] = {100, 50, 50, 0}; /* 0, 135 / 45, 90 degrees */
  static uint16_t power[4];
  nv_polarization_processor* processor = 0;
  int32_t result = nv_polarization_processor_module_initialize();
  if (result == 0) {
    result = nv_polarization_processor_create_polarization_processor(&processor);
  }
  if (result == 0) {
    result = nv_polarization_processor_transform(processor, NV_POLARIZATION_PROCESSOR_PHASE_0_DEGREES, frame, 0, 0, 2,
                                                 2, 8, 255, 0, power, 0, 0, 0, 0);
    nv_polarization_processor_destroy_polarization_processor(processor);
  }
  nv_polarization_processor_module_terminate();
  return result == 0 ? power[0] : -result;
}
