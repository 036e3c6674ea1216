#include "prepared_frame.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>
#include <new>
#include <random>
#include <stdexcept>

#include "kernels/shared/default_calibration.h"
#include "kernels/shared/outputs.h"

namespace nerova_zel::benchmark {

namespace {

constexpr std::size_t page = 4096;
constexpr std::int32_t bit_depth = 12;
/** Black samples that begin the first two rows, so that a peer must cope with a power of zero. */
constexpr std::size_t black = 4;

template <class Sample>
void save_image(const std::string& directory, const char* name, const Sample* image, std::size_t count) {
  if (image == nullptr) {
    return;
  }
  std::ofstream file(directory + "/" + name, std::ios::binary);
  file.write(reinterpret_cast<const char*>(image), static_cast<std::streamsize>(count * sizeof(Sample)));
  file.close();
  if (!file) {
    throw std::runtime_error("cannot write " + directory + "/" + name);
  }
}

}  // namespace

void PreparedFrame::Free::operator()(void* pages) const { operator delete (pages, std::align_val_t{page}); }

void* PreparedFrame::allocate(std::size_t bytes) {
  const std::size_t whole_pages = (bytes + page - 1) / page * page;
  pages_.emplace_back(operator new (whole_pages, std::align_val_t{page}));
  std::memset(pages_.back().get(), 0, whole_pages);
  return pages_.back().get();
}

PreparedFrame::PreparedFrame(const FrameCase& c) : parameters_{} {
  std::copy(std::begin(default_matrices), std::end(default_matrices), matrices_);
  for (int parity = 0; parity < 4; ++parity) {
    row_[parity] = &matrices_[phase_matrix_numbers[c.phase][parity]];
  }
  if (c.custom_matrices) {
    for (auto& matrix : matrices_) {
      for (float& weight : matrix.m) {
        weight = weight * 0.98F + 0.01F;
      }
    }
  }
  const auto width = static_cast<std::size_t>(c.width);
  const std::size_t pixels = width * static_cast<std::size_t>(c.height);
  auto* input = static_cast<std::uint16_t*>(allocate(pixels * sizeof(std::uint16_t)));
  std::linear_congruential_engine<std::uint32_t, 1664525, 1013904223, 0> random(1);
  std::generate_n(input, pixels, [&random] { return static_cast<std::uint16_t>(random() >> (32 - bit_depth)); });
  for (const std::size_t row : {std::size_t{0}, width}) {
    std::fill_n(input + row, std::min(black, width), std::uint16_t{0});
  }
  parameters_.height = c.height;
  parameters_.width = c.width;
  parameters_.phase = c.phase;
  parameters_.input = input;
  parameters_.bit_depth = bit_depth;
  parameters_.input_maximum = (1 << bit_depth) - 1;
  parameters_.integer_output_maximum = c.equal_maximum ? (1U << bit_depth) - 1U : 65535U;
  parameters_.output_maximum = static_cast<float>(parameters_.integer_output_maximum);
  Outputs::for_each([&](auto output) {
    using Row = decltype(output);
    if ((c.outputs & output_bit<Row>) != 0) {
      const std::size_t bytes = pixels * (output.is_pair ? 2 : 1) * sizeof(typename Row::Element);
      parameters_.images.*output.image = static_cast<typename Row::Element*>(allocate(bytes));
    }
  });
}

void PreparedFrame::save(const std::string& directory) const {
  const TransformParameters& p = parameters_;
  const std::size_t pixels = static_cast<std::size_t>(p.width) * static_cast<std::size_t>(p.height);
  save_image(directory, "input", p.input, pixels);
  save_image(directory, "normalized_stokes", p.images.normalized_stokes, 2 * pixels);
  save_image(directory, "total_power", p.images.total_power, pixels);
  save_image(directory, "horizontal_vertical", p.images.horizontal_vertical, pixels);
  save_image(directory, "diagonal", p.images.diagonal, pixels);
  save_image(directory, "azimuth", p.images.azimuth, pixels);
  save_image(directory, "degree_of_linear_polarization", p.images.degree_of_linear_polarization, pixels);
}

}  // namespace nerova_zel::benchmark
