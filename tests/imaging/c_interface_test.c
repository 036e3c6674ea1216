/* The C interface of imaging as a C program sees it: what it refuses, with which code and sentence, and that its
 * answers agree with one another. What they are is tested in C++. */
#include <math.h>

#include "c_interface_check.h"

enum { width = 96, height = 64, count = width * height };

static nv_imaging_scene even_scene(double angle) {
  nv_imaging_scene scene = {
      width, height, 0, 0, 90, 12, 1, 0, {0.5, 0, 0}, 0, 40, {1, -1, 0.5, 0}, {50, 60, 70, 80}, {1, 1.1, 0.9, 1}, 1};
  scene.light[1] = 0.5 * cos(angle / 28.647889756541161);
  scene.light[2] = 0.5 * sin(angle / 28.647889756541161);
  return scene;
}

static void check_formats(void) {
  static const unsigned char bytes[6] = {0x12, 0x34, 0x56, 0x13, 0x34, 0x57};
  uint16_t pixels[4] = {0};
  const char* name = NULL;
  int32_t bits = 0;
  int32_t formats = 0;
  do {
    CHECK(nv_imaging_pixel_format_name(formats++, &name) == 0);
    CHECK(name == NULL || (nv_imaging_pixel_format(name, &bits, NULL) == 0 && bits >= 8));
  } while (name != NULL);
  CHECK(formats > 7);
  CHECK(nv_imaging_unpack("Mono12p", bytes, 6, 2, 2, pixels, 1) == 0);
  CHECK(pixels[0] == 0x412 && pixels[1] == 0x563 && pixels[2] == 0x413 && pixels[3] == 0x573);
  CHECK(nv_imaging_unpack("Mono12p", bytes, 5, 2, 2, pixels, 1) == NV_IMAGING_ERROR_ARGUMENT);
  CHECK(strstr(nv_imaging_error_text(), "3 bytes each, but 5 bytes are there") != NULL);
  CHECK(nv_imaging_unpack("Mono12p", bytes, 6, (size_t)-1 / 2, 1, pixels, 1) == NV_IMAGING_ERROR_ARGUMENT);
  CHECK(nv_imaging_unpack("Mono13", bytes, 6, 2, 2, pixels, 1) == NV_IMAGING_ERROR_ARGUMENT);
  uint16_t mosaic[16], planes[16];
  static const uint16_t apart[16] = {0, 1, 4, 5, 2, 3, 6, 7, 8, 9, 12, 13, 10, 11, 14, 15};
  for (uint16_t i = 0; i < 16; ++i) {
    mosaic[i] = i;
  }
  CHECK(nv_imaging_split_colours(mosaic, 4, 4, "RGGB", planes) == 0 && memcmp(planes, apart, sizeof(apart)) == 0);
  CHECK(nv_imaging_split_colours(pixels, 4, 6, "RGGB", pixels) == NV_IMAGING_ERROR_ARGUMENT);
}

/* Large enough for three threads, whose parts meet where no part of a byte is left. */
static void check_threads(void) {
  enum { many = 800003 };
  static unsigned char bytes[(3 * many + 1) / 2];
  static uint16_t alone[many], together[many];
  for (size_t i = 0; i < sizeof(bytes); ++i) {
    bytes[i] = (unsigned char)(i * 2654435761U >> 13);
  }
  CHECK(nv_imaging_unpack("Mono12p", bytes, sizeof(bytes), many, 1, alone, 1) == 0);
  CHECK(nv_imaging_unpack("Mono12p", bytes, sizeof(bytes), many, 1, together, 3) == 0);
  CHECK(memcmp(alone, together, sizeof(alone)) == 0);
}

static void check_recordings(void) {
  static const char text[] =
      "{\"format\": \"nerova-zel-recording\", \"version\": 1, \"pixel_format\": \"BayerGRPolarized12p\", \"width\": 8, "
      "\"height\": 4, \"origin\": {\"x\": 1, \"y\": 2}, \"layout\": 45, \"frames\": 3}";
  nv_imaging_recording recording;
  CHECK(nv_imaging_read_recording(text, strlen(text), "run", &recording) == 0);
  CHECK(recording.frames == 3 && recording.width == 8 && recording.height == 4 && recording.layout == 45);
  CHECK(recording.origin_x == 1 && recording.origin_y == 2 && recording.bit_depth == 12);
  CHECK(strcmp(recording.pixel_format, "Mono12p") == 0 && strcmp(recording.colour, "GRBG") == 0);
  CHECK(nv_imaging_read_recording(text, strlen(text) - 1, "run", &recording) == NV_IMAGING_ERROR_DATA);
  CHECK(strstr(nv_imaging_error_text(), "run does not describe a recording") != NULL);
}

