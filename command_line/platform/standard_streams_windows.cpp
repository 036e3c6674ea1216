#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <algorithm>
#include <cerrno>
#include <initializer_list>

#include "standard_streams.h"

namespace nerova_zel {

namespace {

HANDLE handle_of(std::FILE* stream) { return reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream))); }

bool is_console(HANDLE handle) {
  DWORD mode = 0;
  return GetConsoleMode(handle, &mode) != FALSE;
}

/** The text in UTF-16; "?" for what is not UTF-8. */
std::wstring wide(const std::string& text) {
  const int count = static_cast<int>(text.size());
  std::wstring result(text.size(), L'\0');  // never longer
  result.resize(static_cast<std::size_t>(
      MultiByteToWideChar(CP_UTF8, 0, text.data(), count, result.data(), static_cast<int>(result.size()))));
  return result;
}

}  // namespace

void guard_standard_streams() {
  constexpr int standard_input = 0;
  for (const int descriptor : {0, 1, 2}) {
    if (_get_osfhandle(descriptor) < 0) {
      // The lowest free descriptor, which is this one. Opened the wrong way round: using it fails as if it were closed.
      _wopen(L"NUL", descriptor == standard_input ? _O_WRONLY : _O_RDONLY);
    }
    _setmode(descriptor, _O_BINARY);
  }
}

bool is_terminal(std::FILE* stream) {
  const HANDLE handle = handle_of(stream);
  DWORD mode = 0;
  // Before Windows 10 a console does not know how to erase a line.
  return GetConsoleMode(handle, &mode) != FALSE &&
         SetConsoleMode(handle, mode | ENABLE_PROCESSED_OUTPUT | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != FALSE;
}

std::size_t terminal_width(std::FILE* stream) {
  CONSOLE_SCREEN_BUFFER_INFO about{};
  const bool known = GetConsoleScreenBufferInfo(handle_of(stream), &about) != FALSE;
  return known && about.srWindow.Right >= about.srWindow.Left
             ? static_cast<std::size_t>(about.srWindow.Right - about.srWindow.Left + 1)
             : 0;
}

bool write_text(std::FILE* stream, const std::string& text) {
  const HANDLE handle = handle_of(stream);
  if (!is_console(handle)) {
    return std::fwrite(text.data(), 1, text.size(), stream) == text.size() && std::fflush(stream) == 0;
  }
  const std::wstring letters = wide(text);
  for (std::size_t at = 0; at < letters.size();) {
    constexpr std::size_t most = 8192;  // consoles refuse very long texts
    DWORD written = 0;
    const auto count = static_cast<DWORD>(std::min(most, letters.size() - at));
    if (WriteConsoleW(handle, letters.data() + at, count, &written, nullptr) == FALSE || written == 0) {
      errno = EIO;
      return false;
    }
    at += written;
  }
  return true;
}

}  // namespace nerova_zel
