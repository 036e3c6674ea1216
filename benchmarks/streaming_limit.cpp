#include "streaming_limit.h"

#include <emmintrin.h>

#include <cstddef>

namespace nerova_zel::benchmark {

namespace {

/** Folds one row into 16 bytes. */
__m128i read_row(const std::uint16_t* row, std::size_t width) {
  __m128i fold = _mm_setzero_si128();
  for (std::size_t x = 0; x + 8 <= width; x += 8) {
    fold = _mm_xor_si128(fold, _mm_loadu_si128(reinterpret_cast<const __m128i*>(row + x)));
  }
  return fold;
}

/** Writes the whole 16-byte pieces of one row; the few bytes that remain do not matter to the time. */
template <bool cached>
void write_row(void* row, std::size_t bytes, __m128i value) {
  auto* to = static_cast<char*>(row);
  std::size_t i = cached ? 0 : (16 - reinterpret_cast<std::uintptr_t>(to) % 16) % 16;
  for (; i + 16 <= bytes; i += 16) {
    auto* piece = reinterpret_cast<__m128i*>(to + i);
    if (cached) {
      _mm_storeu_si128(piece, value);
    } else {
      _mm_stream_si128(piece, value);
    }
  }
}

template <bool cached>
void stream(const TransformParameters& p) {
  const auto width = static_cast<std::size_t>(p.width);
  std::uint16_t* const images[] = {p.images.total_power, p.images.horizontal_vertical, p.images.diagonal,
                                   p.images.azimuth, p.images.degree_of_linear_polarization};
  for (std::size_t first = 0; first < width * static_cast<std::size_t>(p.height); first += width) {
    const __m128i value = read_row(p.input + first, width);
    if (p.images.normalized_stokes != nullptr) {
      write_row<cached>(p.images.normalized_stokes + 2 * first, 8 * width, value);
    }
    for (std::uint16_t* image : images) {
      if (image != nullptr) {
        write_row<cached>(image + first, 2 * width, value);
      }
    }
  }
  if (!cached) {
    _mm_sfence();
  }
}

}  // namespace

void stream_frame(const TransformParameters& parameters) { stream<true>(parameters); }

void stream_frame_uncached(const TransformParameters& parameters) { stream<false>(parameters); }

}  // namespace nerova_zel::benchmark
