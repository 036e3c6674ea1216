#include "formatted.h"

#include <cstdarg>
#include <cstdio>

namespace nerova_zel {

std::string formatted(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  const int length = std::vsnprintf(nullptr, 0, format, arguments);
  va_end(arguments);
  std::string text(length > 0 ? static_cast<std::size_t>(length) + 1 : 1, '\0');
  va_start(arguments, format);
  std::vsnprintf(text.data(), text.size(), format, arguments);
  va_end(arguments);
  text.pop_back();
  return text;
}

}  // namespace nerova_zel
