#pragma once

#include <string>

namespace nerova_zel {

/** Prints what the user asked for to standard output, at once. Throws Failure where that cannot be written. */
void print_result(const std::string& text);

}  // namespace nerova_zel
