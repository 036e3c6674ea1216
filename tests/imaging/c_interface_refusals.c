#include <math.h>

#include "c_interface_check.h"

#define REFUSED(call) CHECK((call) == NV_IMAGING_ERROR_ARGUMENT)

static uint16_t pixels[64], room[64];
static const nv_imaging_frame good_frame = {pixels, 8, 8, 0, 0, 90, 12};

static void refuse_frames(nv_polarization_processor* processor) {
  const nv_imaging_frame refused[] = {
      {NULL, 4, 4, 0, 0, 90, 12},    {pixels, 1, 4, 0, 0, 90, 12},  {pixels, 4, 1, 0, 0, 90, 12},
      {pixels, 4, 4, -1, 0, 90, 12}, {pixels, 4, 4, 0, -1, 90, 12}, {pixels, 4, 4, 0, 0, 44, 12},
      {pixels, 4, 4, 0, 0, 90, 0},   {pixels, 4, 4, 0, 0, 90, 17},
  };
  const nv_imaging_frame taken[] = {{pixels, 2, 2, 0, 0, 0, 1}, {pixels, 2, 2, 1, 1, 45, 16}};
  nv_imaging_statistics sums;
  for (size_t i = 0; i < sizeof(refused) / sizeof(*refused); ++i) {
    REFUSED(nv_imaging_compute_statistics(processor, &refused[i], NULL, NV_IMAGING_WEIGHT_EQUAL, 1, &sums));
  }
  for (size_t i = 0; i < sizeof(taken) / sizeof(*taken); ++i) {
    CHECK(nv_imaging_compute_statistics(processor, &taken[i], NULL, NV_IMAGING_WEIGHT_EQUAL, 1, &sums) == 0);
  }
  REFUSED(nv_imaging_compute_statistics(processor, NULL, NULL, NV_IMAGING_WEIGHT_EQUAL, 1, &sums));
  REFUSED(nv_imaging_compute_statistics(processor, &good_frame, NULL, NV_IMAGING_WEIGHT_EQUAL, 1, NULL));
  REFUSED(nv_imaging_compute_statistics(processor, &good_frame, NULL, 2, 1, &sums));
  REFUSED(nv_imaging_compute_statistics(processor, &good_frame, NULL, NV_IMAGING_WEIGHT_EQUAL, 0, &sums));
  const int32_t regions[][4] = {{-1, 0, 2, 2}, {0, -1, 2, 2}, {7, 0, 2, 2}, {0, 7, 2, 2}};
  for (size_t i = 0; i < sizeof(regions) / sizeof(*regions); ++i) {
    REFUSED(nv_imaging_compute_statistics(processor, &good_frame, regions[i], NV_IMAGING_WEIGHT_EQUAL, 1, &sums));
  }
  REFUSED(nv_imaging_add_statistics(NULL, &sums));
  REFUSED(nv_imaging_add_statistics(&sums, NULL));

  nv_imaging_images images = {0};
  images.power = room;
  images.output_maximum = 65535;
  CHECK(nv_imaging_transform(processor, &good_frame, &images, 1) == 0);
  REFUSED(nv_imaging_transform(processor, &good_frame, NULL, 1));
  REFUSED(nv_imaging_transform(processor, &good_frame, &images, 0));
  images.output_maximum = 65536;
  REFUSED(nv_imaging_transform(processor, &good_frame, &images, 1));
  images.output_maximum = 0;
  REFUSED(nv_imaging_transform(processor, &good_frame, &images, 1));
  REFUSED(nv_imaging_route(NULL));
}

