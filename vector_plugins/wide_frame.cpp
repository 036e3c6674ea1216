#include "wide_frame.h"

#include <algorithm>
#include <cstring>

#include "kernels/compute_pixel.h"
#include "kernels/default_calibration.h"
#include "kernels/kernel_flags.h"
#include "wide_row.h"

namespace nerova_zel {

namespace {

constexpr std::size_t largest_step = 32;

/** A reciprocal as the sum of two floats. */
struct SplitReciprocal {
  float nearest;
  float remainder;
};

SplitReciprocal split_reciprocal(double divisor) {
  const auto nearest = static_cast<float>(1.0 / divisor);
  return {nearest, static_cast<float>(1.0 / divisor - static_cast<double>(nearest))};
}

FrameConstants make_constants(const TransformParameters& parameters) {
  const SplitReciprocal input = split_reciprocal(static_cast<double>(parameters.input_maximum));
  const SplitReciprocal half_turn = split_reciprocal(180.0);
  return {parameters.output_maximum, input.nearest, input.remainder, half_turn.nearest, half_turn.remainder};
}

/** The samples of one step and the right partner of its last pixel. */
struct PaddedSamples {
  std::uint16_t samples[largest_step + 1] = {};

  /** The last samples of a row, mirrored at its right edge. */
  PaddedSamples(const std::uint16_t* from, std::size_t count) {
    std::memcpy(samples, from, count * sizeof(std::uint16_t));
    samples[count] = samples[count - 2];
  }
};

/** The outputs of one step. */
struct StepOutputs {
  float normalized_stokes[2 * largest_step];
  std::uint16_t total_power[largest_step];
  std::uint16_t horizontal_vertical[largest_step];
  std::uint16_t diagonal[largest_step];
  std::uint16_t azimuth[largest_step];
  std::uint16_t degree[largest_step];

  /** The same call with these as its images. */
  TransformParameters in_place_of(const TransformParameters& parameters) {
    TransformParameters redirected = parameters;
    redirected.normalized_stokes = normalized_stokes;
    redirected.total_power = total_power;
    redirected.horizontal_vertical = horizontal_vertical;
    redirected.diagonal = diagonal;
    redirected.azimuth = azimuth;
    redirected.degree_of_linear_polarization = degree;
    return redirected;
  }

  /** Copies the first pixels of each wanted output to its image. */
  void copy_to(const TransformParameters& images, std::size_t element, std::size_t pixels) const {
    copy(images.normalized_stokes, 2 * element, normalized_stokes, 2 * pixels);
    copy(images.total_power, element, total_power, pixels);
    copy(images.horizontal_vertical, element, horizontal_vertical, pixels);
    copy(images.diagonal, element, diagonal, pixels);
    copy(images.azimuth, element, azimuth, pixels);
    copy(images.degree_of_linear_polarization, element, degree, pixels);
  }

 private:
  template <class Element>
  static void copy(Element* image, std::size_t element, const Element* from, std::size_t count) {
    if (image != nullptr) {
      std::memcpy(image + element, from, count * sizeof(Element));
    }
  }
};

/** One row with its partner row: the one below, or the one above for the last row. */
struct Row {
  std::size_t y;
  const std::uint16_t* own;
  const std::uint16_t* partner;
  std::size_t element;  ///< of its first pixel
  WideRow compute;
  const CalibrationMatrix* even_matrix;
  const CalibrationMatrix* odd_matrix;
};

/** One frame in the course of its computation. */
class WideFrame {
 public:
  WideFrame(const TransformParameters& parameters, MatrixRow matrices)
      : parameters_(parameters),
        matrices_(matrices),
        views_(make_image_views(parameters)),
        constants_(make_constants(parameters)),
        width_(static_cast<std::size_t>(parameters.width)),
        height_(static_cast<std::size_t>(parameters.height)) {
    const unsigned selection = pack_flags(kernel_flags(parameters, false)) % pixel_selection_count;
    compute_pixel_ = compute_pixel_table.routines[selection];
    const PolarPhase phase = std::max(parameters.phase, 0);
    // Below a full scale of 7 a power may outgrow 32 bits before it is clamped.
    if (is_default_calibration(phase, matrices) && parameters.bit_depth >= 3) {
      static constexpr const WideRowTable* tables[phase_count] = {&default_wide_rows_0, &default_wide_rows_1,
                                                                  &default_wide_rows_2, &default_wide_rows_3};
      const OutputSet outputs = pixel_selection(selection).outputs;
      rows_[0] = tables[distinct_angle(phase, outputs)]->rows[selection];
      // An odd row begins with the other polarizer of the first column: 0 and 45, 90 and 135 degrees share one.
      rows_[1] = tables[distinct_angle(phase ^ 1, outputs)]->rows[selection];
    } else {
      rows_[0] = calibrated_wide_rows.rows[selection];
      rows_[1] = rows_[0];
    }
  }

