#include "number_text.h"

#include <charconv>

namespace nerova_zel {

std::optional<double> parse_number(const std::string& text) {
  double value = 0.0;
  const char* const end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, value);
  return result.ec == std::errc() && result.ptr == end ? std::optional<double>(value) : std::nullopt;
}

}  // namespace nerova_zel
