#include <clocale>
#include <cstdio>

#include "platform/formatter.h"

namespace nerova_zel {

Formatter::Formatter() noexcept : locale_(newlocale(LC_ALL_MASK, "C", nullptr)) {}

Formatter::~Formatter() {
  if (locale_ != nullptr) {
    freelocale(static_cast<locale_t>(locale_));
  }
}

bool Formatter::write(char* text, std::size_t size, const char* format, std::va_list arguments) const noexcept {
  const locale_t before = uselocale(static_cast<locale_t>(locale_));  // of this thread; without a locale no change
  const int length = std::vsnprintf(text, size, format, arguments);
  uselocale(before);
  return static_cast<std::size_t>(length) < size;  // a failure, which is negative, becomes too long
}

}  // namespace nerova_zel
