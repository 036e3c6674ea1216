// How much of two cores a frame in two bands uses: frames a second by one call after another, in two bands, and by two
// threads that each compute frames of their own, which is the most that two cores give. Usage: nerova_bands_benchmark
// [ROUNDS]
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <functional>
#include <numeric>
#include <set>
#include <thread>
#include <vector>

#include "processor/library.h"
#include "processor/output_images.h"

namespace nerova_zel {
namespace {

constexpr int width = 2448;
constexpr int height = 2048;
constexpr std::size_t pixels = std::size_t{width} * height;

/** A frame with images of its own. */
class Workplace {
 public:
  Workplace(const std::set<Output>& wanted, unsigned seed) : images_(wanted) {
    images_.allocate(width, height);
    for (std::uint16_t& sample : samples_) {
      seed = seed * 1664525U + 1013904223U;
      sample = static_cast<std::uint16_t>(seed >> 20U);
    }
  }

  void compute(const Library& library, int threads) {
    library.transform({samples_, width, height, 0, 0, Phase::degrees_90, 12}, images_.buffers(65535).library, threads);
  }

 private:
  std::vector<std::uint16_t> samples_ = std::vector<std::uint16_t>(pixels);
  OutputImages images_;
};

double frames_per_second(int frames, const std::function<void()>& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return frames / std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void measure(const Library& library, const char* name, const std::set<Output>& wanted, int rounds) {
  constexpr int frames = 40;
  Workplace first(wanted, 1);
  Workplace second(wanted, 2);
  const auto compute = [&library](Workplace& workplace, int count, int threads) {
    for (int i = 0; i < count; ++i) {
      workplace.compute(library, threads);
    }
  };
  double one = 0.0;
  double banded = 0.0;
  double independent = 0.0;
  std::vector<double> shares;
  for (int round = 0; round < rounds; ++round) {
    one = std::max(one, frames_per_second(frames, [&] { compute(first, frames, 1); }));
    const double in_bands = frames_per_second(frames, [&] { compute(first, frames, 2); });
    const double apart = frames_per_second(2 * frames, [&] {
      std::thread other([&] { compute(second, frames, 1); });
      compute(first, frames, 1);
      other.join();
    });
    banded = std::max(banded, in_bands);
    independent = std::max(independent, apart);
    shares.push_back(in_bands / apart);
  }
  std::sort(shares.begin(), shares.end());
  std::printf("%-18s %8.0f %10.0f %12.0f %11.2f %14.2f\n", name, one, banded, independent, banded / independent,
              shares[shares.size() / 2]);
}

}  // namespace
}  // namespace nerova_zel

int main(int argc, char** argv) {
  using nerova_zel::Output;
  const int rounds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 5;
  try {
    const nerova_zel::Library library("");
    std::printf("%d x %d pixels, 12 bits, frames a second, the best of %d interleaved rounds\n", nerova_zel::width,
                nerova_zel::height, rounds);
    std::printf("%-18s %8s %10s %12s %11s %14s\n", "outputs", "one call", "two bands", "two threads", "their share",
                "median round");
    nerova_zel::measure(library, "power", {Output::power}, rounds);
    nerova_zel::measure(library, "azimuth, degree", {Output::azimuth, Output::dolp}, rounds);
    nerova_zel::measure(library, "all six",
                        {Output::stokes, Output::power, Output::hv, Output::diagonal, Output::azimuth, Output::dolp},
                        rounds);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
  return 0;
}
