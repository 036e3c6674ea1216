/* The entry points of a library that is loaded at run time: no header of it, no import library, only its names. */
#include "entry_points.h"

#include <stdio.h>
#include <string.h>

#if defined(_WIN32)

#include <windows.h>

static void* load(void) { return (void*)LoadLibraryA("nerova_zel_polarization_processor.dll"); }

static void find(void* library, const char* name, void* function_pointer) {
  const FARPROC function = GetProcAddress((HMODULE)library, name);
  memcpy(function_pointer, &function, sizeof(function));
}

#else

#include <dlfcn.h>

static void* load(void) { return dlopen("libnerova_zel_polarization_processor.so", RTLD_NOW | RTLD_LOCAL); }

static void find(void* library, const char* name, void* function_pointer) {
  void* const function = dlsym(library, name);
  memcpy(function_pointer, &function, sizeof(function));
}

#endif

int find_entry_points(struct entry_points* entries) {
  void* const library = load();
  if (library == NULL) {
    fprintf(stderr, "the polarization processor library cannot be loaded\n");
    return 1;
  }
  memset(entries, 0, sizeof(*entries));
  find(library, "nv_polarization_processor_module_initialize", &entries->module_initialize);
  find(library, "nv_polarization_processor_module_terminate", &entries->module_terminate);
  find(library, "nv_polarization_processor_create_polarization_processor", &entries->create);
  find(library, "nv_polarization_processor_destroy_polarization_processor", &entries->destroy);
  find(library, "nv_polarization_processor_set_custom_calibration_coefficients", &entries->set_coefficients);
  find(library, "nv_polarization_processor_get_custom_calibration_coefficients", &entries->get_coefficients);
  find(library, "nv_polarization_processor_transform", &entries->transform);
  if (!entries->module_initialize || !entries->module_terminate || !entries->create || !entries->destroy ||
      !entries->set_coefficients || !entries->get_coefficients || !entries->transform) {
    fprintf(stderr, "the polarization processor library lacks a function\n");
    return 1;
  }
  return 0;
}
