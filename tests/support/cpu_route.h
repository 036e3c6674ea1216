#pragma once

#include <optional>
#include <string>

namespace nerova_zel::test {

/** What computes a frame; the processor decides. */
enum class CpuRoute { Sse2, Sse41, Avx2, Avx512 };

/** "sse2", "sse41", "avx2" or "avx512". */
std::optional<CpuRoute> route_by_name(const std::string& name);

/** Why this processor cannot run the code of the route, or nothing. */
std::optional<std::string> why_route_cannot_run(CpuRoute route);

/**
 * Why this processor would not take the route, or nothing. The built-in routes also need the library to stand alone,
 * the others to have its vector plugins beside it; the results tell. A stand-in for the AVX-512 plugin leads to the
 * other routes.
 */
std::optional<std::string> why_route_is_not_taken(CpuRoute route, bool stand_in);

/**
 * 0: neither plugin runs on this processor, 1: the AVX2 plugin does, 2: both. NEROVA_CPU_LEVEL in the environment
 * states it for an emulated one.
 */
int cpu_level();

inline bool plugin_serves() { return cpu_level() > 0; }

/** Exit code of a test program whose route did not run; the tests count it as skipped. */
constexpr int exit_route_not_run = 77;

/**
 * Reports that a route did not run, in the line that scripts/count-tests repeats. False if that is a failure, because
 * NEROVA_REQUIRE_EVERY_ROUTE=1 is in the environment.
 */
bool may_skip_route(const std::string& route, const std::string& reason);

}  // namespace nerova_zel::test
