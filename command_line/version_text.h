#pragma once

#include <string>

namespace nerova_zel {

/**
 * Lines about this program, the library at that path (if empty, the one that it finds), the processor and the route
 * that frames take on it.
 */
std::string version_text(const std::string& path);

}  // namespace nerova_zel
