// How fast headerless frames of each pixel format become 16-bit numbers, on one core.
#include "frames/pixel_formats.h"

#include <benchmark/benchmark.h>

#include <vector>

namespace {

constexpr std::size_t pixels = 2448UL * 2048UL;

void measure(benchmark::State& state, nerova_zel::PixelFormat format) {
  const std::vector<unsigned char> bytes(nerova_zel::byte_count(format, pixels), 0x5A);
  std::vector<std::uint16_t> unpacked(pixels);
  for ([[maybe_unused]] auto round : state) {
    nerova_zel::unpack(format, bytes.data(), pixels, unpacked.data());
    benchmark::ClobberMemory();
  }
  state.counters["pixels/s"] =
      benchmark::Counter(static_cast<double>(pixels), benchmark::Counter::kIsIterationInvariantRate);
}

}  // namespace

int main(int argc, char** argv) {
  using nerova_zel::PixelFormat;
  for (const PixelFormat format : {PixelFormat::mono8, PixelFormat::mono10, PixelFormat::mono12, PixelFormat::mono16,
                                   PixelFormat::mono10p, PixelFormat::mono12p, PixelFormat::mono12_packed}) {
    benchmark::RegisterBenchmark(nerova_zel::name_of(format), measure, format);
  }
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
