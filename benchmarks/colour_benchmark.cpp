// How fast azimuth images become colours in each style, on one core. The images hold noise around slopes, as a camera's
// do, so that the look-ups are not all in one place of the tables.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <random>
#include <vector>

#include "azimuth_colours.h"

namespace {

constexpr std::size_t width = 2448;
constexpr std::size_t pixels = width * 2048;

std::vector<std::uint16_t> noisy_slope(unsigned seed) {
  std::mt19937 random(seed);
  std::vector<std::uint16_t> image(pixels);
  for (std::size_t i = 0; i < pixels; ++i) {
    const auto slope = static_cast<unsigned>(i % width * 60000 / width);
    image[i] = static_cast<std::uint16_t>(slope + (random() & 4095U));
  }
  return image;
}

void measure(benchmark::State& state, nerova_zel::AzimuthStyle style) {
  const std::vector<std::uint16_t> azimuth = noisy_slope(1);
  const std::vector<std::uint16_t> degree = noisy_slope(2);
  const std::vector<std::uint16_t> power = noisy_slope(3);
  const nerova_zel::AzimuthColours colours(style, {});
  std::vector<std::uint8_t> picture(3 * pixels);
  for ([[maybe_unused]] auto round : state) {
    colours.paint(azimuth.data(), degree.data(), power.data(), pixels, picture.data());
    benchmark::ClobberMemory();
  }
  state.counters["pixels/s"] =
      benchmark::Counter(static_cast<double>(pixels), benchmark::Counter::kIsIterationInvariantRate);
}

}  // namespace

int main(int argc, char** argv) {
  for (const nerova_zel::NamedAzimuthStyle& known : nerova_zel::azimuth_styles) {
    benchmark::RegisterBenchmark(known.name, measure, known.style);
  }
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
