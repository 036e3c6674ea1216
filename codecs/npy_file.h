#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "image.h"

namespace nerova_zel {

// NumPy's format for one array: numpy.lib.format, versions 1.0 to 3.0.

/** Whether a file begins as .npy files do. */
bool is_npy(const Bytes& bytes);

/** What stands before the elements of an array: version 1.0, low byte first, C order. The elements follow as they are.
 */
std::string npy_header(Element element, const std::vector<std::size_t>& shape);

/** The head of an array in a file. */
struct NpyArray {
  Element element = Element::uint8;
  bool high_byte_first = false;
  std::vector<std::size_t> shape;  ///< row-major: the last index is the fastest; empty for a single number
  std::size_t at = 0;              ///< of the first element in the file
  std::size_t count = 1;           ///< elements, all of them present
};

/** So many bytes of a file hold the head of any array of images. */
constexpr std::size_t npy_head_room = std::size_t{1} << 17U;

/**
 * Reads the head of an array of 8- or 16-bit unsigned integers or 32-bit floats from a file's first bytes, `size` being
 * the length of the whole file. `name` stands for the file in errors. Throws CodecError, also for other elements, for
 * Fortran order, and where elements are missing.
 */
NpyArray parse_npy(const Bytes& head, std::uint64_t size, const std::string& name);

/** The same of a file that is in memory. */
inline NpyArray parse_npy(const Bytes& bytes, const std::string& name) { return parse_npy(bytes, bytes.size(), name); }

/** All of its elements, in the byte order of the machine. */
std::vector<float> npy_floats(const Bytes& bytes, const NpyArray& array);

/** So many integers of the array, which begin at `elements`, into `pixels`, which has room for them. */
void npy_pixels(const unsigned char* elements, const NpyArray& array, std::size_t count, std::uint16_t* pixels);

}  // namespace nerova_zel
