#include "frame_case.h"

#include <cstdlib>
#include <cstring>
#include <new>
#include <random>
#include <sstream>
#include <stdexcept>

#include "kernels/output_set.h"

namespace nerova_zel::benchmark {

namespace {

constexpr std::size_t page = 4096;
constexpr std::int32_t bit_depth = 12;

}  // namespace

std::string to_line(const FrameCase& c) {
  std::ostringstream line;
  line << c.route << ' ' << c.width << ' ' << c.height << ' ' << c.outputs << ' ' << c.equal_maximum << ' '
       << c.custom_matrices << ' ' << c.repetitions;
  return line.str();
}

FrameCase from_line(const std::string& line) {
  FrameCase c;
  std::istringstream words(line);
  words >> c.route >> c.width >> c.height >> c.outputs >> c.equal_maximum >> c.custom_matrices >> c.repetitions;
  if (!words) {
    throw std::invalid_argument("not a benchmark case: " + line);
  }
  return c;
}

void PreparedFrame::Free::operator()(void* pages) const { std::free(pages); }

void* PreparedFrame::allocate(std::size_t bytes) {
  const std::size_t whole_pages = (bytes + page - 1) / page * page;
  pages_.emplace_back(std::aligned_alloc(page, whole_pages));
  if (pages_.back() == nullptr) {
    throw std::bad_alloc();
  }
  std::memset(pages_.back().get(), 0, whole_pages);
  return pages_.back().get();
}

PreparedFrame::PreparedFrame(const FrameCase& c)
    : matrices_{{{1, 1, 1, 1, 1, 0, 0, -1, 0, -1, 1, 0}},
                {{1, 1, 1, 1, 0, -1, 1, 0, 1, 0, 0, -1}},
                {{1, 1, 1, 1, -1, 0, 0, 1, 0, 1, -1, 0}},
                {{1, 1, 1, 1, 0, 1, -1, 0, -1, 0, 0, 1}}},
      row_{&matrices_[0], &matrices_[3], &matrices_[1], &matrices_[2]},
      parameters_{} {
  const std::size_t pixels = static_cast<std::size_t>(c.width) * static_cast<std::size_t>(c.height);
  auto* input = static_cast<std::uint16_t*>(allocate(pixels * sizeof(std::uint16_t)));
  std::mt19937 random(1);
  for (std::size_t i = 0; i < pixels; ++i) {
    input[i] = static_cast<std::uint16_t>(random() >> (32 - bit_depth));
  }
  if (c.custom_matrices) {
    for (auto& matrix : matrices_) {
      for (float& weight : matrix.m) {
        weight = weight * 0.98F + 0.01F;
      }
    }
  }
  const auto image = [&](OutputSet output, std::size_t bytes_per_pixel) -> void* {
    return (c.outputs & output) != 0 ? allocate(pixels * bytes_per_pixel) : nullptr;
  };
  parameters_.height = c.height;
  parameters_.width = c.width;
  parameters_.phase = 0;
  parameters_.input = input;
  parameters_.bit_depth = bit_depth;
  parameters_.input_maximum = (1 << bit_depth) - 1;
  parameters_.integer_output_maximum = c.equal_maximum ? (1U << bit_depth) - 1U : 65535U;
  parameters_.output_maximum = static_cast<float>(parameters_.integer_output_maximum);
  parameters_.normalized_stokes = static_cast<float*>(image(output_normalized_stokes, 2 * sizeof(float)));
  parameters_.total_power = static_cast<std::uint16_t*>(image(output_total_power, 2));
  parameters_.horizontal_vertical = static_cast<std::uint16_t*>(image(output_horizontal_vertical, 2));
  parameters_.diagonal = static_cast<std::uint16_t*>(image(output_diagonal, 2));
  parameters_.azimuth = static_cast<std::uint16_t*>(image(output_azimuth, 2));
  parameters_.degree_of_linear_polarization = static_cast<std::uint16_t*>(image(output_degree, 2));
}

}  // namespace nerova_zel::benchmark
