#pragma once

#include <string>

namespace nerova_zel {

/** What printf would print. */
#if defined(__GNUC__)
__attribute__((format(gnu_printf, 1, 2)))
#endif
std::string
formatted(const char* format, ...);

}  // namespace nerova_zel
