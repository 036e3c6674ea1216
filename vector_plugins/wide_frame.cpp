#include "wide_frame.h"

#include <x86intrin.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "kernels/shared/compute_pixel.h"
#include "kernels/shared/default_calibration.h"
#include "kernels/shared/kernel_flags.h"
#include "wide_row.h"

namespace nerova_zel {

namespace {

constexpr std::size_t cache_line = 64;

/** Smaller images belong into the caches. */
constexpr std::size_t fewest_streamed_bytes = std::size_t{8} << 20U;

/** The image that rows may store past the caches. */
struct StreamedImage {
  std::uintptr_t address;
  std::size_t pixel_bytes;

  /** The Stokes pairs, or else one of the 16-bit outputs. */
  static StreamedImage of(const OutputImages& images) {
    static_assert(output_index<NormalizedStokesOutput> == 0, "found first");
    StreamedImage found = {0, sizeof(std::uint16_t)};
    Outputs::for_each([&](auto output) {
      auto* const image = images.*output.image;
      if (image != nullptr && found.address == 0) {
        found = {reinterpret_cast<std::uintptr_t>(image), (output.is_pair ? 2 : 1) * sizeof(*image)};
      }
    });
    return found;
  }
};

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

/**
 * Whether every weight is 0 or of a magnitude from 2^-40 up to where a linear output would outgrow 32 bits. A Stokes
 * parameter is then 0 or at least 2^-63, the last place of the smallest product, and below 2^31.
 */
bool ordinary_weights(const TransformParameters& parameters, MatrixRow matrices) {
  constexpr float smallest = 0x1p-40F;
  const float largest = 0x1p13F * std::min(1.0F, parameters.input_maximum / parameters.output_maximum);
  for (int parity = 0; parity < 4; ++parity) {
    for (int i = 0; i < 12; ++i) {
      const float magnitude = std::abs(matrices[parity]->m[i]);
      if (magnitude != 0.0F && !(magnitude >= smallest && magnitude < largest)) {
        return false;
      }
    }
  }
  return true;
}

/** Copies 4 bytes or more, an even number; for the few of a step without a call. */
void copy_short(void* to, const void* from, std::size_t bytes) {
  auto* const target = static_cast<char*>(to);
  const auto* const source = static_cast<const char*>(from);
  const auto copy = [&](auto size) {
    for (std::size_t i = 0; i + size < bytes; i += size) {
      std::memcpy(target + i, source + i, size);
    }
    std::memcpy(target + bytes - size, source + bytes - size, size);
  };
  if (bytes >= 16) {
    copy(std::integral_constant<std::size_t, 16>());
  } else {
    copy(std::integral_constant<std::size_t, 4>());
  }
}

/** The last samples of a row, mirrored at its right edge: a step and the right partner of its last pixel. */
struct RowEnd {
  std::uint16_t samples[largest_step + 1] = {};

  void copy(const std::uint16_t* from, std::size_t count) {
    copy_short(samples, from, count * sizeof(std::uint16_t));
    samples[count] = samples[count - 2];
  }
};

/** A call of one step whose outputs are kept beside the images. */
class StepAside {
 public:
  explicit StepAside(const TransformParameters& parameters) : images_(parameters.images), call_(parameters) {
    Outputs::for_each([&](auto output) { call_.images.*output.image = place(output); });
  }
  StepAside(const StepAside&) = delete;
  StepAside& operator=(const StepAside&) = delete;

  /** To be given to the code of a row, with element 0. */
  const TransformParameters& call() const { return call_; }

  /** Copies pixels of each wanted output, from the first of the step on, to its image. */
  void copy(std::size_t first, std::size_t pixels, std::size_t element) {
    Outputs::for_each([&](auto output) {
      constexpr std::size_t elements = output.is_pair ? 2 : 1;
      if (auto* const image = images_.*output.image) {
        copy_short(image + elements * element, place(output) + elements * first, elements * pixels * sizeof(*image));
      }
    });
  }

 private:
  template <class Output>
  typename Output::Element* place(Output /*output*/) {
    if constexpr (Output::is_pair) {
      return pairs_;
    } else {
      return results_[output_index<Output>];
    }
  }

  const OutputImages& images_;
  TransformParameters call_;
  float pairs_[2 * largest_step];
  std::uint16_t results_[Outputs::count][largest_step];
};

/** The code of a row, and the same that streams or NULL. */
struct RowCode {
  WideRow plain;
  WideRow streaming;

  static RowCode of(const WideRowTable& table, unsigned selection, bool streams) {
    return {table.rows[selection], streams ? table.streaming_rows[selection] : nullptr};
  }
};

/**
 * Whether stores past the caches are faster depends on the machine, and neither its model nor the sizes of its caches
 * tell. So the first rows of a frame try both forms in turns, by the processor's own clock.
 */
class StoreTrial {
 public:
  /** Whether a row is to be streamed. Asked once for each row, from the first on. */
  bool streams(std::size_t y) {
    if (y % rows_of_turn == 0 && y <= turns * rows_of_turn) {
      begin_turn(y / rows_of_turn);
    }
    return streams_;
  }