static void refuse_formats(void) {
  const char* name = NULL;
  int32_t bits = 0;
  REFUSED(nv_imaging_pixel_format_name(0, NULL));
  REFUSED(nv_imaging_pixel_format_name(-1, &name));
  REFUSED(nv_imaging_pixel_format(NULL, &bits, &bits));
  CHECK(nv_imaging_unpack("Mono8", room, 4, 4, 1, pixels, 1) == 0);
  REFUSED(nv_imaging_unpack(NULL, room, 4, 4, 1, pixels, 1));
  REFUSED(nv_imaging_unpack("Mono8", NULL, 4, 4, 1, pixels, 1));
  REFUSED(nv_imaging_unpack("Mono8", room, 4, 4, 1, NULL, 1));
  REFUSED(nv_imaging_unpack("Mono8", room, 0, 0, 1, pixels, 1));
  REFUSED(nv_imaging_unpack("Mono8", room, 0, 4, 0, pixels, 1));
  REFUSED(nv_imaging_unpack("Mono8", room, 4, 4, 1, pixels, 0));
  REFUSED(nv_imaging_unpack("Mono8", room, 5, 4, 1, pixels, 1));
  REFUSED(nv_imaging_split_colours(NULL, 4, 4, "RGGB", room));
  REFUSED(nv_imaging_split_colours(pixels, 4, 4, "RGGB", NULL));
  REFUSED(nv_imaging_split_colours(pixels, 4, 4, NULL, room));
  REFUSED(nv_imaging_split_colours(pixels, 4, 4, "RGBG", room));
  REFUSED(nv_imaging_split_colours(pixels, 0, 4, "RGGB", room));
  REFUSED(nv_imaging_split_colours(pixels, 4, 0, "RGGB", room));
  REFUSED(nv_imaging_split_colours(pixels, 6, 4, "RGGB", room));
  nv_imaging_recording recording;
  REFUSED(nv_imaging_read_recording(NULL, 0, "run", &recording));
  REFUSED(nv_imaging_read_recording("{}", 2, NULL, &recording));
  REFUSED(nv_imaging_read_recording("{}", 2, "run", NULL));
}

static void refuse_colours(void) {
  nv_imaging_colours* colours = NULL;
  unsigned char rgb[12];
  REFUSED(nv_imaging_create_colours(NULL, 1, 1.0, 1.0, &colours));
  REFUSED(nv_imaging_create_colours("composite", 1, 1.0, 1.0, NULL));
  REFUSED(nv_imaging_create_colours("composite", 0, 1.0, 1.0, &colours));
  REFUSED(nv_imaging_create_colours("composite", 65536, 1.0, 1.0, &colours));
  CHECK(nv_imaging_create_colours("composite", 1, 1.0, 1.0, &colours) == 0);
  CHECK(nv_imaging_paint(colours, room, room, room, 4, rgb) == 0);
  REFUSED(nv_imaging_paint(NULL, room, room, room, 4, rgb));
  REFUSED(nv_imaging_paint(colours, NULL, room, room, 4, rgb));
  REFUSED(nv_imaging_paint(colours, room, NULL, room, 4, rgb));
  REFUSED(nv_imaging_paint(colours, room, room, NULL, 4, rgb));
  REFUSED(nv_imaging_paint(colours, room, room, room, 4, NULL));
  nv_imaging_destroy_colours(colours);
  const float angles[4] = {0};
  CHECK(nv_imaging_azimuth_of_angles(angles, 4, 1, room) == 0);
  REFUSED(nv_imaging_azimuth_of_angles(NULL, 4, 1, room));
  REFUSED(nv_imaging_azimuth_of_angles(angles, 4, 1, NULL));
  REFUSED(nv_imaging_azimuth_of_angles(angles, 4, 0, room));
  REFUSED(nv_imaging_azimuth_of_angles(angles, 4, 65536, room));
}

#define SCENE(result, change)                                                                     \
  do {                                                                                            \
    nv_imaging_scene scene = {                                                                    \
        4, 4, 0, 0, 90, 12, 1000, 1, {0.5, 0, 0}, 0, 40, {0}, {50, 50, 50, 50}, {1, 1, 1, 1}, 1}; \
    change;                                                                                       \
    CHECK(nv_imaging_simulate(&scene, room, NULL, NULL, NULL) == (result));                       \
  } while (0)
#define SCENE_REFUSED(change) SCENE(NV_IMAGING_ERROR_ARGUMENT, change)
#define SCENE_TAKEN(change) SCENE(0, change)