  void compute() const {
    // Full scale 0 leaves no reciprocal to work with; such frames hold nothing to hurry for.
    if (parameters_.bit_depth == 0) {
      compute_by_pixels();
      return;
    }
    const bool narrow = width_ % 2 == 0 ? width_ < wide_step_pixels : width_ <= wide_step_pixels;
    for (std::size_t y = 0; y < height_; ++y) {
      const Row row = make_row(y);
      if (narrow) {
        compute_narrow(row);
      } else {
        compute_wide(row);
      }
    }
    if (width_ % 2 != 0 || height_ % 2 != 0) {
      compute_pixel(height_ - 1, width_ - 1);
    }
  }

 private:
  Row make_row(std::size_t y) const {
    const std::size_t partner = y + 1 < height_ ? y + 1 : y - 1;
    return {y,
            parameters_.input + y * width_,
            parameters_.input + partner * width_,
            y * width_,
            rows_[y % 2],
            matrices_[2 * (y % 2)],
            matrices_[2 * (y % 2) + 1]};
  }

  void stretch(const Row& row, const std::uint16_t* own, const std::uint16_t* partner, std::size_t first_column,
               std::size_t pixels) const {
    row.compute(parameters_, constants_,
                {own, partner, row.element + first_column, pixels, row.even_matrix, row.odd_matrix});
  }

  /** Whole steps while their right partners lie in the row; the last step overlaps the one before. */
  void compute_wide(const Row& row) const {
    const std::size_t whole_steps = (width_ - 1) / wide_step_pixels * wide_step_pixels;
    if (whole_steps != 0) {
      stretch(row, row.own, row.partner, 0, whole_steps);
    }
    if (width_ % 2 == 0) {
      const std::size_t x = width_ - wide_step_pixels;
      stretch(row, PaddedSamples(row.own + x, wide_step_pixels).samples,
              PaddedSamples(row.partner + x, wide_step_pixels).samples, x, wide_step_pixels);
      return;
    }
    if (whole_steps != width_ - 1) {
      const std::size_t x = width_ - 1 - wide_step_pixels;
      stretch(row, row.own + x, row.partner + x, x, wide_step_pixels);
    }
    compute_pixel(row.y, width_ - 1);
  }

  /** A row shorter than a step, computed beside the images and copied into them. */
  void compute_narrow(const Row& row) const {
    StepOutputs outputs;
    row.compute(outputs.in_place_of(parameters_), constants_,
                {PaddedSamples(row.own, width_).samples, PaddedSamples(row.partner, width_).samples, 0,
                 wide_step_pixels, row.even_matrix, row.odd_matrix});
    outputs.copy_to(parameters_, row.element, width_);
  }

  void compute_by_pixels() const {
    for (std::size_t y = 0; y < height_; ++y) {
      for (std::size_t x = 0; x < width_; ++x) {
        compute_pixel(y, x);
      }
    }
  }

  void compute_pixel(std::size_t y, std::size_t x) const {
    const bool last_row = y == height_ - 1;
    const bool last_column = x == width_ - 1;
    // The corner of a frame with an odd side takes matrix 0, whatever its parity.
    const bool odd_corner = last_row && last_column && (width_ % 2 != 0 || height_ % 2 != 0);
    const std::size_t matrix = odd_corner ? 0 : 2 * (y % 2) + x % 2;
    const auto shape = static_cast<NeighbourhoodShape>((last_row ? 2U : 0U) | (last_column ? 1U : 0U));
    compute_pixel_(static_cast<std::uint32_t>(y), static_cast<std::uint32_t>(x), *matrices_[matrix], parameters_,
                   views_, shape);
  }

  const TransformParameters& parameters_;
  MatrixRow matrices_;
  ImageViews views_;
  FrameConstants constants_;
  std::size_t width_;
  std::size_t height_;
  ComputePixel compute_pixel_;
  WideRow rows_[2];  ///< by the row's parity
};

}  // namespace

void compute_wide_frame(const TransformParameters& parameters, MatrixRow matrices) {
  WideFrame(parameters, matrices).compute();
}

}  // namespace nerova_zel
