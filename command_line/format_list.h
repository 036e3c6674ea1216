#pragma once

#include <string>

namespace nerova_zel {

/** Lines about the pixel formats that are read and the outputs that can be written. */
std::string format_list();

}  // namespace nerova_zel
