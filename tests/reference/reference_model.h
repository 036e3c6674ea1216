#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace nerova_zel::test {

// What the library must compute, written for reading: one pixel at a time, no vectors, nothing shared with the library.
// Reciprocal estimates are those of the processor the model runs on.

/** Who computes a frame. The built-in routes differ in column 3 of every interior block. */
enum class Route { Sse2, Sse41, PerPixel };

/** By rows; matrix m serves the pixels under the polarizer at 45 * m degrees. */
using CalibrationMatrix = std::array<float, 16>;
using CalibrationMatrices = std::array<CalibrationMatrix, 4>;

/** One frame as the caller hands it over. */
struct Frame {
  int width;
  int height;
  const std::uint16_t* input;
  int phase;
  int origin_x;
  int origin_y;
  int bit_depth;
  std::uint16_t output_maximum;
};

/** The outputs of 16-bit codes, in the order of the interface. */
enum CodeImage : std::size_t {
  TotalPower,
  HorizontalVertical,
  Diagonal,
  Azimuth,
  DegreeOfPolarization,
  CodeImageCount
};

/** All six outputs; the pair of pixel i is at 2 * i and 2 * i + 1 of normalized_stokes. */
struct OutputImages {
  std::vector<float> normalized_stokes;
  std::array<std::vector<std::uint16_t>, CodeImageCount> codes;
};

OutputImages compute_reference(const Frame& frame, const CalibrationMatrices& matrices, Route route);

CalibrationMatrices default_matrices();

/** Total power and the two differences, from which every output follows. */
struct Stokes {
  float power;
  float s1;
  float s2;
};

/** The per-pixel rules of the 16-bit outputs for one value of P, S1 or S2, one (S1, S2) and one (P, S1, S2). */
std::uint16_t linear_code(float value, int bit_depth, std::uint16_t output_maximum);
std::uint16_t azimuth_code(float s1, float s2, std::uint16_t output_maximum);
std::uint16_t degree_code(const Stokes& stokes, std::uint16_t output_maximum);

}  // namespace nerova_zel::test
