#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "image.h"

namespace nerova_zel {

// What cannot be read is a CodecError that names it; `meant` says what should be there instead of a directory.

/** A whole file. */
Bytes read_file(const std::string& path, const std::string& meant);

/** So many bytes of a file from `offset` on, or fewer where it ends, into `bytes`. */
void read_part_of_file(const std::string& path, const std::string& meant, std::uint64_t offset, std::size_t count,
                       Bytes& bytes);

/** So many bytes of standard input, or fewer where it ends, into `bytes`; none after an interruption. */
void read_standard_input(std::size_t count, Bytes& bytes);

}  // namespace nerova_zel
