#pragma once

#include <optional>
#include <string>

#include "reference/reference_model.h"

namespace nerova_zel::test {

/** "sse2", "sse41" or "per-pixel". */
std::optional<Route> route_by_name(const std::string& name);

/**
 * Why this processor would not take the route, or nothing. The built-in routes also need the library to stand alone,
 * the per-pixel route to have its vector plugins beside it; the results tell.
 */
std::optional<std::string> why_route_is_not_taken(Route route);

}  // namespace nerova_zel::test
