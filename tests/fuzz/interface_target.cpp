// Sequences of calls of the C interface; libFuzzer's options, and --library=PATH --route=sse2|sse41|avx2|avx512
// --stand-in=yes|no: the route that the library beside its companions at PATH takes on this processor, by itself or by
// a stand-in for the AVX-512 plugin. Where it does not, nothing runs and the exit code says so.

#include <dlfcn.h>

#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <stdexcept>
#include <string>

#include "campaign/route_rules.h"
#include "fuzz/call_sequence.h"
#include "support/module_file.h"

namespace nerova_zel::test {
namespace {

struct Target {
  LoadedLibrary library;
  Route route;
  GuardedFrame arena{most_pixels};
  long calls = 0;
  long frames = 0;

  Target(const std::string& path, Route a_route) : library(path), route(a_route) {
    // Companions come and go with every module and processor; kept loaded, they do so in no time, and what counts
    // their coverage stays where it is.
    for (const char* const companion :
         {"logger", "polarization_processor_vector_avx512", "polarization_processor_vector_avx2"}) {
      dlopen((folder_of(path) + "nerova_zel_" + companion + module_ending).c_str(), RTLD_NOW);
    }
  }
};

Target* target = nullptr;
CallSequence* running = nullptr;

void print_totals() {
  std::cerr << target->calls << " calls, " << target->frames << " frames compared with the model\n";
}

std::string option(int argc, char** argv, const std::string& name) {
  for (int i = 1; i < argc; ++i) {
    const std::string argument = argv[i];
    if (argument.rfind("--" + name + "=", 0) == 0) {
      return argument.substr(name.size() + 3);
    }
  }
  throw std::invalid_argument("--" + name + "=... is needed");
}

}  // namespace
}  // namespace nerova_zel::test

nerova_zel::test::LoggerBehaviour& mock_logger_behaviour() { return *nerova_zel::test::running; }

// NOLINTNEXTLINE(readability-identifier-naming): the name is libFuzzer's
extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) {
  using namespace nerova_zel::test;
  try {
    const std::string name = option(*argc, *argv, "route");
    const auto route = route_by_name(name);
    if (!route) {
      throw std::invalid_argument("--route=sse2|sse41|avx2|avx512 is needed");
    }
    const bool stand_in = option(*argc, *argv, "stand-in") == "yes";
    if (const auto reason = why_route_is_not_taken(*route, stand_in)) {
      std::exit(may_skip_route(name, *reason) ? exit_route_not_run : EXIT_FAILURE);
    }
    target = new Target(option(*argc, *argv, "library"), rules_of(*route));  // for as long as the program runs
  } catch (const std::exception& error) {
    std::cerr << "interface_target: " << error.what() << "\n";
    std::exit(EXIT_FAILURE);
  }
  std::atexit(print_totals);
  return 0;
}

// NOLINTNEXTLINE(readability-identifier-naming): the name is libFuzzer's
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using namespace nerova_zel::test;
  FuzzedDataProvider data(bytes, size);
  CallSequence sequence(target->library, target->route, target->arena, data);
  running = &sequence;
  sequence.run();
  running = nullptr;
  target->calls += sequence.calls();
  target->frames += sequence.frames();
  return 0;
}
