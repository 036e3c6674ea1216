#pragma once

#include <string>
#include <vector>

namespace nerova_zel {

/**
 * What stands before the elements of an array in a .npy file, version 1.0 (numpy.lib.format): low byte first, C order.
 * `type` is NumPy's name of the element: "<u2" for 16-bit unsigned, "<f4" for 32-bit float. Two to five dimensions.
 */
std::string npy_header(const std::string& type, const std::vector<int>& shape);

}  // namespace nerova_zel
