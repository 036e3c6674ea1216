/* The shortest whole use of the library: one 2 x 2 frame, its total power. */
#include <stdint.h>
#include <stdio.h>

#include "nerova_zel/polarization_processor.h"

int main(void) {
  const uint16_t frame[4] = {100, 50, 50, 0}; /* 0, 135 / 45, 90 degrees */
  uint16_t power[4] = {0, 0, 0, 0};
  nv_polarization_processor* processor = NULL;
  int32_t result = nv_polarization_processor_module_initialize();
  if (result == 0) {
    result = nv_polarization_processor_create_polarization_processor(&processor);
  }
  if (result == 0) {
    result = nv_polarization_processor_transform(processor, NV_POLARIZATION_PROCESSOR_PHASE_0_DEGREES, frame, 0, 0, 2,
                                                 2, 8, 255, NULL, power, NULL, NULL, NULL, NULL);
    nv_polarization_processor_destroy_polarization_processor(processor);
  }
  nv_polarization_processor_module_terminate();
  printf("result %d, power %d\n", (int)result, (int)power[0]);
  return result == 0 && power[0] == 100 ? 0 : 1;
}