static void check_images(nv_polarization_processor* processor) {
  static uint16_t pixels[count], azimuth[count], dolp[count], from_angle[count];
  static float truth[3][count], angle[count];
  static unsigned char rgb[2][3 * count];
  nv_imaging_scene scene = even_scene(30.0);
  CHECK(nv_imaging_simulate(&scene, pixels, truth[0], truth[1], truth[2]) == 0);
  CHECK(fabs((double)truth[0][7] - 0.5) < 1e-6);
  nv_imaging_frame frame = {pixels, width, height, 0, 0, 90, 12};
  nv_imaging_images images = {0};
  images.azimuth = azimuth;
  images.dolp = dolp;
  images.angle = angle;
  images.output_maximum = 65535;
  CHECK(nv_imaging_transform(processor, &frame, &images, 2) == 0);
  nv_imaging_colours* colours = NULL;
  CHECK(nv_imaging_create_colours("light", 65535, 1.0, 1.0, &colours) == 0);
  CHECK(nv_imaging_paint(colours, azimuth, NULL, NULL, count, rgb[0]) == NV_IMAGING_ERROR_ARGUMENT);
  CHECK(nv_imaging_paint(colours, azimuth, dolp, NULL, count, rgb[0]) == 0);
  angle[5] = NAN;
  CHECK(nv_imaging_azimuth_of_angles(angle, count, 65535, from_angle) == 0);
  CHECK(from_angle[5] == 0);
  CHECK(abs(from_angle[9] - azimuth[9]) < 65); /* 0.16 degrees */
  nv_imaging_destroy_colours(colours);
  CHECK(nv_imaging_create_colours("loud", 65535, 1.0, 1.0, &colours) == NV_IMAGING_ERROR_ARGUMENT);
  CHECK(nv_imaging_create_colours("dark", 65535, 0.0, 1.0, &colours) == NV_IMAGING_ERROR_ARGUMENT);
  CHECK(nv_imaging_create_colours("dark", 65535, 1.0, 0.0, &colours) == NV_IMAGING_ERROR_ARGUMENT);
  const nv_imaging_images none = {NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, 65535};
  CHECK(nv_imaging_transform(processor, &frame, &none, 1) == NV_IMAGING_ERROR_ARGUMENT);

  nv_imaging_statistics all, half, both = {0};
  const int32_t left[4] = {0, 0, width / 2, height};
  CHECK(nv_imaging_compute_statistics(processor, &frame, NULL, NV_IMAGING_WEIGHT_EQUAL, 1, &all) == 0);
  CHECK(nv_imaging_compute_statistics(processor, &frame, left, NV_IMAGING_WEIGHT_EQUAL, 1, &half) == 0);
  CHECK(all.pixels == count && half.pixels == count / 2 && fabs(all.mean_angle - half.mean_angle) < 1.0);
  CHECK(nv_imaging_add_statistics(&both, &half) == 0 && memcmp(&both, &half, sizeof(both)) == 0);
  const int32_t least[4] = {width - 2, height - 2, 2, 2}, narrow[4] = {0, 0, 1, 2}, low[4] = {0, 0, 2, 1};
  CHECK(nv_imaging_compute_statistics(processor, &frame, least, 0, 1, &half) == 0 && half.pixels == 4);
  CHECK(nv_imaging_compute_statistics(processor, &frame, narrow, 0, 1, &half) == NV_IMAGING_ERROR_ARGUMENT);
  CHECK(nv_imaging_compute_statistics(processor, &frame, low, 0, 1, &half) == NV_IMAGING_ERROR_ARGUMENT);
  const int32_t beyond[4] = {1, 0, width, height};
  CHECK(nv_imaging_compute_statistics(processor, &frame, beyond, 0, 1, &half) == NV_IMAGING_ERROR_ARGUMENT);

  scene.origin_x = frame.origin_x = 3;
  scene.origin_y = frame.origin_y = 1;
  CHECK(nv_imaging_simulate(&scene, pixels, NULL, NULL, NULL) == 0);
  for (int32_t x = 4; x < 6; ++x) {
    for (int32_t y = 2; y < 4; ++y) {
      const int32_t region[4] = {x, y, 20, 20};
      CHECK(nv_imaging_compute_statistics(processor, &frame, region, NV_IMAGING_WEIGHT_EQUAL, 1, &half) == 0);
      CHECK(fabs(half.mean_angle - all.mean_angle) < 0.1);
    }
  }

  images.dolp = azimuth; /* two images in one place */
  CHECK(nv_imaging_transform(processor, &frame, &images, 1) == NV_POLARIZATION_PROCESSOR_ERROR_OUTPUTS_EQUAL);
  CHECK(nv_imaging_transform(NULL, &frame, &images, 1) == NV_POLARIZATION_PROCESSOR_ERROR_NULL_HANDLE);
  frame.layout = 30;
  CHECK(nv_imaging_transform(processor, &frame, &images, 1) == NV_IMAGING_ERROR_ARGUMENT);
  CHECK(strcmp(nv_imaging_error_text(), "the layout must be 0, 45, 90 or 135") == 0);
}

