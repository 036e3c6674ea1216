#include "frames/packed_vectors.h"

#include <immintrin.h>

namespace nerova_zel {

namespace {

/** Eight pixels in each half of a vector. */
constexpr std::size_t half_pixels = 8;
constexpr std::size_t half_bytes = 16;

/**
 * Each pixel's bits lie in two neighbouring bytes: a shuffle puts those into 16 bits, a product moves the pixel to
 * their upper end, a shift moves it down, which clears what else the bytes held.
 */
struct BitStream {
  alignas(16) std::int8_t places[16];
  alignas(16) std::int16_t factors[8];
};

constexpr BitStream stream_10 = {{0, 1, 1, 2, 2, 3, 3, 4, 5, 6, 6, 7, 7, 8, 8, 9}, {64, 16, 4, 1, 64, 16, 4, 1}};
constexpr BitStream stream_12 = {{0, 1, 1, 2, 3, 4, 4, 5, 6, 7, 7, 8, 9, 10, 10, 11}, {16, 1, 16, 1, 16, 1, 16, 1}};

template <int bits>
[[gnu::target("avx2")]] std::size_t unpack_stream(const BitStream& stream, const unsigned char* bytes,
                                                  std::size_t byte_count, std::uint16_t* unpacked) {
  const __m256i places = _mm256_broadcastsi128_si256(_mm_load_si128(reinterpret_cast<const __m128i*>(stream.places)));
  const __m256i factors = _mm256_broadcastsi128_si256(_mm_load_si128(reinterpret_cast<const __m128i*>(stream.factors)));
  constexpr std::size_t step = half_pixels * bits / 8;
  std::size_t pixels = 0;
  for (std::size_t at = 0; at + step + half_bytes <= byte_count; at += 2 * step, pixels += 2 * half_pixels) {
    const __m128i low = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + at));
    const __m128i high = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + at + step));
    const __m256i words = _mm256_shuffle_epi8(_mm256_inserti128_si256(_mm256_castsi128_si256(low), high, 1), places);
    const __m256i values = _mm256_srli_epi16(_mm256_mullo_epi16(words, factors), 16 - bits);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(unpacked + pixels), values);
  }
  return pixels;
}

}  // namespace

std::size_t unpack_vectors(PixelFormat format, const unsigned char* bytes, std::size_t byte_count,
                           std::uint16_t* unpacked) {
  static const bool avx2 = __builtin_cpu_supports("avx2") != 0;
  if (avx2 && format == PixelFormat::mono10p) {
    return unpack_stream<10>(stream_10, bytes, byte_count, unpacked);
  }
  if (avx2 && format == PixelFormat::mono12p) {
    return unpack_stream<12>(stream_12, bytes, byte_count, unpacked);
  }
  return 0;
}

}  // namespace nerova_zel
