#include "reference/reference_model.h"

#include <xmmintrin.h>

#include <cfloat>
#include <cmath>
#include <cstring>

static_assert(FLT_EVAL_METHOD == 0, "every operation must be rounded to float: on 32-bit x86 use -mfpmath=sse");

namespace nerova_zel::test {

namespace {

float from_bits(std::uint32_t bits) {
  float value = 0;
  std::memcpy(&value, &bits, sizeof value);
  return value;
}

const float k1 = from_bits(0x3F78EED2);                // 0.9723941
const float k2 = from_bits(0xBE448E01);                // -0.19194795
const float pi = from_bits(0x40490FDB);                // 3.1415927
const float half_pi = from_bits(0x3FC90FDB);           // 1.5707964
const float deg_per_rad_half = from_bits(0x41E52EE0);  // 28.647888, one unit below the float nearest to 90 / pi

float reciprocal_estimate(float x) { return _mm_cvtss_f32(_mm_rcp_ss(_mm_set_ss(x))); }

// Geometry

/** Polarizer at a pixel, in steps of 45 degrees. */
int polarizer(int phase, int x, int y) {
  static constexpr int layout[4][2][2] = {{{0, 3}, {1, 2}}, {{1, 2}, {0, 3}}, {{2, 1}, {3, 0}}, {{3, 0}, {2, 1}}};
  return layout[phase][y % 2][x % 2];
}

/** Phase (0..3) of a frame whose origin lies at these sensor coordinates. */
int phase_at_origin(int phase, int origin_x, int origin_y) {
  static constexpr int swap_rows[4] = {1, 0, 3, 2};
  static constexpr int swap_columns[4] = {3, 2, 1, 0};
  static constexpr int swap_both[4] = {2, 3, 0, 1};
  const int from = phase < 0 ? 0 : phase;
  const int x = origin_x % 2;  // -1 for a negative odd coordinate, which counts as both odd
  const int y = origin_y % 2;
  if (x == 0 && y == 0) {
    return from;
  }
  if (x == 0 && y == 1) {
    return swap_rows[from];
  }
  if (x == 1 && y == 0) {
    return swap_columns[from];
  }
  return swap_both[from];
}

float sample(const Frame& frame, int x, int y) {
  return frame.input[static_cast<std::size_t>(y) * static_cast<std::size_t>(frame.width) + static_cast<std::size_t>(x)];
}

/** The first columns of all row pairs but the last (of all rows but the last if their number is odd). */
bool in_block(const Frame& frame, Route route, int x, int y) {
  if (route == Route::PerPixel || frame.width < 8) {
    return false;
  }
  const int block_columns = 4 * (frame.width / 4 - 1);
  const int block_rows = (frame.height % 2 == 0) ? frame.height - 2 : frame.height - 1;
  return x < block_columns && y < block_rows;
}

// P, S1, S2

float dot_product(const CalibrationMatrix& m, std::size_t row, const std::array<float, 4>& c) {
  float t = c[0] * m[4 * row] + c[1] * m[4 * row + 1];
  t = t + c[2] * m[4 * row + 2];
  t = t + c[3] * m[4 * row + 3];
  return t;
}

Stokes per_pixel_stokes(const Frame& frame, int phase, const CalibrationMatrices& matrices, int x, int y) {
  const bool last_column = x == frame.width - 1;
  const bool last_row = y == frame.height - 1;
  const int partner_x = last_column ? x - 1 : x + 1;
  const int partner_y = last_row ? y - 1 : y + 1;
  const std::array<float, 4> c = {sample(frame, x, y), sample(frame, partner_x, y), sample(frame, x, partner_y),
                                  sample(frame, partner_x, partner_y)};

  const bool odd_frame = frame.width % 2 != 0 || frame.height % 2 != 0;
  const bool matrix_of_top_left = last_column && last_row && odd_frame;
  const int number = matrix_of_top_left ? polarizer(phase, 0, 0) : polarizer(phase, x, y);
  const CalibrationMatrix& m = matrices[static_cast<std::size_t>(number)];
  return {dot_product(m, 0, c) * 0.5F, dot_product(m, 1, c), dot_product(m, 2, c)};
}

Stokes block_stokes(const Frame& frame, int phase, Route route, int x, int y) {
  const int odd_column = (x % 2 == 0) ? x + 1 : x;
  int even_column = (x % 2 == 0) ? x : x + 1;
  if (route == Route::Sse41 && x % 4 == 3) {
    even_column = x - 1;
  }
  std::array<float, 4> under = {};  // the samples under 0, 45, 90 and 135 degrees
  for (const int row : {y, y + 1}) {
    for (const int column : {even_column, odd_column}) {
      under[static_cast<std::size_t>(polarizer(phase, column, row))] = sample(frame, column, row);
    }
  }
  const float sum = (under[0] + under[1]) + (under[2] + under[3]);
  return {sum * reciprocal_estimate(2.0F), under[0] - under[2], under[1] - under[3]};
}

// From Stokes values to codes

struct Scale {
  float input_maximum;
  float output_maximum;
  bool equal;
};

Scale make_scale(int bit_depth, std::uint16_t output_maximum) {
  const int input_maximum = (1 << bit_depth) - 1;
  return {static_cast<float>(input_maximum), static_cast<float>(output_maximum), input_maximum == output_maximum};
}

std::uint16_t clamp_and_round(float v, float output_maximum) {
  float t = v < output_maximum ? v : output_maximum;  // a NaN becomes the maximum
  t = t > 0.0F ? t : 0.0F;
  return static_cast<std::uint16_t>(std::lrint(t));
}

float per_pixel_rescaled(float v, const Scale& scale) {
  return scale.equal ? v : (v * scale.output_maximum) / scale.input_maximum;
}

float block_rescaled(float v, const Scale& scale) {
  return scale.equal ? v : (v * scale.output_maximum) * reciprocal_estimate(scale.input_maximum);
}

float cubic_arc_tangent(float z) { return z * (k1 + k2 * (z * z)); }

/** About atan2(S2, S1), in radians. */
float theta(float s1, float s2) {
  if (s1 == 0.0F) {
    if (s2 == 0.0F) {
      return 0.0F;
    }
    return s2 > 0.0F ? half_pi : -half_pi;
  }
  const float z = s2 * reciprocal_estimate(s1);
  if (std::fabs(s2) < std::fabs(s1)) {
    const float half_turn = s2 >= 0.0F ? pi : -pi;
    return cubic_arc_tangent(z) + (s1 > 0.0F ? 0.0F : half_turn);
  }
  const float w = reciprocal_estimate(z);
  return (0.0F - cubic_arc_tangent(w)) + (s2 > 0.0F ? half_pi : -half_pi);
}

/** Angle of linear polarization shifted to 0..180 degrees. */
float shifted_degrees(float s1, float s2) { return theta(s1, s2) * deg_per_rad_half + 90.0F; }

float per_pixel_azimuth(const Stokes& stokes, float output_maximum) {
  return (shifted_degrees(stokes.s1, stokes.s2) * output_maximum) / 180.0F;
}

float block_azimuth(const Stokes& stokes, float output_maximum) {
  return shifted_degrees(stokes.s1, stokes.s2) * (output_maximum / 180.0F);
}

float degree(const Stokes& stokes) {
  if (stokes.power == 0.0F) {
    return 0.0F;
  }
  const float s = std::sqrt(stokes.s1 * stokes.s1 + stokes.s2 * stokes.s2);
  return s * reciprocal_estimate(stokes.power);
}

}  // namespace

OutputImages compute_reference(const Frame& frame, const CalibrationMatrices& matrices, Route route) {
  const int phase = phase_at_origin(frame.phase, frame.origin_x, frame.origin_y);
  const Scale scale = make_scale(frame.bit_depth, frame.output_maximum);
  OutputImages images;
  for (int y = 0; y < frame.height; ++y) {
    for (int x = 0; x < frame.width; ++x) {
      const bool block = in_block(frame, route, x, y);
      const Stokes stokes =
          block ? block_stokes(frame, phase, route, x, y) : per_pixel_stokes(frame, phase, matrices, x, y);

      images.normalized_stokes.push_back(stokes.s1 / stokes.power);
      images.normalized_stokes.push_back(stokes.s2 / stokes.power);

      const auto rescaled = block ? block_rescaled : per_pixel_rescaled;
      const auto azimuth = block ? block_azimuth : per_pixel_azimuth;
      const float maximum = scale.output_maximum;
      images.codes[TotalPower].push_back(clamp_and_round(rescaled(stokes.power, scale), maximum));
      images.codes[HorizontalVertical].push_back(clamp_and_round(rescaled(stokes.s1, scale), maximum));
      images.codes[Diagonal].push_back(clamp_and_round(rescaled(stokes.s2, scale), maximum));
      images.codes[Azimuth].push_back(clamp_and_round(azimuth(stokes, maximum), maximum));
      images.codes[DegreeOfPolarization].push_back(clamp_and_round(degree(stokes) * maximum, maximum));
    }
  }
  return images;
}

CalibrationMatrices default_matrices() {
  return {{{1, 1, 1, 1, 1, 0, 0, -1, 0, -1, 1, 0, 0, 0, 0, 0},
           {1, 1, 1, 1, 0, -1, 1, 0, 1, 0, 0, -1, 0, 0, 0, 0},
           {1, 1, 1, 1, -1, 0, 0, 1, 0, 1, -1, 0, 0, 0, 0, 0},
           {1, 1, 1, 1, 0, 1, -1, 0, -1, 0, 0, 1, 0, 0, 0, 0}}};
}

std::uint16_t linear_code(float value, int bit_depth, std::uint16_t output_maximum) {
  const Scale scale = make_scale(bit_depth, output_maximum);
  return clamp_and_round(per_pixel_rescaled(value, scale), scale.output_maximum);
}

std::uint16_t azimuth_code(float s1, float s2, std::uint16_t output_maximum) {
  return clamp_and_round(per_pixel_azimuth({0.0F, s1, s2}, output_maximum), output_maximum);
}

std::uint16_t degree_code(const Stokes& stokes, std::uint16_t output_maximum) {
  return clamp_and_round(degree(stokes) * static_cast<float>(output_maximum), output_maximum);
}

}  // namespace nerova_zel::test
