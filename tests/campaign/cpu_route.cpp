#include "campaign/cpu_route.h"

#include <cpuid.h>

namespace nerova_zel::test {

namespace {

struct Registers {
  unsigned eax = 0, ebx = 0, ecx = 0, edx = 0;
};

/** Zeros where the processor does not know the leaf. */
Registers cpuid(unsigned leaf) {
  Registers r;
  __get_cpuid_count(leaf, 0, &r.eax, &r.ebx, &r.ecx, &r.edx);
  return r;
}

bool has_bit(unsigned value, unsigned bit) { return ((value >> bit) & 1U) != 0; }

}  // namespace

std::optional<Route> route_by_name(const std::string& name) {
  if (name == "sse2") {
    return Route::Sse2;
  }
  if (name == "sse41") {
    return Route::Sse41;
  }
  if (name == "per-pixel") {
    return Route::PerPixel;
  }
  return std::nullopt;
}

std::optional<std::string> why_route_is_not_taken(Route route) {
  const Registers features = cpuid(1);
  const bool sse2 = has_bit(features.edx, 26);
  const bool sse41 = sse2 && has_bit(features.ecx, 19);
  const bool avx2 = has_bit(features.ecx, 12) && has_bit(cpuid(7).ebx, 5);  // together with FMA
  if (!sse2) {
    return "the processor has no SSE2";
  }
  if (route == Route::Sse2 && sse41) {
    return "the processor has SSE4.1";
  }
  if (route == Route::Sse41 && !sse41) {
    return "the processor has no SSE4.1";
  }
  if (route == Route::PerPixel && !avx2) {
    return "the processor has no AVX2 with FMA";
  }
  return std::nullopt;
}

}  // namespace nerova_zel::test
