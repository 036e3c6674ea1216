// Times every route, set of outputs and frame size in one run. Each width of address is a worker process, so the
// 32-bit build stands beside the 64-bit one in the same table.
//
// NEROVA_WORKERS: comma-separated NAME=PROGRAM pairs; default: x86-64 and the worker beside this program.

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <exception>
#include <filesystem>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "kernels/output_set.h"
#include "worker_process.h"

namespace {

using nerova_zel::benchmark::FrameCase;
using nerova_zel::benchmark::WorkerProcess;

struct NamedOutputs {
  const char* name;
  nerova_zel::OutputSet outputs;
};

constexpr NamedOutputs output_sets[] = {
    {"stokes", nerova_zel::output_normalized_stokes},
    {"power", nerova_zel::output_total_power},
    {"hv", nerova_zel::output_horizontal_vertical},
    {"diagonal", nerova_zel::output_diagonal},
    {"azimuth", nerova_zel::output_azimuth},
    {"dolp", nerova_zel::output_degree},
    {"all", nerova_zel::all_outputs},
};

struct Size {
  std::int32_t width;
  std::int32_t height;
};

// A 5-megapixel sensor, and a strip whose input and outputs stay in the second-level cache.
constexpr Size sizes[] = {{2448, 2048}, {640, 64}};

constexpr unsigned pixels_per_measurement = 5'000'000;

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

void register_case(const std::string& platform, WorkerProcess& worker, const char* route, const NamedOutputs& set,
                   Size size, bool equal_maximum) {
  FrameCase frame_case;
  frame_case.route = route;
  frame_case.width = size.width;
  frame_case.height = size.height;
  frame_case.outputs = set.outputs;
  frame_case.equal_maximum = equal_maximum;
  const auto pixels = static_cast<unsigned>(size.width) * static_cast<unsigned>(size.height);
  frame_case.repetitions = pixels_per_measurement / pixels + 1;
  const std::string name = platform + "/" + route + "/" + set.name + "/" + std::to_string(size.width) + "x" +
                           std::to_string(size.height) + (equal_maximum ? "/equal" : "/rescaled");
  benchmark::RegisterBenchmark(name.c_str(),
                               [&worker, frame_case](benchmark::State& state) { time_case(state, worker, frame_case); })
      ->UseManualTime()
      ->Unit(benchmark::kMillisecond)
      ->MinTime(0.05);
}

}  // namespace

int main(int argument_count, char** arguments) {
  benchmark::Initialize(&argument_count, arguments);
  if (benchmark::ReportUnrecognizedArguments(argument_count, arguments)) {
    return 1;
  }
  std::vector<std::unique_ptr<WorkerProcess>> processes;
  for (const auto& [platform, program] : workers(arguments[0])) {
    processes.push_back(std::make_unique<WorkerProcess>(program));
    for (const Size size : sizes) {
      for (const auto& set : output_sets) {
        for (const char* route : {"stream", "stream-uncached", "plain", "sse2", "sse41"}) {
          register_case(platform, *processes.back(), route, set, size, false);
        }
        register_case(platform, *processes.back(), "sse41", set, size, true);
      }
    }
  }
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
