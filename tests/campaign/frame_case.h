#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "reference/reference_model.h"

namespace nerova_zel::test {

/** The same numbers from the same seed on every platform (splitmix64). */
class Random {
 public:
  explicit Random(std::uint64_t seed) : state_(seed) {}
  std::uint64_t next();
  /** A number from 0 to count - 1. */
  int below(int count) { return static_cast<int>(next() % static_cast<std::uint64_t>(count)); }
  /** A number from first to last, both included. */
  int between(int first, int last) { return first + below(last - first + 1); }
  bool one_in(int count) { return below(count) == 0; }
  template <class Choices>
  auto pick(const Choices& choices) {
    return choices[static_cast<std::size_t>(below(static_cast<int>(choices.size())))];
  }

 private:
  std::uint64_t state_;
};

enum class SampleKind {
  Zeros,
  Saturated,        // the full scale of the bit depth
  Full16Bits,       // 65535 whatever the bit depth
  Uniform,          // one random value
  Ramp,             // rises along rows and columns
  FewValues,        // 0, 1, two values and full scale: zero and equal differences are common
  EqualNeighbours,  // 2 x 2 tiles of equal samples
  WithinDepth,      // random
  AboveDepth,       // random 16-bit values
  Count
};

enum class MatrixKind {
  Default,
  Border,   // the default ones, with one bit of one entry flipped: the lowest or the sign
  Mild,     // a real calibration: near the default ones
  Wide,     // magnitudes far apart, and zeros of both signs
  Hostile,  // rows of special values, zero rows and rows of the default matrices mixed
  Count
};

/** All that makes a frame and its reference; which outputs are asked for is left to each call. */
struct FrameCase {
  int width = 0;
  int height = 0;
  int phase = 0;
  int origin_x = 0;
  int origin_y = 0;
  int bit_depth = 0;
  std::uint16_t output_maximum = 0;
  SampleKind samples = SampleKind::WithinDepth;
  MatrixKind matrices = MatrixKind::Default;
  std::uint64_t seed = 0;  // of the samples and the matrices
};

/** For the reference. */
inline Frame frame_of(const FrameCase& c, const std::vector<std::uint16_t>& samples) {
  return {c.width, c.height, samples.data(), c.phase, c.origin_x, c.origin_y, c.bit_depth, c.output_maximum};
}

std::vector<std::uint16_t> make_samples(const FrameCase& frame_case);
CalibrationMatrices make_matrices(const FrameCase& frame_case);

/** A bit depth, biased to those in use and to the limits. */
int random_bit_depth(Random& random);

/** An output maximum equal or unequal to the full scale (unequal where the scale is 0), biased to those in use. */
std::uint16_t random_output_maximum(Random& random, int bit_depth, bool equal);

/** Every parameter, in words. */
std::string describe(const FrameCase& frame_case);

}  // namespace nerova_zel::test
