#pragma once

#include <optional>
#include <string>

#include "reference/reference_model.h"

namespace nerova_zel::test {

/** What computes a frame; the processor decides. */
enum class CpuRoute { Sse2, Sse41, Avx2, Avx512 };

/** "sse2", "sse41", "avx2" or "avx512". */
std::optional<CpuRoute> route_by_name(const std::string& name);

/** The rules that the route follows. */
Route rules_of(CpuRoute route);

/**
 * Why this processor would not take the route, or nothing. The built-in routes also need the library to stand alone,
 * the others to have its vector plugins beside it; the results tell.
 */
std::optional<std::string> why_route_is_not_taken(CpuRoute route);

}  // namespace nerova_zel::test
