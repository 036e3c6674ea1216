#include "processor/route.h"

#include "cpu_features.h"

namespace nerova_zel {

namespace {

std::string built_in_level() { return cpu_has_sse41() ? "SSE4.1" : "SSE2"; }

}  // namespace

std::string processor_level() {
  switch (measure_cpu_level()) {
    case CpuLevel::Avx512:
      return "AVX-512 (F, DQ, BW)";
    case CpuLevel::Avx2:
      return "AVX2 with FMA";
    default:
      return built_in_level();
  }
}

// The library does not say what computes. That a plugin does shows in its results, and the level decides which.
std::string route_of(Library& library) {
  if (!library.calibrates_every_pixel()) {
    return "built-in kernels, " + built_in_level() +
           "; no vector plugin serves this computer, and a calibration reaches the last columns and rows only";
  }
  return std::string(measure_cpu_level() == CpuLevel::Avx512 ? "AVX-512" : "AVX2") +
         " plugin; a calibration reaches every pixel";
}

}  // namespace nerova_zel
