#include "samples.h"

#include <algorithm>

#include "codec_error.h"
#include "image.h"

namespace nerova_zel {

DeclaredDepth declared_depth(const PageFacts& facts) {
  const int all = facts.stored_bits;
  if (facts.greatest && *facts.greatest < (1 << static_cast<unsigned>(all)) - 1) {
    int bits = 1;
    while ((1 << bits) - 1 < *facts.greatest) {
      ++bits;
    }
    return {bits, true, false};
  }
  for (const TextEntry& entry : facts.texts) {
    const std::string& text = entry.text;
    const bool is_number = !text.empty() && text.size() <= 2 && text.find_first_not_of("0123456789") == text.npos;
    if (entry.key == bit_depth_key && is_number && std::stoi(text) >= 1 && std::stoi(text) <= all) {
      return {std::stoi(text), true, false};
    }
  }
  if (facts.significant_bits) {
    return {*facts.significant_bits, true, *facts.significant_bits < all};
  }
  return {all, all != 8 && all != 16, false};
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
