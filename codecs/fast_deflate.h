#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "image.h"

namespace nerova_zel {

/**
 * Writes a zlib stream (RFC 1950, RFC 1951) that any inflater reads, several times faster than zlib's lowest level: a
 * Huffman code for each block and runs of zero bytes, but no search for repetitions. Made for differences of
 * neighbouring samples, in which there is little else to find. The same blocks give the same bytes.
 */
class FastDeflate {
 public:
  /** Appends the stream to `out`, which must outlive it. */
  explicit FastDeflate(Bytes& out);

  /** One block with a code of its own; 64 to 256 KiB are good. An empty one is ignored. */
  void add(const unsigned char* data, std::size_t size);

  /** Must be called once, at the end. */
  void finish();

 private:
  void put(std::uint64_t bits, unsigned count);
  void align();
  void add_stored(const unsigned char* data, std::size_t size);

  Bytes& out_;
  std::uint64_t pending_ = 0;  ///< bits not yet written, first bit lowest
  unsigned pending_count_ = 0;
  unsigned long checksum_ = 1;
};

}  // namespace nerova_zel
