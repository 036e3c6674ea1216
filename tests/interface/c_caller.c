/* Nothing but the public header, first of all includes: it must stand alone, as strict C99. */
#include "nerova_zel/polarization_processor.h"

int main(void) {
  const uint16_t frame[4] = {1000, 900, 900, 800};
  uint16_t power[4] = {0};
  float matrix[16] = {0};
  nv_polarization_processor* processor = 0;
  int32_t result = nv_polarization_processor_module_initialize();
  if (result == NV_POLARIZATION_PROCESSOR_SUCCESS) {
    result = nv_polarization_processor_create_polarization_processor(&processor);
  }
  if (result == NV_POLARIZATION_PROCESSOR_SUCCESS) {
    result = nv_polarization_processor_get_custom_calibration_coefficients(processor, matrix, 0, 0, 0);
    result |= nv_polarization_processor_set_custom_calibration_coefficients(processor, matrix, 0, 0, 0);
    result |= nv_polarization_processor_transform(processor, NV_POLARIZATION_PROCESSOR_PHASE_0_DEGREES, frame, 0, 0, 2,
                                                  2, 12, 4095, 0, power, 0, 0, 0, 0);
    result |= nv_polarization_processor_destroy_polarization_processor(processor);
  }
  result |= nv_polarization_processor_module_terminate();
  /* Half the sum of the four samples; every pixel of so small a frame has all four around it. */
  return result == NV_POLARIZATION_PROCESSOR_SUCCESS && power[0] == 1800 && power[3] == 1800 ? 0 : 1;
}
