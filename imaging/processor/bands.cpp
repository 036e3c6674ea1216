#include "processor/bands.h"

#include <algorithm>
#include <array>
#include <type_traits>

#include "threads.h"

namespace nerova_zel {

namespace {

/** Rows of the call that repairs a seam, and how many of them are kept. */
constexpr std::int32_t seam_rows = 4;
constexpr std::int32_t kept_rows = 2;

template <class Element>
Buffer<Element> from_row(const Buffer<Element>& buffer, std::size_t row_elements, std::int32_t row) {
  return buffer.data() == nullptr ? Buffer<Element>()
                                  : Buffer<Element>(buffer.data() + row_elements * static_cast<std::size_t>(row));
}

/** `from` is even, so that the origin's parity stays. */
Frame rows_of(const Frame& frame, std::int32_t from, std::int32_t to) {
  Frame rows = frame;
  rows.pixels = from_row(frame.pixels, static_cast<std::size_t>(frame.width), from);
  rows.height = to - from;
  return rows;
}

/** Calls `action` with the buffer of each output in both, and its elements in one row. */
template <class Action>
void for_each_output(const Outputs& a, Outputs& b, std::int32_t width, const Action& action) {
  const auto columns = static_cast<std::size_t>(width);
  action(a.normalized_stokes, b.normalized_stokes, 2 * columns);
  action(a.total_power, b.total_power, columns);
  action(a.horizontal_vertical, b.horizontal_vertical, columns);
  action(a.diagonal, b.diagonal, columns);
  action(a.azimuth, b.azimuth, columns);
  action(a.degree_of_linear_polarization, b.degree_of_linear_polarization, columns);
}

Outputs outputs_from_row(const Outputs& outputs, std::int32_t width, std::int32_t row) {
  Outputs rows = outputs;
  for_each_output(outputs, rows, width, [row](const auto& whole, auto& part, std::size_t elements) {
    part = from_row(whole, elements, row);
  });
  return rows;
}

/** Whether every band is refused if the frame is: sizes and equal addresses show in the whole only. */
bool bands_are_alike(const Frame& frame, Outputs outputs) {
  const auto rows = static_cast<std::uint64_t>(frame.height);
  bool alike = frame.pixels.fits(rows * static_cast<std::uint64_t>(frame.width));
  std::vector<const void*> addresses = {frame.pixels.data()};
  for_each_output(outputs, outputs, frame.width, [&](const auto& image, auto&, std::size_t elements) {
    if (image.data() != nullptr) {
      alike = alike && image.fits(rows * elements);
      addresses.push_back(image.data());
    }
  });
  std::sort(addresses.begin(), addresses.end());
  return alike && std::adjacent_find(addresses.begin(), addresses.end()) == addresses.end();
}

/** Room for the images of a seam. */
class Seam {
 public:
  Seam(const Outputs& outputs, std::int32_t width) : width_(width) {
    outputs_.output_maximum = outputs.output_maximum;
    auto code_image = codes_.begin();
    for_each_output(outputs, outputs_, width, [&](const auto& image, auto& room, std::size_t elements) {
      if (image.data() == nullptr) {
        return;
      }
      auto& memory = [&]() -> auto& {
        if constexpr (std::is_same_v<decltype(image.data()), float*>) {
          return stokes_;
        } else {
          return *code_image++;
        }
      }
      ();
      memory.resize(elements * seam_rows);
      room = memory.data();
    });
  }
  Seam(Seam&&) = default;

  /**
   * Computes the last two rows before `row` as they are within the whole frame: a band's own call took its last row for
   * the frame's, and the built-in kernels compute the last two rows of a frame by other rules than the rest.
   */
  void repair(const TransformCall& transform, const Frame& frame, const Outputs& outputs, std::int32_t row) {
    const std::int32_t first = row - kept_rows;
    transform(rows_of(frame, first, first + seam_rows), outputs_);
    Outputs kept = outputs_from_row(outputs, width_, first);
    for_each_output(outputs_, kept, width_, [](const auto& from, auto& to, std::size_t elements) {
      if (from.data() != nullptr) {
        std::copy_n(from.data(), elements * kept_rows, to.data());
      }
    });
  }

 private:
  std::int32_t width_;
  Outputs outputs_;
  std::vector<float> stokes_;
  std::array<std::vector<std::uint16_t>, 5> codes_;
};

}  // namespace

std::vector<std::int32_t> band_limits(std::int32_t height, int bands) {
  const std::int32_t pairs = height / 2;
  const std::int32_t count = std::max(1, std::min(bands, pairs));
  std::vector<std::int32_t> limits;
  limits.reserve(static_cast<std::size_t>(count) + 1);
  for (std::int32_t i = 0; i < count; ++i) {
    limits.push_back(2 * static_cast<std::int32_t>(std::int64_t{pairs} * i / count));
  }
  limits.push_back(height);
  return limits;
}

int bands_worth_a_thread(std::int32_t width, std::int32_t height, int threads) {
  constexpr std::int64_t fewest_pixels = 65536;  // computed in about the time that a thread takes to start
  const std::int64_t bands = std::int64_t{width} * height / fewest_pixels;
  return static_cast<int>(std::max<std::int64_t>(1, std::min<std::int64_t>(threads, bands)));
}

void transform_rows(const TransformCall& transform, const Frame& frame, std::int32_t first_row, std::int32_t end_row,
                    const Outputs& outputs) {
  // The last two rows of a call that is not the frame's last are not those of the frame.
  transform(rows_of(frame, first_row, std::min(end_row + kept_rows, frame.height)), outputs);
}

void transform_in_bands(const TransformCall& transform, const Frame& frame, const Outputs& outputs, int bands,
                        const RowsCall& finish) {
  const std::vector<std::int32_t> limits = band_limits(frame.height, bands);
  const std::size_t count = limits.size() - 1;
  // A frame that one call refuses is left to one call.
  if (count < 2 || frame.width < 2 || frame.pixels.data() == nullptr || !bands_are_alike(frame, outputs)) {
    transform(frame, outputs);
    if (finish) {
      finish(0, frame.height);
    }
    return;
  }
  std::vector<Seam> seams;
  seams.reserve(count - 1);
  while (seams.size() < count - 1) {
    seams.emplace_back(outputs, frame.width);
  }
  on_threads(count, [&](std::size_t band) {
    const std::int32_t first = limits[band];
    const std::int32_t end = limits[band + 1];
    transform(rows_of(frame, first, end), outputs_from_row(outputs, frame.width, first));
    if (band < seams.size()) {
      seams[band].repair(transform, frame, outputs, end);
    }
    if (finish) {
      finish(first, end);
    }
  });
}

}  // namespace nerova_zel
