#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace nerova_zel {

using Bytes = std::vector<unsigned char>;

/** A whole file. Throws Failure. */
Bytes read_bytes(const std::string& path);

/** So many bytes of a file from `offset` on, or fewer where it ends, into `bytes`. Throws Failure. */
void read_bytes(const std::string& path, std::uint64_t offset, std::size_t count, Bytes& bytes);

/** So many bytes of standard input, or fewer where it ends, into `bytes`. Throws Failure. */
void read_standard_input(std::size_t count, Bytes& bytes);

}  // namespace nerova_zel
