#pragma once

#include <cstdio>
#include <string>

namespace nerova_zel {

/** Where everything goes that is not a result: the standard error stream. */
std::FILE* messages();

/** Tells the user what is good to know though nothing fails. */
void note(const std::string& sentence);

}  // namespace nerova_zel
