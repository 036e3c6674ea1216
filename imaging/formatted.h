#pragma once

#include <string>

namespace nerova_zel {

/** What printf would print. */
#if defined(__MINGW32__)
[[gnu::format(gnu_printf, 1, 2)]] std::string formatted(const char* format, ...);
#else
[[gnu::format(printf, 1, 2)]] std::string formatted(const char* format, ...);
#endif

}  // namespace nerova_zel
