#pragma once

#include <optional>
#include <string>

namespace nerova_zel::logger {

/** Why the pattern cannot be used, or nothing. Throws std::bad_alloc. */
std::optional<std::string> fault_of_pattern(const std::string& pattern);

}  // namespace nerova_zel::logger
