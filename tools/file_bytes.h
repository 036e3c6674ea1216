#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace nerova_zel {

using Bytes = std::vector<unsigned char>;

/** A whole file. Throws Failure, naming the file; `meant` says what should have been there. */
Bytes read_bytes(const std::string& path, const std::string& meant);

/** So many bytes of the file of a frame from `offset` on, or fewer where it ends, into `bytes`. Throws Failure. */
void read_bytes(const std::string& path, std::uint64_t offset, std::size_t count, Bytes& bytes);

/** So many bytes of standard input, or fewer where it ends, into `bytes`. Throws Failure. */
void read_standard_input(std::size_t count, Bytes& bytes);

}  // namespace nerova_zel
