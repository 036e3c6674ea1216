#include "frames/bit_depth.h"

#include <algorithm>

#include "failure.h"
#include "formatted.h"

namespace nerova_zel {

namespace {

void shift_down(RawFrame& frame, int bits) {
  frame.counted.reset();
  for (std::uint16_t& pixel : frame.pixels) {
    pixel = static_cast<std::uint16_t>(pixel >> static_cast<unsigned>(bits));
  }
}

int bits_of(int value) {
  int bits = 0;
  for (; value > 0; value >>= 1) {
    ++bits;
  }
  return bits;
}

/** The bit depth of usual cameras that holds so many bits, of which there are at most 14. */
int usual_depth(int bits) {
  for (const int usual : {8, 10, 12}) {
    if (bits <= usual) {
      return usual;
    }
  }
  return 14;
}

}  // namespace

int settle_bit_depth(RawFrame& frame, const DepthChoice& choice, const std::string& name) {
  if (choice.bit_depth && *choice.bit_depth > frame.storage_bits) {
    throw Failure("the bit depth " + std::to_string(*choice.bit_depth) + " is more than the " +
                      std::to_string(frame.storage_bits) + " bits of a pixel in " + name + ".",
                  Fact::bit_depth_too_great);
  }
  if (choice.left_aligned) {
    if (!choice.bit_depth && !frame.depth_is_stated) {
      throw Failure(name + " does not say how many bits of its left-aligned pixels count.", Fact::bit_depth_unknown);
    }
    const int depth = choice.bit_depth.value_or(frame.scaled_from_bits > 0 ? frame.scaled_from_bits : frame.bit_depth);
    shift_down(frame, frame.storage_bits - depth);
    return depth;
  }
  const int scaled_from = frame.scaled_from_bits;
  if (scaled_from > 0 && choice.bit_depth.value_or(scaled_from) <= scaled_from) {
    shift_down(frame, frame.storage_bits - scaled_from);
    return choice.bit_depth.value_or(scaled_from);
  }
  return choice.bit_depth.value_or(frame.bit_depth);
}

void check_overflow(const PixelCounts& counts, const RawFrame& frame, int bit_depth, const std::string& name) {
  constexpr std::uint32_t most_pixels = 16;
  constexpr double most_share = 0.0001;
  const auto pixels = static_cast<double>(frame.pixels.size());
  if (counts.above > most_pixels && counts.above > most_share * pixels) {
    throw Failure(formatted("%.2f %% of the pixels of %s exceed %d, the full scale of %d bits.",
                            100.0 * counts.above / pixels, name.c_str(), (1 << bit_depth) - 1, bit_depth),
                  Fact::overflow);
  }
}

std::optional<DepthDoubt> doubt_bit_depth(const PixelCounts& counts, const RawFrame& frame) {
  if (frame.depth_is_stated || counts.greatest == 0) {
    return std::nullopt;
  }
  const int greatest = counts.greatest;
  int zero_bits = 0;
  while ((counts.set_bits >> static_cast<unsigned>(zero_bits) & 1U) == 0) {
    ++zero_bits;
  }
  if (greatest < ((1 << frame.storage_bits) - 1) / 8.0) {
    const int bits = bits_of(greatest);
    return DepthDoubt{DepthDoubt::Reason::small_values, greatest, zero_bits,
                      frame.storage_bits > 8 ? usual_depth(bits) : bits};
  }
  // Of a single bit chance is likelier, and of more than 8 an even picture.
  if (frame.storage_bits == 16 && zero_bits >= 2 && zero_bits <= 8) {
    return DepthDoubt{DepthDoubt::Reason::left_aligned, greatest, zero_bits, usual_depth(16 - zero_bits)};
  }
  return std::nullopt;
}

}  // namespace nerova_zel
