/* A caller from another toolchain, with no C library: its exit code is the total power of one 2 x 2 frame, as both
 * libraries have it, or says what failed. */
#include <nerova_zel/imaging.h>

int __cdecl start(void);

/* What programs with a C library have of it. */
int _fltused = 0;

int __cdecl start(void) {
  static const uint16_t pixels[4] = {100, 50, 50, 0}; /* 0, 135 / 45, 90 degrees */
  static uint16_t power[4];
  static uint16_t same_power[4];
  static float s0[4];
  static nv_imaging_frame frame = {pixels, 2, 2, 0, 0, 0, 8};
  static nv_imaging_images images;
  nv_polarization_processor* processor = 0;
  int32_t result = nv_polarization_processor_module_initialize();
  if (result == 0) {
    result = nv_polarization_processor_create_polarization_processor(&processor);
  }
  if (result == 0) {
    result = nv_polarization_processor_transform(processor, NV_POLARIZATION_PROCESSOR_PHASE_0_DEGREES, pixels, 0, 0, 2,
                                                 2, 8, 255, 0, power, 0, 0, 0, 0);
    images.power = same_power;
    images.s0 = s0;
    images.output_maximum = 255;
    if (result == 0) {
      result = nv_imaging_transform(processor, &frame, &images, 1);
    }
    frame.layout = 30;
    if (result == 0 && (nv_imaging_transform(processor, &frame, &images, 1) != NV_IMAGING_ERROR_ARGUMENT ||
                        nv_imaging_error_text()[0] == 0)) {
      result = 200;
    }
    if (result == 0 && (same_power[0] != power[0] || s0[0] != 100.0F)) {
      result = 201;
    }
    nv_polarization_processor_destroy_polarization_processor(processor);
  }
  nv_polarization_processor_module_terminate();
  return result == 0 ? power[0] : (int)result;
}
