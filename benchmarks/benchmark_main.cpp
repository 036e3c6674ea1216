// Times every route, set of outputs and frame size in one run. Each width of address is a worker process, so the
// 32-bit build stands beside the 64-bit one in the same table; so is each peer in another language.
//
// NEROVA_WORKERS: comma-separated NAME=PROGRAM pairs; default: x86-64 and the worker beside this program.
// Names of cases: worker/route/outputs/size/maxima/matrices.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <iterator>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "kernels/shared/outputs.h"
#include "worker_process.h"

namespace {

using nerova_zel::benchmark::FrameCase;
using nerova_zel::benchmark::WorkerProcess;

struct NamedOutputs {
  const char* name;
  nerova_zel::OutputSet outputs;
};

constexpr NamedOutputs output_sets[] = {
    {"stokes", nerova_zel::output_bit<nerova_zel::NormalizedStokesOutput>},
    {"power", nerova_zel::output_bit<nerova_zel::TotalPowerOutput>},
    {"hv", nerova_zel::output_bit<nerova_zel::HorizontalVerticalOutput>},
    {"diagonal", nerova_zel::output_bit<nerova_zel::DiagonalOutput>},
    {"azimuth", nerova_zel::output_bit<nerova_zel::AzimuthOutput>},
    {"dolp", nerova_zel::output_bit<nerova_zel::DegreeOutput>},
    {"direction", nerova_zel::output_bit<nerova_zel::AzimuthOutput> | nerova_zel::output_bit<nerova_zel::DegreeOutput>},
    {"five", nerova_zel::all_outputs & ~nerova_zel::output_bit<nerova_zel::NormalizedStokesOutput>},
    {"all", nerova_zel::all_outputs},
};

struct Size {
  std::int32_t width;
  std::int32_t height;

  double pixels() const { return static_cast<double>(width) * height; }
};

// A 5-megapixel sensor, and a strip whose input and outputs stay in the second-level cache.
constexpr Size sizes[] = {{2448, 2048}, {640, 64}};

// For the growth of the cost.
constexpr std::int32_t smallest_side = 16;
constexpr std::int32_t largest_side = 8192;
constexpr std::int32_t largest_peer_side = 2048;

// The smallest frame, for the cost of a call as such.
constexpr Size smallest = {2, 2};

constexpr double pixels_per_batch = 2.5e6;
constexpr double most_calls = 2000;

struct Variant {
  bool equal_maximum;
  bool custom_matrices;
};

/** Only the library's routes use the maxima, and only the plugins the matrices in the whole frame. */
std::vector<Variant> variants(const std::string& route) {
  if (route == "avx2" || route == "avx512") {
    return {{false, false}, {true, false}, {false, true}, {true, true}};
  }
  if (route == "sse2" || route == "sse41") {
    return {{false, false}, {true, false}};
  }
  return {{false, false}};
}

bool is_one_of(const std::string& route, std::initializer_list<const char*> names) {
  return std::find(names.begin(), names.end(), route) != names.end();
}

std::map<std::string, std::string> workers(const char* program) {
  std::map<std::string, std::string> found;
  const char* named = std::getenv("NEROVA_WORKERS");
  if (named == nullptr) {
    found["x86-64"] = (std::filesystem::path(program).parent_path() / "nerova_frame_worker").string();
    return found;
  }
  std::istringstream pairs(named);
  for (std::string pair; std::getline(pairs, pair, ',');) {
    const auto equals = pair.find('=');
    found[pair.substr(0, equals)] = pair.substr(equals + 1);
  }
  return found;
}

void time_case(benchmark::State& state, WorkerProcess& worker, const FrameCase& frame_case) {
  const double pixels = static_cast<double>(frame_case.width) * frame_case.height;
  try {
    for ([[maybe_unused]] auto _ : state) {
      state.SetIterationTime(worker.measure(frame_case));
    }
  } catch (const std::exception& error) {
    state.SkipWithError(error.what());
  }
  state.counters["Mpixel/s"] =
      benchmark::Counter(pixels * 1e-6, benchmark::Counter::kIsIterationInvariantRate, benchmark::Counter::kIs1000);
}

/** The cases of one route of one worker. */
class RouteCases {
 public:
  RouteCases(std::string worker_name, WorkerProcess& worker, std::string route)
      : worker_name_(std::move(worker_name)), worker_(worker), route_(std::move(route)) {}

  void add_all() const {
    if (is_one_of(route_, {"library", "library-alone", "sse41", "avx2", "avx512", "cpu-question", "cycles"})) {
      add(output_sets[std::size(output_sets) - 1], smallest, {});
    }
    if (is_one_of(route_, {"cpu-question", "cycles", "library-alone"})) {
      return;
    }
    if (route_ != "sse2") {
      add_growth();
    }
    if (route_ == "library") {
      return;
    }
    for (const Size size : sizes) {
      for (const auto& set : output_sets) {
        for (const Variant variant : variants(route_)) {
          add(set, size, variant);
        }
      }
    }
  }

 private:
  void add_growth() const {
    const std::int32_t largest = is_one_of(route_, {"plain", "opencv", "numpy"}) ? largest_peer_side : largest_side;
    for (std::int32_t side = smallest_side; side <= largest; side *= 2) {
      add(output_sets[std::size(output_sets) - 1], {side, side}, {});
    }
  }

  void add(const NamedOutputs& set, Size size, Variant variant) const {
    FrameCase frame_case;
    frame_case.route = route_;
    frame_case.width = size.width;
    frame_case.height = size.height;
    frame_case.outputs = set.outputs;
    frame_case.equal_maximum = variant.equal_maximum;
    frame_case.custom_matrices = variant.custom_matrices;
    frame_case.repetitions = static_cast<unsigned>(std::clamp(pixels_per_batch / size.pixels(), 1.0, most_calls));
    const std::string name = worker_name_ + "/" + route_ + "/" + set.name + "/" + std::to_string(size.width) + "x" +
                             std::to_string(size.height) + (variant.equal_maximum ? "/equal" : "/rescaled") +
                             (variant.custom_matrices ? "/custom" : "/default");
    benchmark::RegisterBenchmark(name.c_str(), [&worker = worker_, frame_case](
                                                   benchmark::State& state) { time_case(state, worker, frame_case); })
        ->UseManualTime()
        ->Unit(benchmark::kMicrosecond)
        ->Iterations(1);
  }

  std::string worker_name_;
  WorkerProcess& worker_;
  std::string route_;
};

}  // namespace

int main(int argument_count, char** arguments) {
  benchmark::Initialize(&argument_count, arguments);
  if (benchmark::ReportUnrecognizedArguments(argument_count, arguments)) {
    return 1;
  }
  std::vector<std::unique_ptr<WorkerProcess>> processes;
  for (const auto& [name, program] : workers(arguments[0])) {
    processes.push_back(std::make_unique<WorkerProcess>(program));
    for (const std::string& route : processes.back()->routes()) {
      RouteCases(name, *processes.back(), route).add_all();
    }
  }
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
