#include "samples.h"

#include <algorithm>

#include "codec_error.h"
#include "image.h"

namespace nerova_zel {

int declared_bit_depth(const PageFacts& facts) {
  if (!facts.greatest) {
    return facts.stored_bits;
  }
  int bits = 1;
  while (bits < 16 && (1 << bits) - 1 < *facts.greatest) {
    ++bits;
  }
  return bits;
}

std::size_t checked_pixel_count(const std::string& name, std::uint64_t width, std::uint64_t height,
                                std::uint64_t limit) {
  const std::string size = std::to_string(width) + " x " + std::to_string(height) + " pixels";
  if (width < 1 || height < 1) {
    throw CodecError(CodecError::Reason::damaged, name + " is damaged: it says that it has " + size);
  }
  if (width > limit || height > limit / width) {
    throw CodecError(CodecError::Reason::too_large,
                     name + " has " + size + ", and at most " + std::to_string(limit) + " are read");
  }
  return static_cast<std::size_t>(width * height);
}

void widen(const unsigned char* samples, std::size_t count, std::uint16_t* pixels) {
  std::copy(samples, samples + count, pixels);
}

void join_bytes(const unsigned char* samples, std::size_t count, bool high_byte_first, std::uint16_t* pixels) {
  const std::size_t high = high_byte_first ? 0 : 1;
  const std::size_t low = 1 - high;
  for (std::size_t i = 0; i < count; ++i) {
    pixels[i] = static_cast<std::uint16_t>(samples[2 * i + high] << 8U | samples[2 * i + low]);
  }
}

void unpack_bits(const unsigned char* packed, std::size_t count, unsigned bits, std::uint16_t* pixels) {
  std::uint32_t pending = 0;
  unsigned pending_count = 0;
  for (std::size_t i = 0; i < count; ++i) {
    while (pending_count < bits) {
      pending = pending << 8U | *packed++;
      pending_count += 8;
    }
    pending_count -= bits;
    pixels[i] = static_cast<std::uint16_t>(pending >> pending_count & ((1U << bits) - 1U));
  }
}

}  // namespace nerova_zel
