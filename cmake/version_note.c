/* The version of a shared library, in its file, so that nothing has to be called to know it: readelf -n shows it. */
#include <stdint.h>

static const struct {
  uint32_t name_size;
  uint32_t text_size;
  uint32_t type;
  char name[12]; /* each filled up to a multiple of 4 bytes */
  char text[(sizeof(NEROVA_VERSION) + 3) / 4 * 4];
} version __attribute__((section(".note.nerova_zel"), used, aligned(4))) = {sizeof("NerovaZel"), sizeof(NEROVA_VERSION),
                                                                            1, "NerovaZel", NEROVA_VERSION};
