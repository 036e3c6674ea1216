#pragma once

#include <string>
#include <vector>

namespace nerova_zel {

/** Everything that the file at `path` holds. Throws Failure, naming the file; `meant` says what should have been there.
 */
std::vector<unsigned char> read_file(const std::string& path, const std::string& meant);

}  // namespace nerova_zel