 private:
  static constexpr std::size_t rows_of_turn = 16;
  static constexpr std::size_t turns = 4;

  void begin_turn(std::size_t turn) {
    const std::uint64_t now = __rdtsc();
    if (turn != 0) {
      fastest_[streams_ ? 1 : 0] = std::min(fastest_[streams_ ? 1 : 0], now - begin_);
    }
    begin_ = now;
    // Images that stay in the caches are found there by who reads them.
    constexpr std::uint64_t clearly = 32;
    streams_ = turn < turns ? turn % 2 != 0 : fastest_[1] + fastest_[1] / clearly < fastest_[0];
  }

  bool streams_ = false;
  std::uint64_t begin_ = 0;
  std::uint64_t fastest_[2] = {UINT64_MAX, UINT64_MAX};  ///< ticks of a turn: plain, streamed
};

/** One row with its partner row: the one below, or the one above for the last row. */
struct Row {
  std::size_t y;
  const std::uint16_t* own;
  const std::uint16_t* partner;
  std::size_t element;  ///< of its first pixel
  RowCode code;
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
        height_(static_cast<std::size_t>(parameters.height)),
        step_pixels_(calibrated_wide_rows.step_pixels),
        streamed_(StreamedImage::of(parameters.images)),
        streamed_unit_(std::min(cache_line, step_pixels_ * streamed_.pixel_bytes)),
        narrow_(width_ % 2 == 0 ? width_ < step_pixels_ : width_ <= step_pixels_) {
    const unsigned selection = pack_flags(kernel_flags(parameters, false)) % pixel_selection_count;
    compute_pixel_ = compute_pixel_table.routines[selection];
    const PolarPhase phase = std::max(parameters.phase, 0);
    const bool streams = width_ * height_ * streamed_.pixel_bytes >= fewest_streamed_bytes;
    // Below a full scale of 7 a power may outgrow 32 bits before it is clamped.
    if (is_default_calibration(phase, matrices) && parameters.bit_depth >= 3) {
      static constexpr const WideRowTable* tables[phase_count] = {&default_wide_rows_0, &default_wide_rows_1,
                                                                  &default_wide_rows_2, &default_wide_rows_3};
      const OutputSet outputs = pixel_selection(selection).outputs;
      code_[0] = RowCode::of(*tables[distinct_angle(phase, outputs)], selection, streams);
      // An odd row begins with the other polarizer of the first column: 0 and 45, 90 and 135 degrees share one.
      code_[1] = RowCode::of(*tables[distinct_angle(phase ^ 1, outputs)], selection, streams);
    } else {
      const bool ordinary = ordinary_weights(parameters, matrices);
      code_[0] = RowCode::of(ordinary ? ordinary_wide_rows : calibrated_wide_rows, selection, streams);
      code_[1] = code_[0];
    }
  }

  void compute() const {
    // Full scale 0 has no reciprocal; such frames need not be fast.
    if (parameters_.bit_depth == 0) {
      compute_by_pixels();
      return;
    }
    if (narrow_) {
      compute_narrow_rows();
    } else {
      compute_wide_rows();
    }
    if (width_ % 2 != 0 || height_ % 2 != 0) {
      compute_pixel(height_ - 1, width_ - 1);
    }
  }

 private:
  /** The ends of a row and of its partner row, copied a row ahead of their use: read at once, they would have to wait.
   */
  class RowEnds {
   public:
    explicit RowEnds(const WideFrame& frame) : frame_(frame) { copy(0); }

    /** Rows from the first to the last; then both() is valid for this row. */
    void advance_to(std::size_t y) {
      if (y + 1 < frame_.height_) {
        copy(y + 1);
      }
    }
    const std::uint16_t* own(std::size_t y) const { return ends_[y % 2].samples; }
    const std::uint16_t* partner(std::size_t y) const { return ends_[(y + 1) % 2].samples; }

   private:
    void copy(std::size_t y) {
      const std::size_t count = std::min(frame_.width_, frame_.step_pixels_);
      ends_[y % 2].copy(frame_.parameters_.input + (y + 1) * frame_.width_ - count, count);
    }

    const WideFrame& frame_;
    RowEnd ends_[2];
  };

  Row make_row(std::size_t y) const {
    const std::size_t partner = y + 1 < height_ ? y + 1 : y - 1;
    return {y,
            parameters_.input + y * width_,
            parameters_.input + partner * width_,
            y * width_,
            code_[y % 2],
            matrices_[2 * (y % 2)],
            matrices_[2 * (y % 2) + 1]};
  }

