#pragma once

#include "kernels/shared/always_inline.h"
#include "kernels/shared/kernels.h"

// Which samples make up S1 and S2 under the default calibration. Internal linkage, as all per-pixel code.
namespace nerova_zel {
namespace {

/** The samples of one row by polarizer: of the columns k and k + 1, the one that is even, and the one that is odd. */
template <class Int>
struct Channels {
  Int even;
  Int odd;
};

template <class Int>
struct Differences {
  Int s1;
  Int s2;
};

/** I0 - I90 and I45 - I135 of a row and its partner row, given the polarizer of the row's first pixel. */
template <PolarPhase first_angle, class Int>
NEROVA_INLINE Differences<Int> polarizer_differences(const Channels<Int>& upper, const Channels<Int>& lower) {
  if constexpr (first_angle == 0) {
    return {upper.even - lower.odd, lower.even - upper.odd};
  } else if constexpr (first_angle == 1) {
    return {lower.even - upper.odd, upper.even - lower.odd};
  } else if constexpr (first_angle == 2) {
    return {lower.odd - upper.even, upper.odd - lower.even};
  } else {
    return {upper.odd - lower.even, lower.odd - upper.even};
  }
}

}  // namespace
}  // namespace nerova_zel
