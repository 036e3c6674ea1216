// How fast a colour frame is taken apart and put together, beside copying the same bytes, on one core.
#include <benchmark/benchmark.h>

#include <cstring>
#include <vector>

#include "frames/colour_interpolation.h"
#include "frames/colour_mosaic.h"

namespace {

using namespace nerova_zel;

constexpr FrameSize size{2448, 2048};
constexpr std::size_t pixels = 2448UL * 2048UL;
using Image = std::vector<std::uint16_t>;

void show_rate(benchmark::State& state) {
  state.counters["pixels/s"] =
      benchmark::Counter(static_cast<double>(pixels), benchmark::Counter::kIsIterationInvariantRate);
}

void copy(benchmark::State& state) {
  const Image frame(pixels, 1);
  Image other(pixels);
  for ([[maybe_unused]] auto round : state) {
    std::memcpy(other.data(), frame.data(), 2 * pixels);
    benchmark::ClobberMemory();
  }
  show_rate(state);
}

/** A mosaic and its planes in memory. */
struct Planes {
  explicit Planes(int origin) : mosaic(ColourPattern::rggb, {origin, origin}, size) {
    for (std::size_t i = 0; i < colour_plane_count; ++i) {
      const FrameSize half = mosaic.plane_size(colour_planes[i]);
      images[i].resize(static_cast<std::size_t>(half.width) * static_cast<std::size_t>(half.height), 1);
      writable[i] = images[i].data();
      constant[i] = images[i].data();
    }
  }

  ColourMosaic mosaic;
  PerPlane<Image> images;
  PerPlane<std::uint16_t*> writable{};
  PerPlane<const std::uint16_t*> constant{};
};

void split(benchmark::State& state, int origin) {
  const Image frame(pixels, 1);
  const Planes planes(origin);
  for ([[maybe_unused]] auto round : state) {
    planes.mosaic.split(frame.data(), planes.writable);
    benchmark::ClobberMemory();
  }
  show_rate(state);
}

void join(benchmark::State& state) {
  Image frame(pixels);
  const Planes planes(0);
  for ([[maybe_unused]] auto round : state) {
    planes.mosaic.join(planes.constant, frame.data());
    benchmark::ClobberMemory();
  }
  show_rate(state);
}

/** Four mosaics of the frame's size. */
void interpolate(benchmark::State& state) {
  const Image frame(pixels, 1);
  const Planes planes(0);
  Image whole(pixels);
  for ([[maybe_unused]] auto round : state) {
    planes.mosaic.split(frame.data(), planes.writable);
    for (const ColourPlane plane : colour_planes) {
      interpolate_plane(planes.mosaic, plane, planes.constant[static_cast<std::size_t>(plane)], whole.data());
      benchmark::ClobberMemory();
    }
  }
  show_rate(state);
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::RegisterBenchmark("copy", copy);
  benchmark::RegisterBenchmark("split", split, 0);
  benchmark::RegisterBenchmark("split at an odd origin", split, 1);
  benchmark::RegisterBenchmark("join", join);
  benchmark::RegisterBenchmark("split and interpolate", interpolate);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
