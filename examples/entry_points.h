/* The functions of the library as the examples call them, however they were found. */
#ifndef ENTRY_POINTS_H
#define ENTRY_POINTS_H

#include <stdint.h>

#if defined(_WIN32)
#define LIBRARY_CALL __cdecl
#else
#define LIBRARY_CALL
#endif

/* The processor handle is opaque; a program that knows only the names calls it a void*. */
struct entry_points {
  int32_t(LIBRARY_CALL* module_initialize)(void);
  int32_t(LIBRARY_CALL* module_terminate)(void);
  int32_t(LIBRARY_CALL* create)(void** processor);
  int32_t(LIBRARY_CALL* destroy)(void* processor);
  int32_t(LIBRARY_CALL* set_coefficients)(void* processor, const float*, const float*, const float*, const float*);
  int32_t(LIBRARY_CALL* get_coefficients)(void* processor, float*, float*, float*, float*);
  int32_t(LIBRARY_CALL* transform)(void* processor, int32_t phase, const uint16_t* input, int32_t origin_x,
                                   int32_t origin_y, int32_t width, int32_t height, int32_t bit_depth,
                                   uint16_t output_maximum, float* normalized_stokes, uint16_t* total_power,
                                   uint16_t* horizontal_vertical, uint16_t* diagonal, uint16_t* azimuth,
                                   uint16_t* degree_of_linear_polarization);
};

/* Fills in all seven; returns 0, or 1 after saying on stderr what is missing. */
int find_entry_points(struct entry_points* entries);

#endif
