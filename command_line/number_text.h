#pragma once

#include <optional>
#include <string>

namespace nerova_zel {

/** The number that the whole text makes up, with a point whatever the locale. */
std::optional<double> parse_number(const std::string& text);

}  // namespace nerova_zel