static void refuse_scenes(void) {
  SCENE_REFUSED(scene.width = 1);
  SCENE_REFUSED(scene.height = 1);
  SCENE_TAKEN(scene.width = scene.height = 2);
  SCENE_REFUSED(scene.origin_x = -1);
  SCENE_REFUSED(scene.origin_y = -1);
  SCENE_REFUSED(scene.layout = 91);
  SCENE_REFUSED(scene.bit_depth = 0);
  SCENE_REFUSED(scene.photons = -1);
  SCENE_REFUSED(scene.photons = 2e12);
  SCENE_REFUSED(scene.photons = NAN);
  SCENE_REFUSED(scene.dark_level = -1);
  SCENE_REFUSED(scene.dark_level = 4096);
  SCENE_TAKEN(scene.dark_level = 4095);
  SCENE_REFUSED(scene.extinctions[3] = 0.9);
  SCENE_TAKEN(scene.extinctions[3] = 1);
  SCENE_REFUSED(scene.gains[0] = 0);
  SCENE_REFUSED(scene.gains[0] = 10.1);
  SCENE_TAKEN(scene.gains[0] = 10);
  SCENE_REFUSED(scene.angle_errors[2] = -180.1);
  SCENE_TAKEN(scene.angle_errors[2] = -180);
  SCENE_REFUSED(scene.light[0] = -0.1);
  SCENE_REFUSED(scene.light[0] = 10.1);
  SCENE_REFUSED((scene.light[1] = 0.4, scene.light[2] = 0.4));
  SCENE_TAKEN((scene.light[1] = 0.3, scene.light[2] = 0.4));
  nv_imaging_scene scene = {4, 4, 0, 0, 90, 12, 0, 0, {0}, 0, 0, {0}, {1, 1, 1, 1}, {1, 1, 1, 1}, 0};
  float truth[3][16];
  REFUSED(nv_imaging_simulate(NULL, room, NULL, NULL, NULL));
  REFUSED(nv_imaging_simulate(&scene, room, truth[0], truth[1], NULL));
  REFUSED(nv_imaging_simulate(&scene, room, truth[0], NULL, truth[2]));
  REFUSED(nv_imaging_simulate(&scene, room, NULL, truth[1], truth[2]));
  CHECK(nv_imaging_simulate(&scene, NULL, truth[0], truth[1], truth[2]) == 0);
}

static void refuse_calibrations(void) {
  nv_imaging_series* series = NULL;
  nv_imaging_calibration* found[4];
  const char* text = NULL;
  size_t length = 0;
  double residuals[24];
  REFUSED(nv_imaging_create_series(90, 0, 0, NULL));
  REFUSED(nv_imaging_create_series(90, -1, 0, &series));
  REFUSED(nv_imaging_create_series(90, 0, -1, &series));
  REFUSED(nv_imaging_create_series(60, 0, 0, &series));
  CHECK(nv_imaging_create_series(90, 0, 0, &series) == 0);
  REFUSED(nv_imaging_add_to_series(NULL, "frame", 0, &good_frame));
  REFUSED(nv_imaging_add_to_series(series, NULL, 0, &good_frame));
  REFUSED(nv_imaging_add_to_series(series, "frame", 0, NULL));
  REFUSED(nv_imaging_add_to_series(series, "frame", 360.1, &good_frame));
  REFUSED(nv_imaging_add_to_series(series, "frame", -360.1, &good_frame));
  REFUSED(nv_imaging_add_to_series(series, "frame", NAN, &good_frame));
  REFUSED(nv_imaging_set_dark_frame(series, NULL, &good_frame));
  REFUSED(nv_imaging_fit(NULL, 0, found));
  for (int i = 0; i < 3; ++i) {
    CHECK(nv_imaging_add_to_series(series, "frame", i == 0 ? -360 : 360, &good_frame) == 0);
  }
  REFUSED(nv_imaging_fit(series, 0, found));
  CHECK(strstr(nv_imaging_error_text(), "at least four frames") != NULL);
  CHECK(nv_imaging_add_to_series(series, "frame", 45, &good_frame) == 0);
  REFUSED(nv_imaging_fit(series, 0, NULL));
  nv_imaging_destroy_series(series);
  REFUSED(nv_imaging_read_calibration(NULL, 0, "name", found));
  REFUSED(nv_imaging_read_calibration("{}", 2, NULL, found));
  REFUSED(nv_imaging_read_calibration("{}", 2, "name", NULL));
  REFUSED(nv_imaging_read_colour_calibration(NULL, 0, "name", found));
  REFUSED(nv_imaging_read_colour_calibration("{}", 2, NULL, found));
  REFUSED(nv_imaging_read_colour_calibration("{}", 2, "name", NULL));
  REFUSED(nv_imaging_calibration_text(NULL, &text, &length));
  REFUSED(nv_imaging_calibration_values(NULL, NULL, NULL, NULL, NULL, NULL));
  REFUSED(nv_imaging_calibration_residuals(NULL, residuals, NULL));
  REFUSED(nv_imaging_subtract_dark(NULL, &good_frame, room));
}

void check_refusals(nv_polarization_processor* processor) {
  refuse_frames(processor);
  refuse_formats();
  refuse_colours();
  refuse_scenes();
  refuse_calibrations();
}
