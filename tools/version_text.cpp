#include "version_text.h"

#include "cpu_features.h"
#include "failure.h"
#include "library.h"

namespace nerova_zel {

namespace {

std::string processor_level(CpuLevel level) {
  switch (level) {
    case CpuLevel::Avx512:
      return "AVX-512 (F, DQ, BW)";
    case CpuLevel::Avx2:
      return "AVX2 with FMA";
    default:
      return cpu_has_sse41() ? "SSE4.1" : "SSE2";
  }
}

/** The library does not say what computes. That a plugin does shows in its results, and the level decides which. */
std::string route_of(Library& library, CpuLevel level) {
  if (!library.calibrates_every_pixel()) {
    return std::string("built-in kernels, ") + (cpu_has_sse41() ? "SSE4.1" : "SSE2") +
           "; no vector plugin serves this computer, and a calibration reaches the last columns and rows only";
  }
  return std::string(level == CpuLevel::Avx512 ? "AVX-512" : "AVX2") + " plugin; a calibration reaches every pixel";
}

}  // namespace

std::string version_text() {
  const CpuLevel level = measure_cpu_level();
  std::string library_line;
  std::string route;
  try {
    Library library("");
    library_line = library.path() + " (it does not tell its version)";
    route = route_of(library, level);
  } catch (const Failure& failure) {
    library_line = std::string("none: ") + failure.what();
    route = "none without a library";
  }
  return "nerova-polarize " NEROVA_VERSION "\nlibrary    " + library_line + "\nprocessor  " + processor_level(level) +
         "\nroute      " + route;
}

}  // namespace nerova_zel
