/* Loads the DLLs of a folder as a Python would, from a program that lies elsewhere, and finds every name in them.
 * Usage: load_exports FOLDER (+DLL NAME...)... The DLLs that others look for come first. Ends by saying the route. */
#include <stdio.h>
#include <string.h>
#include <windows.h>

typedef int(__cdecl* route_function)(const char** name);

int main(int argc, char** argv) {
  HMODULE module = NULL;
  route_function route = NULL;
  for (int i = 2; i < argc; ++i) {
    if (argv[i][0] == '+') {
      char path[MAX_PATH];
      snprintf(path, sizeof(path), "%s\\%s", argv[1], argv[i] + 1);
      module = LoadLibraryExA(path, NULL, LOAD_WITH_ALTERED_SEARCH_PATH);
      if (module == NULL) {
        fprintf(stderr, "%s: error %lu\n", path, GetLastError());
        return 1;
      }
      continue;
    }
    const FARPROC address = GetProcAddress(module, argv[i]);
    if (address == NULL) {
      fprintf(stderr, "there is no %s\n", argv[i]);
      return 1;
    }
    if (strcmp(argv[i], "nv_imaging_route") == 0) {
      memcpy(&route, &address, sizeof(route));
    }
  }
  const char* name = NULL;
  if (route == NULL || route(&name) != 0) {
    fprintf(stderr, "the route cannot be told\n");
    return 1;
  }
  printf("%d names, route %s\n", argc - 2, name);
  return 0;
}
