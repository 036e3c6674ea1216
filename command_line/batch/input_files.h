#pragma once

#include <string>
#include <vector>

namespace nerova_zel {

/**
 * The files that an argument stands for: a folder for those of its files that end like frames, or like headerless ones
 * (.raw, .bin), by name; a pattern with * and ? in the last part of the path, unless a file has that very name, for the
 * files that fit, by name; anything else for itself, whether it exists or not. Throws Failure if there are none.
 */
std::vector<std::string> expand_argument(const std::string& argument, bool headerless);

}  // namespace nerova_zel
