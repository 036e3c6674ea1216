#include "npy_header.h"

namespace nerova_zel {

std::string npy_header(const std::string& type, const std::vector<int>& shape) {
  constexpr std::size_t prefix_length = 10;
  constexpr std::size_t alignment = 64;  // of the first element
  std::string description = "{'descr': '" + type + "', 'fortran_order': False, 'shape': (";
  for (std::size_t i = 0; i < shape.size(); ++i) {
    description += (i == 0 ? "" : ", ") + std::to_string(shape[i]);
  }
  description += "), }";
  const std::size_t unpadded = prefix_length + description.size() + 1;
  description.append((alignment - unpadded % alignment) % alignment, ' ');
  description += '\n';
  std::string header("\x93NUMPY\x01\x00", 8);
  header += static_cast<char>(description.size() & 0xFFU);
  header += static_cast<char>(description.size() >> 8U);
  return header + description;
}

}  // namespace nerova_zel
