#include "support/cpu_route.h"

#include <cpuid.h>

#include <cstdlib>
#include <iostream>
#include <map>

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

bool has_sse41() { return ((cpuid(1).ecx >> 19U) & 1U) != 0; }

}  // namespace

std::optional<CpuRoute> route_by_name(const std::string& name) {
  static const std::map<std::string, CpuRoute> routes = {
      {"sse2", CpuRoute::Sse2}, {"sse41", CpuRoute::Sse41}, {"avx2", CpuRoute::Avx2}, {"avx512", CpuRoute::Avx512}};
  const auto found = routes.find(name);
  return found == routes.end() ? std::nullopt : std::optional(found->second);
}

std::optional<std::string> why_route_cannot_run(CpuRoute route) {
  // The compiler's own test asks the operating system too.
  const bool avx2 = __builtin_cpu_supports("avx2") != 0 && __builtin_cpu_supports("fma") != 0;
  const bool avx512 = __builtin_cpu_supports("avx512f") != 0 && __builtin_cpu_supports("avx512dq") != 0 &&
                      __builtin_cpu_supports("avx512bw") != 0;
  if (route == CpuRoute::Sse41 && !has_sse41()) {
    return "the processor has no SSE4.1";
  }
  if (route == CpuRoute::Avx2 && !avx2) {
    return "the processor has no AVX2 with FMA";
  }
  if (route == CpuRoute::Avx512 && !avx512) {
    return "the processor has no AVX-512 F, DQ and BW";
  }
  return std::nullopt;
}

std::optional<std::string> why_route_is_not_taken(CpuRoute route, bool stand_in) {
  if (auto reason = why_route_cannot_run(route)) {
    return reason;
  }
  const bool takes_avx512 = !why_route_cannot_run(CpuRoute::Avx512);
  if (route == CpuRoute::Sse2 && has_sse41() && !(stand_in && takes_avx512)) {
    return "the processor has SSE4.1";
  }
  if (route == CpuRoute::Avx2 && takes_avx512 && !stand_in) {
    return "the processor has AVX-512";
  }
  return std::nullopt;
}

int cpu_level() {
  if (const char* const stated = std::getenv("NEROVA_CPU_LEVEL")) {
    return std::atoi(stated);
  }
  return !why_route_cannot_run(CpuRoute::Avx512) ? 2 : !why_route_cannot_run(CpuRoute::Avx2) ? 1 : 0;
}

bool may_skip_route(const std::string& route, const std::string& reason) {
  std::cout << "Route not run: " << route << " (" << reason << ")" << std::endl;
  const char* const required = std::getenv("NEROVA_REQUIRE_EVERY_ROUTE");
  return required == nullptr || std::string(required) != "1";
}

}  // namespace nerova_zel::test
