#include "campaign/frame_case.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <sstream>

namespace nerova_zel::test {

namespace {

int full_scale(int bit_depth) { return (1 << bit_depth) - 1; }

void flip_one_bit(CalibrationMatrices& matrices, Random& random) {
  float& entry = matrices[static_cast<std::size_t>(random.below(4))][static_cast<std::size_t>(random.below(16))];
  std::uint32_t bits = 0;
  std::memcpy(&bits, &entry, sizeof bits);
  bits ^= random.one_in(2) ? 1U : 0x80000000U;
  std::memcpy(&entry, &bits, sizeof bits);
}

void make_mild(CalibrationMatrix& matrix, Random& random) {
  for (float& entry : matrix) {
    entry += static_cast<float>(random.between(-1000, 1000)) / 8192.0F;
  }
}

/** Exponents from one end, or both, of those that wide code treats as ordinary to just beyond them. */
void make_wide(CalibrationMatrix& matrix, int lowest_exponent, int highest_exponent, Random& random) {
  for (float& entry : matrix) {
    const float sign = random.one_in(2) ? 1.0F : -1.0F;
    const float mantissa = 1.0F + static_cast<float>(random.between(0, 8191)) / 8192.0F;
    entry =
        random.one_in(4) ? sign * 0.0F : sign * std::ldexp(mantissa, random.between(lowest_exponent, highest_exponent));
  }
}

/** An entry from the limits of the number format. */
void set_special(float& entry, Random& random) {
  static constexpr std::array<std::uint32_t, 16> special_bits = {0x7FC00000, 0xFFC00000,  // quiet NaN
                                                                 0x7F800001,              // signalling NaN
                                                                 0x7F800000, 0xFF800000,  // infinities
                                                                 0x80000000, 0x00000000,  // zeros
                                                                 0x00000001, 0x807FFFFF,  // denormals
                                                                 0x00800000, 0x7F7FFFFF,
                                                                 0xFF7FFFFF,              // smallest normal, largest
                                                                 0x3F800000, 0xBF800000,  // +-1
                                                                 0xBF000000, 0x5F000000};
  const std::uint32_t bits = random.pick(special_bits);
  std::memcpy(&entry, &bits, sizeof entry);
}

void make_hostile(CalibrationMatrix& matrix, Random& random) {
  for (std::size_t row = 0; row < 4; ++row) {
    const int kind = random.below(5);  // 3 and above: the default row stays
    for (std::size_t i = 4 * row; i < 4 * row + 4; ++i) {
      if (kind == 0) {
        set_special(matrix[i], random);
      } else if (kind == 1) {
        matrix[i] = random.one_in(2) ? 0.0F : -0.0F;
      } else if (kind == 2) {
        matrix[i] = static_cast<float>(random.between(-4, 4)) / 2.0F;
      }
    }
    if (kind == 3) {
      set_special(matrix[4 * row + static_cast<std::size_t>(random.below(4))], random);
    }
  }
}

}  // namespace

std::uint64_t Random::next() {
  state_ += 0x9E3779B97F4A7C15U;
  std::uint64_t z = state_;
  z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9U;
  z = (z ^ (z >> 27)) * 0x94D049BB133111EBU;
  return z ^ (z >> 31);
}

std::vector<std::uint16_t> make_samples(const FrameCase& frame_case) {
  Random random(frame_case.seed);
  const int maximum = full_scale(frame_case.bit_depth);
  const int uniform = random.between(0, maximum);
  const std::array<int, 5> few = {0, 1, maximum / 2, random.between(0, maximum), maximum};
  const int step_x = random.between(1, 900);
  const int step_y = random.between(1, 900);

  const auto width = static_cast<std::size_t>(frame_case.width);
  std::vector<std::uint16_t> samples;
  for (int y = 0; y < frame_case.height; ++y) {
    for (int x = 0; x < frame_case.width; ++x) {
      int value = 0;
      switch (frame_case.samples) {
        case SampleKind::Saturated:
          value = maximum;
          break;
        case SampleKind::Full16Bits:
          value = 65535;
          break;
        case SampleKind::Uniform:
          value = uniform;
          break;
        case SampleKind::Ramp:
          value = (x * step_x + y * step_y) % (maximum + 1);
          break;
        case SampleKind::FewValues:
          value = random.pick(few);
          break;
        case SampleKind::EqualNeighbours:
          if (x % 2 == 1) {
            value = samples.back();
          } else if (y % 2 == 1) {
            value = samples[samples.size() - width];
          } else {
            value = random.between(0, maximum);
          }
          break;
        case SampleKind::WithinDepth:
          value = random.between(0, maximum);
          break;
        case SampleKind::AboveDepth:
          value = random.between(0, 65535);
          break;
        case SampleKind::Zeros:
        case SampleKind::Count:
          break;
      }
      samples.push_back(static_cast<std::uint16_t>(value));
    }
  }
  return samples;
}

CalibrationMatrices make_matrices(const FrameCase& frame_case) {
  Random random(~frame_case.seed);
  CalibrationMatrices matrices = default_matrices();
  if (frame_case.matrices == MatrixKind::Border) {
    flip_one_bit(matrices, random);
  }
  const int lowest_exponent = random.one_in(2) ? -41 : random.between(-145, 14);
  const int highest_exponent = random.one_in(2) ? lowest_exponent : random.between(lowest_exponent, 14);
  for (CalibrationMatrix& matrix : matrices) {
    if (frame_case.matrices == MatrixKind::Mild) {
      make_mild(matrix, random);
    } else if (frame_case.matrices == MatrixKind::Wide) {
      make_wide(matrix, lowest_exponent, highest_exponent, random);
    } else if (frame_case.matrices == MatrixKind::Hostile) {
      make_hostile(matrix, random);
    }
  }
  return matrices;
}

int random_bit_depth(Random& random) {
  static constexpr std::array<int, 8> usual = {8, 10, 12, 12, 16, 16, 0, 1};
  return random.one_in(4) ? random.between(0, 16) : random.pick(usual);
}

std::uint16_t random_output_maximum(Random& random, int bit_depth, bool equal) {
  static constexpr std::array<int, 8> usual = {255, 1023, 4095, 65535, 1, 2, 65534, 32768};
  const int scale = full_scale(bit_depth);
  if (equal && scale != 0) {
    return static_cast<std::uint16_t>(scale);
  }
  int maximum = scale;
  while (maximum == scale) {
    maximum = random.one_in(3) ? random.between(1, 65535) : random.pick(usual);
  }
  return static_cast<std::uint16_t>(maximum);
}

std::string describe(const FrameCase& frame_case) {
  std::ostringstream text;
  text << frame_case.width << " x " << frame_case.height << ", phase " << frame_case.phase << ", origin ("
       << frame_case.origin_x << ", " << frame_case.origin_y << "), bit depth " << frame_case.bit_depth
       << ", output maximum " << frame_case.output_maximum << ", SampleKind " << static_cast<int>(frame_case.samples)
       << ", MatrixKind " << static_cast<int>(frame_case.matrices) << ", seed " << frame_case.seed;
  return text.str();
}

}  // namespace nerova_zel::test
