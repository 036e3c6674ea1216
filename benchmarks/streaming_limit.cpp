#include "streaming_limit.h"

#include <emmintrin.h>

#include <cstddef>

#include "kernels/shared/always_inline.h"
#include "kernels/shared/outputs.h"

// Compiled for several processors, of which the program chooses when it is loaded.
#if defined(__linux__)
#define NEROVA_WIDEST_STORES __attribute__((target_clones("avx512f", "avx2", "default")))
#else
#define NEROVA_WIDEST_STORES
#endif

namespace nerova_zel::benchmark {

namespace {

constexpr std::size_t line_bytes = 64;
constexpr std::size_t step_pixels = line_bytes / sizeof(std::uint16_t);

enum class Stores { Plain, Uncached, Prefetched };

/** The images of a frame as bytes; each takes so many cache lines for a step. */
struct Images {
  struct Image {
    char* bytes;
    std::size_t lines;
  };
  Image images[Outputs::count] = {};
  std::size_t count = 0;

  explicit Images(const OutputImages& all) {
    Outputs::for_each([&](auto output) {
      constexpr std::size_t elements = output.is_pair ? 2 : 1;
      if (auto* const image = all.*output.image) {
        images[count++] = {reinterpret_cast<char*>(image), elements * sizeof(*image) / sizeof(std::uint16_t)};
      }
    });
  }
};

/** A cache line, stored with the widest stores that the function around it is compiled for. */
using Line = long long __attribute__((vector_size(line_bytes), aligned(sizeof(std::uint16_t)), may_alias));

template <Stores stores>
NEROVA_INLINE void write_line(char* to, const Line& value, std::size_t ahead) {
  if constexpr (stores == Stores::Prefetched) {
    __builtin_prefetch(to + ahead, 1);
  }
  if constexpr (stores == Stores::Uncached) {
    const auto* const pieces = reinterpret_cast<const __m128i*>(&value);
    for (std::size_t i = 0; i < line_bytes / sizeof(__m128i); ++i) {
      _mm_stream_si128(reinterpret_cast<__m128i*>(to) + i, _mm_loadu_si128(pieces + i));
    }
  } else {
    *reinterpret_cast<Line*>(to) = value;
  }
}

/** Whole steps of the frame as one row; what remains of it does not matter to the time. */
template <Stores stores>
NEROVA_INLINE void stream(const TransformParameters& p) {
  constexpr std::size_t read_ahead = 4096;
  constexpr std::size_t write_ahead = 16 * line_bytes;
  const Images all(p.images);
  const std::size_t pixels = static_cast<std::size_t>(p.width) * static_cast<std::size_t>(p.height);
  for (std::size_t x = 0; x + step_pixels <= pixels; x += step_pixels) {
    const auto* const samples = reinterpret_cast<const Line*>(p.input + x);
    __builtin_prefetch(reinterpret_cast<const char*>(samples) + read_ahead);
    const Line value = *samples;
    for (std::size_t k = 0; k < all.count; ++k) {
      const Images::Image& image = all.images[k];
      for (std::size_t line = 0; line < image.lines; ++line) {
        write_line<stores>(image.bytes + (x / step_pixels * image.lines + line) * line_bytes, value,
                           image.lines * write_ahead);
      }
    }
  }
  if constexpr (stores == Stores::Uncached) {
    _mm_sfence();
  }
}

}  // namespace

NEROVA_WIDEST_STORES void stream_frame(const TransformParameters& parameters) { stream<Stores::Plain>(parameters); }

void stream_frame_uncached(const TransformParameters& parameters) { stream<Stores::Uncached>(parameters); }

NEROVA_WIDEST_STORES void stream_frame_prefetched(const TransformParameters& parameters) {
  stream<Stores::Prefetched>(parameters);
}

}  // namespace nerova_zel::benchmark
