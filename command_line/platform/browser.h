#pragma once

#include <string>

namespace nerova_zel {

/** Opens an address by the program that the desktop has for it, without waiting. False where there is none. */
bool open_in_browser(const std::string& address);

}  // namespace nerova_zel