  /** Bytes of the streamed image before a pixel, since a streamed stretch could have begun. */
  std::size_t beyond_unit(const Row& row, std::size_t column) const {
    return (streamed_.address + (row.element + column) * streamed_.pixel_bytes) % streamed_unit_;
  }

  /** The first column at which a streamed stretch may begin, less than a step from the left; the width if there is
   * none.
   */
  std::size_t first_streamed_column(const Row& row) const {
    const std::size_t beyond = beyond_unit(row, 0);
    if (beyond % (2 * streamed_.pixel_bytes) != 0) {
      return width_;
    }
    return beyond == 0 ? 0 : (streamed_unit_ - beyond) / streamed_.pixel_bytes;
  }

  void compute_wide_rows() const {
    RowEnds ends(*this);
    StoreTrial trial;
    StepAside aside(parameters_);
    for (std::size_t y = 0; y < height_; ++y) {
      ends.advance_to(y);
      const Row row = make_row(y);
      const bool streams = row.code.streaming != nullptr && trial.streams(y);
      const std::size_t first = streams ? first_streamed_column(row) : width_;
      if (first + 2 * step_pixels_ <= width_) {
        compute_streamed_steps(row, ends, first, aside);
      } else {
        row.code.plain(parameters_, constants_, stretch_from(row, 0, &ends));
      }
      if (width_ % 2 != 0) {
        compute_pixel(y, width_ - 1);
      }
    }
    if (code_[0].streaming != nullptr) {
      _mm_sfence();
    }
  }

  /**
   * Whole steps from a column on while their right partners lie in the row and, unless ends is NULL, a last one that
   * overlaps the one before.
   */
  RowStretch stretch_from(const Row& row, std::size_t first, const RowEnds* ends) const {
    const std::size_t whole_steps = (width_ - 1 - first) / step_pixels_ * step_pixels_;
    RowStretch stretch = {
        row.own + first, row.partner + first, row.element + first, whole_steps, row.even_matrix, row.odd_matrix, {}};
    if (ends != nullptr && first + whole_steps != last_column() + step_pixels_) {
      stretch.last = last_step(row, *ends, first);
    }
    return stretch;
  }

  /** Of the last step of a row. */
  std::size_t last_column() const { return width_ - (width_ % 2 == 0 ? 0 : 1) - step_pixels_; }

  LastStep last_step(const Row& row, const RowEnds& ends, std::size_t first) const {
    const std::size_t column = last_column();
    // One by one: the row reads each by itself, and would have to wait for what two of them were stored together.
    const bool mirrors = width_ % 2 == 0;
    return {mirrors ? ends.own(row.y) : row.own + column, mirrors ? ends.partner(row.y) : row.partner + column,
            column - first};
  }

  /** A line that is both stored and streamed goes to memory and back: ends of a row that fill none are copied. */
  void compute_streamed_steps(const Row& row, const RowEnds& ends, std::size_t first, StepAside& aside) const {
    const std::size_t last = last_column();
    const bool last_streamed = beyond_unit(row, last) == 0;
    if (first != 0) {
      compute_aside(row, row.own, row.partner, aside);
      aside.copy(0, first, row.element);
    }
    const RowStretch stretch = stretch_from(row, first, last_streamed ? &ends : nullptr);
    row.code.streaming(parameters_, constants_, stretch);
    const std::size_t computed = first + stretch.pixels;
    const std::size_t end = last + step_pixels_;
    if (!last_streamed && computed != end) {
      const LastStep step = last_step(row, ends, 0);
      compute_aside(row, step.own, step.partner, aside);
      aside.copy(computed - last, end - computed, row.element + computed);
    }
  }

  void compute_aside(const Row& row, const std::uint16_t* own, const std::uint16_t* partner,
                     const StepAside& aside) const {
    row.code.plain(aside.call(), constants_, {own, partner, 0, step_pixels_, row.even_matrix, row.odd_matrix, {}});
  }

  /** Rows shorter than a step, computed beside the images and copied into them. */
  void compute_narrow_rows() const {
    RowEnds ends(*this);
    StepAside aside(parameters_);
    for (std::size_t y = 0; y < height_; ++y) {
      ends.advance_to(y);
      const Row row = make_row(y);
      compute_aside(row, ends.own(y), ends.partner(y), aside);
      aside.copy(0, width_, row.element);
    }
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
  std::size_t step_pixels_;
  StreamedImage streamed_;
  std::size_t streamed_unit_;  ///< at a multiple of which a streamed stretch begins
  bool narrow_;                ///< rows are shorter than a step
  ComputePixel compute_pixel_;
  RowCode code_[2];  ///< by the row's parity
};

}  // namespace

void compute_wide_frame(const TransformParameters& parameters, MatrixRow matrices) {
  WideFrame(parameters, matrices).compute();
}

}  // namespace nerova_zel
