#pragma once

#include <string>

namespace nerova_zel {

/** Lines about this program, the library that it finds, the processor and the route that frames take on it. */
std::string version_text();

}  // namespace nerova_zel
