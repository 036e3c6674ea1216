/*
 * All six images of a headerless raw frame: 16-bit pixels, low byte first, row by row.
 *
 *   raw_frame FRAME WIDTH HEIGHT BIT_DEPTH PHASE OUT
 *
 * writes OUT_stokes.f32 (pairs S1/P, S2/P) and OUT_power.u16, OUT_hv.u16, OUT_diagonal.u16, OUT_azimuth.u16 and
 * OUT_dolp.u16 (full scale, 180 degrees and degree 1 are 65535). Built twice: with entry_points_loaded.c it finds the
 * library at run time by its names, with entry_points_linked.c it is linked with it.
 */
#include <stdio.h>
#include <stdlib.h>

#include "entry_points.h"

struct images {
  float* stokes;
  uint16_t* others[5];
};

static int read_frame(const char* path, uint16_t* frame, size_t pixels) {
  FILE* const file = fopen(path, "rb");
  size_t found = 0;
  int more = EOF;
  if (file == NULL) {
    fprintf(stderr, "%s cannot be opened\n", path);
    return 1;
  }
  found = fread(frame, sizeof(uint16_t), pixels, file);
  more = fgetc(file);
  fclose(file);
  if (found != pixels || more != EOF) {
    fprintf(stderr, "%s does not hold %lu pixels of 16 bits\n", path, (unsigned long)pixels);
    return 1;
  }
  return 0;
}

static int write_image(const char* out, const char* name, const void* image, size_t bytes) {
  char path[1024];
  FILE* file = NULL;
  int failed = 1;
  if (snprintf(path, sizeof(path), "%s_%s", out, name) < (int)sizeof(path)) {
    file = fopen(path, "wb");
  }
  if (file != NULL) {
    failed = fwrite(image, 1, bytes, file) != bytes;
    failed = fclose(file) != 0 || failed;
  }
  if (failed) {
    fprintf(stderr, "%s_%s cannot be written\n", out, name);
  }
  return failed;
}

static int32_t transform(const struct entry_points* library, const uint16_t* frame, int32_t width, int32_t height,
                         int32_t bit_depth, int32_t phase, const struct images* images) {
  void* processor = NULL;
  int32_t result = library->module_initialize();
  if (result == 0) {
    result = library->create(&processor);
  }
  if (result == 0) {
    result = library->transform(processor, phase, frame, 0, 0, width, height, bit_depth, 65535, images->stokes,
                                images->others[0], images->others[1], images->others[2], images->others[3],
                                images->others[4]);
    library->destroy(processor);
  }
  library->module_terminate();
  return result;
}

int main(int argc, char** argv) {
  static const char* const names[5] = {"power.u16", "hv.u16", "diagonal.u16", "azimuth.u16", "dolp.u16"};
  struct entry_points library;
  struct images images;
  uint16_t* frame = NULL;
  size_t pixels = 0;
  long width = 0;
  long height = 0;
  int32_t result = 0;
  int failed = 0;
  int i = 0;
  if (argc != 7) {
    fprintf(stderr, "usage: raw_frame FRAME WIDTH HEIGHT BIT_DEPTH PHASE OUT\n");
    return 2;
  }
  width = strtol(argv[2], NULL, 10);
  height = strtol(argv[3], NULL, 10);
  if (width < 2 || height < 2 || width > 65535 || height > 65535) {
    fprintf(stderr, "a frame has 2 to 65535 columns and rows, not %s x %s\n", argv[2], argv[3]);
    return 2;
  }
  pixels = (size_t)width * (size_t)height;
  if (pixels > SIZE_MAX / sizeof(float) / 2) {
    fprintf(stderr, "there is no memory for such a frame\n");
    return 1;
  }
  frame = malloc(pixels * sizeof(uint16_t));
  images.stokes = malloc(2 * pixels * sizeof(float));
  failed = frame == NULL || images.stokes == NULL;
  for (i = 0; i < 5; ++i) {
    images.others[i] = malloc(pixels * sizeof(uint16_t));
    failed = failed || images.others[i] == NULL;
  }
  if (failed) {
    fprintf(stderr, "there is no memory for such a frame\n");
    return 1;
  }
  if (read_frame(argv[1], frame, pixels) != 0 || find_entry_points(&library) != 0) {
    return 1;
  }
  result = transform(&library, frame, (int32_t)width, (int32_t)height, (int32_t)strtol(argv[4], NULL, 10),
                     (int32_t)strtol(argv[5], NULL, 10), &images);
  if (result != 0) {
    fprintf(stderr, "the library returns error %d\n", (int)result);
    return 1;
  }
  failed = write_image(argv[6], "stokes.f32", images.stokes, 2 * pixels * sizeof(float));
  for (i = 0; i < 5; ++i) {
    failed = write_image(argv[6], names[i], images.others[i], pixels * sizeof(uint16_t)) || failed;
    free(images.others[i]);
  }
  free(images.stokes);
  free(frame);
  return failed;
}
