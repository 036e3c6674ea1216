#include <clocale>
#include <cstdio>

#include "platform/formatter.h"

namespace nerova_zel {

Formatter::Formatter() noexcept : locale_(_create_locale(LC_ALL, "C")) {}

Formatter::~Formatter() {
  if (locale_ != nullptr) {
    _free_locale(static_cast<_locale_t>(locale_));
  }
}

// Not the compiler's own formatter, which asks for the program's locale. Without a locale this one does so too.
bool Formatter::write(char* text, std::size_t size, const char* format, std::va_list arguments) const noexcept {
  const int length = _vsnprintf_l(text, size, format, static_cast<_locale_t>(locale_), arguments);
  // A text that fills it has no terminating zero. A failure, which is negative, becomes too long.
  return static_cast<std::size_t>(length) < size;
}

}  // namespace nerova_zel
