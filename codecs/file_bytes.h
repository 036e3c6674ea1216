#pragma once

#include <cstdint>
#include <string>

#include "image.h"

namespace nerova_zel {

/** A whole file. Throws CodecError. */
Bytes read_bytes(const std::string& path);

/** So many bytes from `offset` on, or fewer where the file ends, into `bytes`, whose memory is used again. Throws
 * CodecError. */
void read_bytes(const std::string& path, std::uint64_t offset, std::size_t count, Bytes& bytes);

/** The same into `room`; returns how many bytes. */
std::size_t read_bytes(const std::string& path, std::uint64_t offset, void* room, std::size_t count);

/** Length of a file. Throws CodecError. */
std::uint64_t file_length(const std::string& path);

}  // namespace nerova_zel
