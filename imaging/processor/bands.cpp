#include "processor/bands.h"

#include <algorithm>
#include <array>
#include <exception>
#include <system_error>
#include <thread>
#include <type_traits>

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

/** Joins on destruction. */
class Threads {
 public:
  ~Threads() {
    for (std::thread& thread : threads_) {
      thread.join();
    }
  }

  /** Runs the work at once where the system has no more threads. */
  template <class Work>
  void run(const Work& work) {
    try {
      threads_.emplace_back(work);
    } catch (const std::system_error&) {
      work();
    }
  }

  void reserve(std::size_t count) { threads_.reserve(count); }

 private:
  std::vector<std::thread> threads_;
};

}  // namespace

std::vector<std::int32_t> band_limits(std::int32_t height, int bands) {
  const std::int32_t pairs = height / 2;
  const std::int32_t count = std::max(1, std::min(bands, pairs));
  std::vector<std::int32_t> limits;
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

void transform_in_bands(const TransformCall& transform, const Frame& frame, const Outputs& outputs, int bands) {
  const std::vector<std::int32_t> limits = band_limits(frame.height, bands);
  const std::size_t count = limits.size() - 1;
  // A frame that one call refuses is left to one call.
  if (count < 2 || frame.width < 2 || frame.pixels.data() == nullptr || !bands_are_alike(frame, outputs)) {
    transform(frame, outputs);
    return;
  }
  std::vector<Seam> seams;
  seams.reserve(count - 1);
  while (seams.size() < count - 1) {
    seams.emplace_back(outputs, frame.width);
  }
  std::vector<std::exception_ptr> failures(count);
  const auto compute_band = [&](std::size_t band) {
    try {
      transform(rows_of(frame, limits[band], limits[band + 1]), outputs_from_row(outputs, frame.width, limits[band]));
      if (band < seams.size()) {
        seams[band].repair(transform, frame, outputs, limits[band + 1]);
      }
    } catch (...) {
      failures[band] = std::current_exception();
    }
  };
  {
    Threads threads;
    threads.reserve(count - 1);
    for (std::size_t band = 1; band < count; ++band) {
      threads.run([&compute_band, band] { compute_band(band); });
    }
    compute_band(0);
  }
  for (const std::exception_ptr& failure : failures) {
    if (failure) {
      std::rethrow_exception(failure);
    }
  }
}

}  // namespace nerova_zel
