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

/**
 * Reads the head of an array of 8- or 16-bit unsigned integers or 32-bit floats. `name` stands for the file in errors.
 * Throws CodecError, also for other elements, for Fortran order, and where elements are missing.
 */
NpyArray parse_npy(const Bytes& bytes, const std::string& name);

/** All of its elements, in the byte order of the machine. */
std::vector<float> npy_floats(const Bytes& bytes, const NpyArray& array);

/** Integers, one page of a stack of images (of a single one: page 0): `pixels` has room for them. */
void npy_pixels(const Bytes& bytes, const NpyArray& array, std::size_t first, std::size_t count, std::uint16_t* pixels);

}  // namespace nerova_zel
