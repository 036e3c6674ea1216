#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "image.h"

namespace nerova_zel {

// What files say that this program writes.

/** "nerova-polarize 0.1.0". */
std::string software_text();

/** The texts that every output begins with: what made it, its name, and what its values mean. A frame has no name. */
std::vector<TextEntry> output_texts(const std::string& name, const std::string& description);

/** The name of the output that a file says it is, of any version of this program; empty for everything else. */
std::string output_in_file(const std::filesystem::path& path);

}  // namespace nerova_zel
