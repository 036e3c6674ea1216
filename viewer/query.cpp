#include "query.h"

#include <algorithm>
#include <charconv>

namespace nerova_zel {

namespace {

/** The byte of "%2C", which browsers may write for a comma. */
char unescaped(const std::string& text, std::size_t at) {
  unsigned value = 0;
  const char* const first = text.data() + at + 1;
  const char* const last = text.data() + std::min(text.size(), at + 3);
  const auto [end, error] = std::from_chars(first, last, value, 16);
  if (error != std::errc() || end != first + 2 || value < 0x20 || value > 0x7E) {
    throw BadRequest("The address holds an escape that stands for nothing.");
  }
  return static_cast<char>(value);
}

std::string plain(const std::string& text) {
  std::string result;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] != '%') {
      result += text[at];
      continue;
    }
    result += unescaped(text, at);
    at += 2;
  }
  return result;
}

std::vector<std::string> split(const std::string& text, char separator) {
  std::vector<std::string> parts;
  for (std::size_t at = 0; at <= text.size();) {
    const std::size_t end = std::min(text.find(separator, at), text.size());
    parts.push_back(text.substr(at, end - at));
    at = end + 1;
  }
  return parts;
}

}  // namespace

Query::Query(const std::string& text, const std::vector<const char*>& names) {
  if (text.empty()) {
    return;
  }
  for (const std::string& part : split(text, '&')) {
    const std::size_t equals = part.find('=');
    const std::string name = part.substr(0, equals);
    if (equals == std::string::npos || std::find(names.begin(), names.end(), name) == names.end()) {
      throw BadRequest("The address holds a name that is not known.");
    }
    if (!values_.emplace(name, plain(part.substr(equals + 1))).second) {
      throw BadRequest("The address says " + name + " twice.");
    }
  }
}

std::optional<std::string> Query::text(const std::string& name) const {
  const auto found = values_.find(name);
  return found == values_.end() ? std::nullopt : std::optional(found->second);
}

std::vector<std::string> Query::list(const std::string& name) const { return split(text(name).value_or(""), ','); }

std::optional<std::vector<std::int64_t>> Query::numbers(const std::string& name, std::size_t count, std::int64_t least,
                                                        std::int64_t greatest) const {
  if (values_.count(name) == 0) {
    return std::nullopt;
  }
  std::vector<std::int64_t> numbers;
  for (const std::string& part : list(name)) {
    std::int64_t value = 0;
    const auto [end, error] = std::from_chars(part.data(), part.data() + part.size(), value);
    if (error != std::errc() || end != part.data() + part.size() || value < least || value > greatest) {
      throw BadRequest(name + " takes whole numbers from " + std::to_string(least) + " to " + std::to_string(greatest) +
                       ".");
    }
    numbers.push_back(value);
  }
  if (numbers.size() != count) {
    throw BadRequest(name + " takes " + std::to_string(count) + (count == 1 ? " number." : " numbers."));
  }
  return numbers;
}

std::optional<std::int64_t> Query::number(const std::string& name, std::int64_t least, std::int64_t greatest) const {
  const auto found = numbers(name, 1, least, greatest);
  return found ? std::optional(found->front()) : std::nullopt;
}

}  // namespace nerova_zel
