#include "frames/pixel_counts.h"

#include <algorithm>
#include <array>

namespace nerova_zel {

namespace {

// What each instruction set gets compiled for itself.
#define NEROVA_INLINE [[gnu::always_inline]] inline

/** Of every 32nd pixel each, in 16 bits: compilers make the fastest code of it. */
constexpr std::size_t lanes = 32;
using Lanes = std::array<std::uint16_t, lanes>;
/** So few steps that their counts fit. */
constexpr std::size_t most_steps = 65535;

NEROVA_INLINE void count(std::uint16_t& counted, bool yes) {
  counted = static_cast<std::uint16_t>(counted + static_cast<std::uint16_t>(yes));
}

struct LaneCounts {
  Lanes dark{};
  Lanes saturated{};
  Lanes above{};
  Lanes greatest{};
  Lanes set_bits{};

  NEROVA_INLINE void add(std::size_t lane, std::uint16_t pixel, std::uint16_t full_scale) {
    count(dark[lane], pixel == 0);
    count(saturated[lane], pixel >= full_scale);
    count(above[lane], pixel > full_scale);
    greatest[lane] = std::max(greatest[lane], pixel);
    set_bits[lane] = static_cast<std::uint16_t>(set_bits[lane] | pixel);
  }

  void add_to(PixelCounts& counts) const {
    for (std::size_t lane = 0; lane < lanes; ++lane) {
      counts.dark += dark[lane];
      counts.saturated += saturated[lane];
      counts.above += above[lane];
      counts.greatest = std::max(counts.greatest, greatest[lane]);
      counts.set_bits = static_cast<std::uint16_t>(counts.set_bits | set_bits[lane]);
    }
  }
};

NEROVA_INLINE PixelCounts count_all(const std::uint16_t* pixels, std::size_t count, std::uint16_t full_scale) {
  PixelCounts counts;
  std::size_t i = 0;
  while (i < count) {
    LaneCounts some;
    for (std::size_t step = 0; step + 1 < most_steps && i + lanes <= count; ++step, i += lanes) {
      for (std::size_t lane = 0; lane < lanes; ++lane) {
        some.add(lane, pixels[i + lane], full_scale);
      }
    }
    for (std::size_t lane = 0; lane < lanes && i < count; ++lane, ++i) {
      some.add(lane, pixels[i], full_scale);
    }
    some.add_to(counts);
  }
  return counts;
}

PixelCounts count_baseline(const std::uint16_t* pixels, std::size_t count, std::uint16_t full_scale) {
  return count_all(pixels, count, full_scale);
}

[[gnu::target("avx2")]] PixelCounts count_avx2(const std::uint16_t* pixels, std::size_t count,
                                               std::uint16_t full_scale) {
  return count_all(pixels, count, full_scale);
}

}  // namespace

PixelCounts& PixelCounts::operator+=(const PixelCounts& more) {
  dark += more.dark;
  saturated += more.saturated;
  above += more.above;
  greatest = std::max(greatest, more.greatest);
  set_bits = static_cast<std::uint16_t>(set_bits | more.set_bits);
  return *this;
}

PixelCounts count_pixels(const std::uint16_t* pixels, std::size_t count, int full_scale) {
  static const bool avx2 = __builtin_cpu_supports("avx2") != 0;
  return (avx2 ? count_avx2 : count_baseline)(pixels, count, static_cast<std::uint16_t>(full_scale));
}

}  // namespace nerova_zel
