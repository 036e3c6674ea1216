#pragma once

#include <cstdarg>
#include <cstddef>

namespace nerova_zel {

/** The platform's printf-style formatter in the C locale, whatever locale the program or the thread has chosen. */
class Formatter {
 public:
  /** Should memory run out here, the texts follow the program's locale. */
  Formatter() noexcept;
  ~Formatter();
  Formatter(const Formatter&) = delete;
  Formatter& operator=(const Formatter&) = delete;

  /**
   * Writes the text with its terminating zero. Takes no memory; may be called from any thread. Returns false when the
   * text does not fit or cannot be formatted.
   */
  [[gnu::format(printf, 4, 0)]] bool write(char* text, std::size_t size, const char* format,
                                           std::va_list arguments) const noexcept;

 private:
  void* locale_;
};

}  // namespace nerova_zel
