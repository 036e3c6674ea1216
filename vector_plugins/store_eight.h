#pragma once

#include <immintrin.h>

#include "kernels/always_inline.h"

namespace nerova_zel {
namespace {

/** Stores eight floats; past the caches, where the address is a multiple of 32. */
template <bool streams>
NEROVA_INLINE void store_eight(float* to, __m256 floats) {
  if constexpr (streams) {
    _mm256_stream_ps(to, floats);
  } else {
    _mm256_storeu_ps(to, floats);
  }
}

}  // namespace
}  // namespace nerova_zel
