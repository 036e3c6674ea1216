// What a record costs its caller: through the logger's interface, and as the library writes the one of every frame,
// message formatted and all. In the present working directory, whose log and configuration are overwritten.

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include "log_client.h"
#include "nerova_zel/logger.h"
#include "platform/dynamic_library.h"

namespace {

constexpr char configuration_file[] = "nerova_zel_logger.cfg";
constexpr char log_file[] = "logger_cost.log";
constexpr char source_file[] = "nerova_zel_polarization_processor.cpp";
constexpr char function[] = "nv_polarization_processor_transform";
constexpr char message[] = "transform takes 5123.456789 microseconds.";
constexpr int source_line = 190;
constexpr int timing_level = 7;

struct Setting {
  const char* name;
  const char* configuration;
};

constexpr Setting settings[] = {
    {"below-threshold", ""},
    {"flush-record", "level = 7\n"},
    {"flush-record-unrotated", "level = 7\nmax_size = 0\n"},
    {"flush-buffer", "level = 7\nflush = buffer\n"},
    {"flush-disk", "level = 7\nflush = disk\n"},
    {"refused", "level = 7\nfile = missing/folder/a.log\n"},
};

void configure(const Setting& setting) {
  std::ofstream(configuration_file) << "file = " << log_file << '\n' << setting.configuration;
}

void remove_files() {
  for (const char* ending : {"", ".1", ".2", ".3"}) {
    std::filesystem::remove(std::string(log_file) + ending);
  }
}

/** The record of a frame as the library writes it. */
void time_frame_record(benchmark::State& state, const Setting& setting) {
  configure(setting);
  {
    const nerova_zel::LogClient client("BENCHMARK");
    for ([[maybe_unused]] auto _ : state) {
      benchmark::DoNotOptimize(client.log(nerova_zel::LogLevel::Timing, source_file, source_line, function,
                                          "%s takes %f microseconds.", "transform", 5123.456789));
    }
  }
  remove_files();
}

/** zel_log alone, by one or several threads. */
void time_entry(benchmark::State& state, const Setting& setting) {
  static nerova_zel::ModuleHandle module = nullptr;
  static void* log = nullptr;
  static decltype(&zel_log) write = nullptr;
  if (state.thread_index() == 0) {
    configure(setting);
    module = nerova_zel::load_module("nerova_zel_logger");
    const auto get_log = nerova_zel::find_function<decltype(&zel_get_log)>(module, "zel_get_log");
    write = nerova_zel::find_function<decltype(&zel_log)>(module, "zel_log");
    if (get_log == nullptr || write == nullptr) {
      std::abort();
    }
    log = get_log("BENCHMARK", "", configuration_file);
  }
  for ([[maybe_unused]] auto _ : state) {  // which no thread enters before all have come here
    // NOLINTNEXTLINE(clang-analyzer-core.CallAndMessage)
    benchmark::DoNotOptimize(write(log, timing_level, source_file, source_line, function, message));
  }
  if (state.thread_index() == 0) {
    nerova_zel::find_function<decltype(&zel_free_log)>(module, "zel_free_log")("BENCHMARK", "");
    nerova_zel::unload_module(module);
    remove_files();
  }
}

}  // namespace

int main(int argument_count, char** arguments) {
  benchmark::Initialize(&argument_count, arguments);
  if (benchmark::ReportUnrecognizedArguments(argument_count, arguments)) {
    return 1;
  }
  for (const Setting& setting : settings) {
    benchmark::RegisterBenchmark((std::string("frame-record/") + setting.name).c_str(), time_frame_record, setting);
    benchmark::RegisterBenchmark((std::string("zel_log/") + setting.name).c_str(), time_entry, setting)
        ->ThreadRange(1, 2)
        ->UseRealTime();
  }
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  std::filesystem::remove(configuration_file);
  return 0;
}
