#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "image.h"

namespace nerova_zel {

/** A whole file. Throws CodecError. */
Bytes read_bytes(const std::string& path);

/** So many bytes from `offset` on, or fewer where the file ends, into `bytes`, whose memory is used again. Throws
 * CodecError. */
void read_bytes(const std::string& path, std::uint64_t offset, std::size_t count, Bytes& bytes);

/**
 * The same into `room`, in parts of an even number of bytes but for the last, which lie in the processor's cache when
 * `arrived` is called with where they are and how many; returns how many bytes in all.
 */
std::size_t read_bytes(const std::string& path, std::uint64_t offset, void* room, std::size_t count,
                       const std::function<void(const void*, std::size_t)>& arrived);

/** Length of a file. Throws CodecError. */
std::uint64_t file_length(const std::string& path);

}  // namespace nerova_zel