/* An image is the same alone as among the others. */
static void check_lone_images(nv_polarization_processor* processor) {
  enum { kinds = 10 };
  static uint16_t pixels[count];
  static float rooms[2][kinds][2 * count];
  nv_imaging_scene scene = even_scene(50.0);
  scene.uniform = 0;
  CHECK(nv_imaging_simulate(&scene, pixels, NULL, NULL, NULL) == 0);
  const nv_imaging_frame frame = {pixels, width, height, 0, 0, 90, 12};
  for (int alone = 0; alone <= kinds; ++alone) {
    void* rows[kinds];
    for (int i = 0; i < kinds; ++i) {
      rows[i] = alone == kinds ? rooms[0][i] : i == alone ? rooms[1][i] : NULL;
    }
    const nv_imaging_images images = {rows[0], rows[1], rows[2], rows[3], rows[4], rows[5],
                                      rows[6], rows[7], rows[8], rows[9], 4095};
    CHECK(nv_imaging_transform(processor, &frame, &images, 1) == 0);
  }
  CHECK(memcmp(rooms[0], rooms[1], sizeof(rooms[0])) == 0);
}

static void check_calibration(void) {
  static uint16_t pixels[count];
  const nv_imaging_frame frame = {pixels, width, height, 0, 0, 90, 12};
  nv_imaging_scene scene = even_scene(0.0);
  nv_imaging_series* series = NULL;
  nv_imaging_calibration* fitted = NULL;
  nv_imaging_calibration* again = NULL;
  nv_imaging_calibration* colours[4] = {NULL, NULL, NULL, NULL};
  CHECK(nv_imaging_create_series(90, 0, 0, &series) == 0);
  CHECK(nv_imaging_fit(series, 0, &fitted) == NV_IMAGING_ERROR_ARGUMENT);
  for (int i = 0; i < 6; ++i) {
    scene = even_scene(30.0 * i);
    CHECK(nv_imaging_simulate(&scene, pixels, NULL, NULL, NULL) == 0);
    CHECK(nv_imaging_add_to_series(series, "frame", 30.0 * i, &frame) == 0);
  }
  pixels[3] = 5000; /* more than 12 bits */
  CHECK(nv_imaging_set_dark_frame(series, "dark", &frame) == NV_IMAGING_ERROR_DATA);
  scene.bit_depth = 17;
  CHECK(nv_imaging_simulate(&scene, pixels, NULL, NULL, NULL) == NV_IMAGING_ERROR_ARGUMENT);
  scene.bit_depth = 16;
  CHECK(nv_imaging_simulate(&scene, pixels, NULL, NULL, NULL) == 0);
  scene = even_scene(0.0);
  memset(scene.light, 0, sizeof(scene.light));
  CHECK(nv_imaging_simulate(&scene, pixels, NULL, NULL, NULL) == 0);
  CHECK(nv_imaging_set_dark_frame(series, "dark", &frame) == 0);
  CHECK(nv_imaging_fit(series, 0, &fitted) == 0);
  nv_imaging_destroy_series(series);

  const char* text = NULL;
  size_t length = 0;
  size_t frames = 0;
  float matrices[2][64];
  double dark[4], residuals[24];
  nv_imaging_polarizer polarizers[4];
  CHECK(nv_imaging_calibration_values(fitted, matrices[0], dark, NULL, polarizers, &frames) == 0 && frames == 6);
  CHECK(fabs(polarizers[1].angle_error + 1.0) < 0.05 && fabs(dark[2] - 40.0) < 0.01);
  CHECK(nv_imaging_calibration_residuals(fitted, residuals, NULL) == 0 && fabs(residuals[23]) < 0.01);
  CHECK(nv_imaging_calibration_text(fitted, &text, &length) == 0 && strlen(text) == length);
  CHECK(nv_imaging_read_calibration(text, length / 2, "half", &again) == NV_IMAGING_ERROR_DATA);
  CHECK(nv_imaging_read_calibration(text, length, "whole", &again) == 0);
  CHECK(nv_imaging_read_colour_calibration(text, length, "grey", colours) == NV_IMAGING_ERROR_DATA);
  CHECK(colours[0] == NULL && strstr(nv_imaging_error_text(), "grey calibrates a sensor without colours") != NULL);
  CHECK(nv_imaging_calibration_values(again, matrices[1], NULL, NULL, NULL, &frames) == 0 && frames == 0);
  CHECK(memcmp(matrices[0], matrices[1], sizeof(matrices[0])) == 0);
  CHECK(nv_imaging_calibration_residuals(again, residuals, NULL) == NV_IMAGING_ERROR_ARGUMENT);
  CHECK(nv_imaging_subtract_dark(again, &frame, pixels) == 0 && pixels[0] == 0);
  nv_imaging_destroy_calibration(fitted);
  nv_imaging_destroy_calibration(again);
}

int main(void) {
  nv_polarization_processor* processor = NULL;
  const char* route = NULL;
  CHECK(nv_polarization_processor_module_initialize() == 0);
  CHECK(nv_polarization_processor_create_polarization_processor(&processor) == 0);
  check_formats();
  check_threads();
  check_recordings();
  check_images(processor);
  check_lone_images(processor);
  check_calibration();
  check_refusals(processor);
  CHECK(nv_imaging_route(&route) == 0 && strlen(route) > 3);
  nv_polarization_processor_destroy_polarization_processor(processor);
  nv_polarization_processor_module_terminate();
  printf("%s\nPASSED  . 1 test\n", route);
  return 0;
}
