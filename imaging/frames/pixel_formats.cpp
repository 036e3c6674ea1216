#include "frames/pixel_formats.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "frames/packed_vectors.h"

namespace nerova_zel {

namespace {

struct Description {
  PixelFormat format;
  const char* name;
  int significant_bits;
  int storage_bits;
};

constexpr std::array<Description, 8> descriptions = {{{PixelFormat::mono8, "Mono8", 8, 8},
                                                      {PixelFormat::mono10, "Mono10", 10, 16},
                                                      {PixelFormat::mono12, "Mono12", 12, 16},
                                                      {PixelFormat::mono16, "Mono16", 16, 16},
                                                      {PixelFormat::mono10p, "Mono10p", 10, 10},
                                                      {PixelFormat::mono12p, "Mono12p", 12, 12},
                                                      {PixelFormat::mono10_packed, "Mono10Packed", 10, 12},
                                                      {PixelFormat::mono12_packed, "Mono12Packed", 12, 12}}};

const Description& describe(PixelFormat format) {
  return *std::find_if(descriptions.begin(), descriptions.end(),
                       [format](const Description& description) { return description.format == format; });
}

// Packed pixels are taken four at a time from one 64-bit word, lowest byte first as x86 has it. Each rule turns the
// lowest 4 * bits of it into four 16-bit numbers: first halves of two pixels go to 32 bits each, then every pixel
// to 16.

struct Rule10p {
  static constexpr std::size_t bytes = 5;
  static std::uint64_t spread(std::uint64_t word) {
    const std::uint64_t pairs = (word & 0xFFFFFU) | (word & 0xFFFFF00000U) << 12U;
    return (pairs & 0x000003FF000003FFU) | (pairs & 0x000FFC00000FFC00U) << 6U;
  }
};

std::uint64_t pairs_of_12(std::uint64_t word) { return (word & 0xFFFFFFU) | (word & 0xFFFFFF000000U) << 8U; }

struct Rule12p {
  static constexpr std::size_t bytes = 6;
  static std::uint64_t spread(std::uint64_t word) {
    const std::uint64_t pairs = pairs_of_12(word);
    return (pairs & 0x00000FFF00000FFFU) | (pairs & 0x00FFF00000FFF000U) << 4U;
  }
};

struct Rule12Packed {
  static constexpr std::size_t bytes = 6;
  static std::uint64_t spread(std::uint64_t word) {
    const std::uint64_t pairs = pairs_of_12(word);
    return (pairs & 0x00FF00FF00FF00FFU) << 4U | (pairs >> 8U & 0x0000000F0000000FU) |
           (pairs & 0x0000F0000000F000U) << 4U;
  }
};

struct Rule10Packed {
  static constexpr std::size_t bytes = 6;
  static std::uint64_t spread(std::uint64_t word) {
    const std::uint64_t pairs = pairs_of_12(word);
    return (pairs & 0x00FF00FF00FF00FFU) << 2U | (pairs >> 8U & 0x0000000300000003U) |
           (pairs & 0x0000300000003000U) << 4U;
  }
};

template <class Rule>
void unpack_by_four(const unsigned char* bytes, std::size_t byte_count, std::size_t pixels, std::uint16_t* unpacked) {
  constexpr std::size_t word_bytes = sizeof(std::uint64_t);
  std::uint64_t word = 0;
  while (byte_count >= word_bytes && pixels >= 4) {
    std::memcpy(&word, bytes, word_bytes);
    word = Rule::spread(word);
    std::memcpy(unpacked, &word, word_bytes);
    bytes += Rule::bytes;
    byte_count -= Rule::bytes;
    unpacked += 4;
    pixels -= 4;
  }
  // What is left may end before a whole word does.
  while (pixels > 0) {
    const std::size_t taken = std::min(byte_count, Rule::bytes);
    const std::size_t made = std::min<std::size_t>(pixels, 4);
    word = 0;
    std::memcpy(&word, bytes, taken);
    word = Rule::spread(word);
    std::memcpy(unpacked, &word, made * sizeof(std::uint16_t));
    bytes += taken;
    byte_count -= taken;
    unpacked += made;
    pixels -= made;
  }
}

}  // namespace

std::vector<std::pair<std::string, PixelFormat>> pixel_format_names() {
  std::vector<std::pair<std::string, PixelFormat>> names;
  for (const Description& description : descriptions) {
    names.emplace_back(description.name, description.format);
  }
  return names;
}

std::vector<std::pair<std::string, PixelFormat>> pixel_format_aliases() {
  const std::string first_word = "Mono";
  std::vector<std::pair<std::string, PixelFormat>> names;
  for (const char* word : {"Polarized", "PolarizeMono"}) {
    for (const Description& description : descriptions) {
      names.emplace_back(word + std::string(description.name).substr(first_word.size()), description.format);
    }
  }
  return names;
}

const char* name_of(PixelFormat format) { return describe(format).name; }

int significant_bits(PixelFormat format) { return describe(format).significant_bits; }

int storage_bits(PixelFormat format) { return describe(format).storage_bits; }

int value_bits(PixelFormat format) { return storage_bits(format) == 16 ? 16 : significant_bits(format); }

bool is_unpacked(PixelFormat format) {
  const std::uint16_t one = 1;
  unsigned char first = 0;
  std::memcpy(&first, &one, 1);
  return storage_bits(format) == 16 && first == 1;
}

std::size_t byte_count(PixelFormat format, std::size_t pixels) {
  const auto bits = static_cast<std::size_t>(storage_bits(format));
  return pixels / 8 * bits + (pixels % 8 * bits + 7) / 8;
}

void unpack(PixelFormat format, const unsigned char* bytes, std::size_t pixels, std::uint16_t* unpacked) {
  const std::size_t done = unpack_vectors(format, bytes, byte_count(format, pixels), unpacked);
  bytes += byte_count(format, done);
  pixels -= done;
  unpacked += done;
  switch (format) {
    case PixelFormat::mono8:
      std::copy(bytes, bytes + pixels, unpacked);
      break;
    case PixelFormat::mono10:
    case PixelFormat::mono12:
    case PixelFormat::mono16:
      std::memcpy(unpacked, bytes, pixels * sizeof(std::uint16_t));
      break;
    case PixelFormat::mono10p:
      unpack_by_four<Rule10p>(bytes, byte_count(format, pixels), pixels, unpacked);
      break;
    case PixelFormat::mono12p:
      unpack_by_four<Rule12p>(bytes, byte_count(format, pixels), pixels, unpacked);
      break;
    case PixelFormat::mono10_packed:
      unpack_by_four<Rule10Packed>(bytes, byte_count(format, pixels), pixels, unpacked);
      break;
    case PixelFormat::mono12_packed:
      unpack_by_four<Rule12Packed>(bytes, byte_count(format, pixels), pixels, unpacked);
      break;
  }
}

}  // namespace nerova_zel
