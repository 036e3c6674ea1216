/* For the C program that tests imaging's C interface: ends with the number of the line that failed. */
#ifndef NEROVA_TESTS_C_INTERFACE_CHECK_H
#define NEROVA_TESTS_C_INTERFACE_CHECK_H

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "nerova_zel/imaging.h"

#define CHECK(condition)                                                                    \
  do {                                                                                      \
    if (!(condition)) {                                                                     \
      fprintf(stderr, "line %d: %s (%s)\n", __LINE__, #condition, nv_imaging_error_text()); \
      exit(1);                                                                              \
    }                                                                                       \
  } while (0)

/** Each argument that is not allowed, alone among allowed ones. */
void check_refusals(nv_polarization_processor* processor);

#endif
