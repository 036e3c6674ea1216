#pragma once

#include "kernels/shared/always_inline.h"

// Samples in lanes of floats as the sum of a sample and 2^23: with 0x4B00 above its 16 bits a sample is that float, no
// conversion needed, and differences of such floats are differences of samples, exact.
namespace nerova_zel {
namespace {

struct SampleShift {
  static constexpr float value = 8388608.0F;
  static constexpr unsigned bits = 0x4B000000;
};

/**
 * Samples of a row, shifted: every other one from 0, from 1, and from 2. For vectors of columns apart: vector 0 of a
 * step holds the even columns, vector 1 the odd ones.
 */
template <class Float>
struct ApartSamples {
  Float from_0;
  Float from_1;
  Float from_2;

  /** For each column k of vector i: of the samples of columns k and k + 1, the one that lies in an even column. */
  NEROVA_INLINE Float even(int i) const { return i == 0 ? from_0 : from_2; }
  /** For each column k of vector i: of the samples of columns k and k + 1, the one that lies in an odd column. */
  NEROVA_INLINE Float odd(int /*i*/) const { return from_1; }
  /** For each column k of vector i: the sample of column k. */
  NEROVA_INLINE Float column(int i) const { return i == 0 ? from_0 : from_1; }
  /** The sample of column k + 1. */
  NEROVA_INLINE Float next_column(int i) const { return i == 0 ? from_1 : from_2; }
};

}  // namespace
}  // namespace nerova_zel
