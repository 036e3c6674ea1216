#include "processor/route.h"

#include <algorithm>
#include <vector>

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

bool calibrates_every_pixel(Processor& processor) {
  constexpr std::int32_t width = 16;
  constexpr std::int32_t height = 4;
  const std::vector<std::uint16_t> pixels(std::size_t{width} * height, 1000);
  std::vector<std::uint16_t> power(pixels.size());
  Frame frame;
  frame.pixels = pixels;
  frame.width = width;
  frame.height = height;
  Outputs outputs;
  outputs.total_power = power;
  Calibration trial{};
  for (CalibrationMatrix& matrix : trial) {
    std::fill_n(matrix.begin(), 4, 10.0F);  // ten times the default weights of the power
  }
  const Calibration kept = processor.calibration();
  processor.set_calibration(trial);
  processor.transform(frame, outputs);
  processor.set_calibration(kept);
  // 2000 by the default calibration and 20000 by this one; no later pixel is farther from the last column and row.
  return power.front() > 10000;
}

const char* route_name(Processor& processor) {
  if (calibrates_every_pixel(processor)) {
    return measure_cpu_level() == CpuLevel::Avx512 ? "avx512" : "avx2";
  }
  return cpu_has_sse41() ? "built-in SSE4.1" : "built-in SSE2";
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
