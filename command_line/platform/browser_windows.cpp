#include <windows.h>
// After what it needs.
#include <shellapi.h>

#include "platform/browser.h"

namespace nerova_zel {

bool open_in_browser(const std::string& address) {
  // Addresses are plain ASCII.
  constexpr std::intptr_t most_that_are_errors = 32;
  const HINSTANCE answer = ShellExecuteA(nullptr, "open", address.c_str(), nullptr, nullptr, SW_SHOWNORMAL);
  return reinterpret_cast<std::intptr_t>(answer) > most_that_are_errors;
}

}  // namespace nerova_zel
