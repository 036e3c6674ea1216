// Proves the plugins' quotients equal to true divisions by trying every case that the default calibration can make:
// every integer S1 or S2 over every sum of four samples, and every mantissa over every divisor. Compiled with the lanes
// and the flags of one instruction set.

#include NEROVA_STEP

#include <cstdint>
#include <cstdio>

#include "wide_rules.h"

namespace nerova_zel {
namespace {

using Float = StepFor<false>::Float;
constexpr int lanes = sizeof(Float) / sizeof(float);
constexpr int largest_sample = 65535;

/** first, first + spacing, ... in the lanes. */
Float ramp(float first, float spacing) {
  float values[lanes];
  for (int k = 0; k < lanes; ++k) {
    values[k] = first + spacing * static_cast<float>(k);
  }
  Float loaded;
  __builtin_memcpy(&loaded, values, sizeof(loaded));
  return loaded;
}

bool same_bits(const Float& a, const Float& b) { return __builtin_memcmp(&a, &b, sizeof(a)) == 0; }

/** s / (sum / 2) for every s up to the sum; negative s are mirror images. Returns the number of faults. */
long check_normalized_stokes() {
  long faults = 0;
  const Float step = Float::broadcast(static_cast<float>(lanes));
  for (int sum = 1; sum <= 4 * largest_sample; ++sum) {
    const int largest = sum < largest_sample ? sum : largest_sample;
    const Float power = Float::broadcast(static_cast<float>(sum) / 2);
    Float s = ramp(0.0F, 1.0F);
    for (int first = 0; first <= largest; first += lanes) {
      const NormalizedStokes<Float> quotients = DefaultRules<Float>::normalize({power, s, s});
      faults += same_bits(quotients.s1, s / power) ? 0 : 1;
      s = s + step;
    }
  }
  return faults;
}

/** a / d for every mantissa of a. */
long check_divisor(int divisor) {
  const double exact = 1.0 / divisor;
  const auto nearest = static_cast<float>(exact);
  const Divisor<Float> split = {Float::broadcast(nearest), Float::broadcast(static_cast<float>(exact - nearest))};
  const Float d = Float::broadcast(static_cast<float>(divisor));
  const Float step = Float::broadcast(static_cast<float>(lanes));
  long faults = 0;
  constexpr int first_mantissa = 1 << 23;
  Float a = ramp(static_cast<float>(first_mantissa), 1.0F);
  for (int mantissa = first_mantissa; mantissa < 2 * first_mantissa; mantissa += lanes) {
    faults += same_bits(divide(a, split), a / d) ? 0 : 1;
    a = a + step;
  }
  return faults;
}

}  // namespace
}  // namespace nerova_zel

bool quotients_are_exact() {
  long faults = nerova_zel::check_divisor(180);
  for (int bit_depth = 1; bit_depth <= 16; ++bit_depth) {
    faults += nerova_zel::check_divisor((1 << bit_depth) - 1);
  }
  std::printf("divisions by constants: %ld faults\n", faults);
  const long stokes_faults = nerova_zel::check_normalized_stokes();
  std::printf("normalized Stokes pairs: %ld faults\n", stokes_faults);
  return faults + stokes_faults == 0;
}
