#include "processor/linear_stokes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "angles.h"

namespace nerova_zel {

namespace {

/** Pixels of one step of a row: a constant, so that compilers make vector code of the loops. */
constexpr int step = 16;

/** Weights of one Stokes parameter for the pixels of a step: by partner, then by pixel. */
using StepWeights = std::array<std::array<float, step>, 4>;

/** Matrices of the even and odd columns of a row. */
struct RowMatrices {
  const CalibrationMatrix* by_parity[2];
};

RowMatrices matrices_of_row(const MosaicFrame& frame, const Calibration& matrices, int y) {
  RowMatrices row{{matrices.data(), matrices.data()}};
  for (const int parity : {0, 1}) {
    const int angle = frame.layout.angle_at(frame.origin.x + parity, frame.origin.y + y);
    row.by_parity[parity] = &matrices[static_cast<std::size_t>(angle / 45)];
  }
  return row;
}

StepWeights weights_of(const RowMatrices& matrices, std::size_t parameter) {
  StepWeights weights{};
  for (std::size_t partner = 0; partner < 4; ++partner) {
    for (std::size_t i = 0; i < step; ++i) {
      weights[partner][i] = (*matrices.by_parity[i % 2])[4 * parameter + partner];
    }
  }
  return weights;
}

/** A row and the row of its vertical partners. */
struct RowPair {
  const std::uint16_t* own;
  const std::uint16_t* partner;
};

/** The grouping of the sums is part of the result. */
inline float weigh(float self, float horizontal, float vertical, float diagonal, const StepWeights& weights,
                   std::size_t i) {
  return ((self * weights[0][i] + horizontal * weights[1][i]) + vertical * weights[2][i]) + diagonal * weights[3][i];
}

/** `factor` is one half for P, which is exact, and 1 for the others. */
void compute_row(const RowPair& rows, std::size_t width, const StepWeights& weights, float factor, float* result) {
  std::size_t x = 0;
  for (; x + step < width; x += step) {
    for (std::size_t i = 0; i < step; ++i) {
      result[x + i] = factor * weigh(rows.own[x + i], rows.own[x + i + 1], rows.partner[x + i], rows.partner[x + i + 1],
                                     weights, i);
    }
  }
  for (; x < width; ++x) {
    const std::size_t beside = x + 1 < width ? x + 1 : x - 1;
    result[x] = factor * weigh(rows.own[x], rows.own[beside], rows.partner[x], rows.partner[beside], weights, x % 2);
  }
}

// What each instruction set gets compiled for itself.
#define NEROVA_INLINE [[gnu::always_inline]] inline

/** atan(t) / t for t^2 from 0 to 1, to 4.5e-10 of it: Chebyshev interpolation. */
NEROVA_INLINE double arctangent_ratio(double square) {
  constexpr double coefficients[] = {0.0010576065714386377, -0.007030665110505653, 0.021912936441698217,
                                     -0.04392839929116897,  0.06685280661789957,   -0.08785042875352772,
                                     0.11050771153723038,   -0.14278576002668555,  0.19999558098168735,
                                     -0.3333332248881645,   0.9999999995535289};
  double value = 0.0;
  for (const double coefficient : coefficients) {
    value = value * square + coefficient;
  }
  return value;
}

/** Written without branches, so that compilers make vector code of it. */
NEROVA_INLINE float angle_of_pair(float s1, float s2) {
  const double x = std::fabs(static_cast<double>(s1));
  const double y = std::fabs(static_cast<double>(s2));
  const double greater = std::max(x, y);
  const double ratio = std::min(x, y) / std::max(greater, std::numeric_limits<double>::min());
  double angle = ratio * arctangent_ratio(ratio * ratio);
  angle = y > x ? pi / 2 - angle : angle;
  angle = s1 < 0.0F ? pi - angle : angle;
  angle = s2 < 0.0F ? 2 * pi - angle : angle;
  const auto degrees = static_cast<float>(0.5 * degrees_per_radian * angle);
  const float below_half_turn = degrees < 180.0F ? degrees : 0.0F;
  return x + y < std::numeric_limits<double>::infinity() ? below_half_turn : std::numeric_limits<float>::quiet_NaN();
}

NEROVA_INLINE void angles(const float* pairs, std::size_t pixels, float* degrees) {
  std::size_t i = 0;
  for (; i + step <= pixels; i += step) {
    for (std::size_t k = 0; k < step; ++k) {
      degrees[i + k] = angle_of_pair(pairs[2 * (i + k)], pairs[2 * (i + k) + 1]);
    }
  }
  for (; i < pixels; ++i) {
    degrees[i] = angle_of_pair(pairs[2 * i], pairs[2 * i + 1]);
  }
}

void angles_baseline(const float* pairs, std::size_t pixels, float* degrees) { angles(pairs, pixels, degrees); }

[[gnu::target("avx2")]] void angles_avx2(const float* pairs, std::size_t pixels, float* degrees) {
  angles(pairs, pixels, degrees);
}

[[gnu::target("avx512f,avx512dq,avx512bw,avx512vl")]] void angles_avx512(const float* pairs, std::size_t pixels,
                                                                         float* degrees) {
  angles(pairs, pixels, degrees);
}

using Angles = void (*)(const float*, std::size_t, float*);

/** The best for this processor; all give the same bits. */
Angles choose_angles() {
  if (__builtin_cpu_supports("avx512vl") != 0 && __builtin_cpu_supports("avx512dq") != 0) {
    return angles_avx512;
  }
  return __builtin_cpu_supports("avx2") != 0 ? angles_avx2 : angles_baseline;
}

}  // namespace

void compute_linear_stokes(const MosaicFrame& frame, const Calibration& matrices, int first_row, int end_row,
                           const StokesPlanes& planes) {
  const auto width = static_cast<std::size_t>(frame.width);
  const struct {
    float* plane;
    float factor;
  } wanted[] = {{planes.s0, 0.5F}, {planes.s1, 1.0F}, {planes.s2, 1.0F}};
  for (int y = first_row; y < end_row; ++y) {
    const bool is_last = y + 1 == frame.height;
    const std::uint16_t* const own = frame.pixels + static_cast<std::size_t>(y) * width;
    const RowPair rows{own, is_last ? own - width : own + width};
    const RowMatrices of_row = matrices_of_row(frame, matrices, y);
    for (std::size_t parameter = 0; parameter < 3; ++parameter) {
      const auto& [plane, factor] = wanted[parameter];
      if (plane == nullptr) {
        continue;
      }
      float* const result = plane + static_cast<std::size_t>(y) * width;
      compute_row(rows, width, weights_of(of_row, parameter), factor, result);
      if (is_last && (frame.width % 2 != 0 || frame.height % 2 != 0)) {
        // The library's bottom-right pixel takes the matrix of the top-left one then.
        const StepWeights corner = weights_of(matrices_of_row(frame, matrices, 0), parameter);
        const std::size_t x = width - 1;
        result[x] = factor * weigh(rows.own[x], rows.own[x - 1], rows.partner[x], rows.partner[x - 1], corner, 0);
      }
    }
  }
}

void angles_of_pairs(const float* pairs, std::size_t pixels, float* degrees) {
  static const Angles angles_of = choose_angles();
  angles_of(pairs, pixels, degrees);
}

}  // namespace nerova_zel
