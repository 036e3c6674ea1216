/* The entry points of a library that the program is linked with, by its header and (on Windows) its import library. */
#include "nerova_zel/polarization_processor.h"

#include <stddef.h>

#include "entry_points.h"

static int32_t LIBRARY_CALL create(void** processor) {
  nv_polarization_processor* created = NULL;
  const int32_t result = nv_polarization_processor_create_polarization_processor(&created);
  *processor = created;
  return result;
}

static int32_t LIBRARY_CALL destroy(void* processor) {
  return nv_polarization_processor_destroy_polarization_processor(processor);
}

static int32_t LIBRARY_CALL set_coefficients(void* processor, const float* m0, const float* m1, const float* m2,
                                             const float* m3) {
  return nv_polarization_processor_set_custom_calibration_coefficients(processor, m0, m1, m2, m3);
}

static int32_t LIBRARY_CALL get_coefficients(void* processor, float* m0, float* m1, float* m2, float* m3) {
  return nv_polarization_processor_get_custom_calibration_coefficients(processor, m0, m1, m2, m3);
}

static int32_t LIBRARY_CALL transform(void* processor, int32_t phase, const uint16_t* input, int32_t origin_x,
                                      int32_t origin_y, int32_t width, int32_t height, int32_t bit_depth,
                                      uint16_t output_maximum, float* normalized_stokes, uint16_t* total_power,
                                      uint16_t* horizontal_vertical, uint16_t* diagonal, uint16_t* azimuth,
                                      uint16_t* degree_of_linear_polarization) {
  return nv_polarization_processor_transform(processor, phase, input, origin_x, origin_y, width, height, bit_depth,
                                             output_maximum, normalized_stokes, total_power, horizontal_vertical,
                                             diagonal, azimuth, degree_of_linear_polarization);
}

int find_entry_points(struct entry_points* entries) {
  entries->module_initialize = nv_polarization_processor_module_initialize;
  entries->module_terminate = nv_polarization_processor_module_terminate;
  entries->create = create;
  entries->destroy = destroy;
  entries->set_coefficients = set_coefficients;
  entries->get_coefficients = get_coefficients;
  entries->transform = transform;
  return 0;
}
