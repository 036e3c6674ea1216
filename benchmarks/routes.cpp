#include "routes.h"

#include <cstdint>
#include <map>
#include <stdexcept>

#include "cpu_features.h"
#include "kernels/built_in/kernel_selection.h"
#include "nerova_zel/polarization_processor.h"
#include "peers/plain_loop.h"
#include "streaming_limit.h"
#include "support/module_file.h"
#ifdef NEROVA_OPENCV_PEER
#include "peers/opencv_functions.h"
#endif

namespace nerova_zel::benchmark {

namespace {

/** A file that stays loaded. */
class Module {
 public:
  explicit Module(const std::string& path) : module_(test::open_module(path)) {}

  template <class Function>
  Function* find(const std::string& name) const {
    auto* const function = reinterpret_cast<Function*>(test::find_name(module_, name.c_str()));
    if (function == nullptr) {
      throw std::runtime_error("no entry " + name);
    }
    return function;
  }

 private:
  void* module_;
};

Route built_in_route(bool sse41) {
  if (sse41 && !cpu_has_sse41()) {
    throw std::runtime_error("this processor has no SSE4.1");
  }
  return
      [sse41](const TransformParameters& parameters, MatrixRow matrices) { run_built_in(parameters, matrices, sse41); };
}

Route plugin_route(const char* path, const std::string& set) {
  const Module plugin(path);
  if (plugin.find<std::int32_t()>("nv_polarization_processor_vector_" + set + "_module_initialize")() != 0) {
    throw std::runtime_error("the " + set + " plugin does not run here");
  }
  auto* const transform =
      plugin.find<void(const TransformParameters*, MatrixRow)>("nv_polarization_processor_transform_vector_" + set);
  return [transform](const TransformParameters& parameters, MatrixRow matrices) { transform(&parameters, matrices); };
}

/** The processor lives as long as this process. */
Route library_route(const char* path) {
  const Module library(path);
  library.find<decltype(nv_polarization_processor_module_initialize)>("nv_polarization_processor_module_initialize")();
  nv_polarization_processor* processor = nullptr;
  if (library.find<decltype(nv_polarization_processor_create_polarization_processor)>(
          "nv_polarization_processor_create_polarization_processor")(&processor) != 0) {
    throw std::runtime_error("the library makes no processor");
  }
  auto* const transform =
      library.find<decltype(nv_polarization_processor_transform)>("nv_polarization_processor_transform");
  return [transform, processor](const TransformParameters& p, MatrixRow /*matrices*/) {
    transform(processor, p.phase, p.input, 0, 0, p.width, p.height, p.bit_depth,
              static_cast<std::uint16_t>(p.integer_output_maximum), p.images.normalized_stokes, p.images.total_power,
              p.images.horizontal_vertical, p.images.diagonal, p.images.azimuth,
              p.images.degree_of_linear_polarization);
  };
}

template <void (*fill)(const TransformParameters&)>
Route without_matrices() {
  return [](const TransformParameters& parameters, MatrixRow /*matrices*/) { fill(parameters); };
}

void ask_processor(const TransformParameters& /*parameters*/) { cpu_has_sse41(); }

/** Takes a thousand cycles: additions, each of which waits for the one before. */
void count_cycles(const TransformParameters& /*parameters*/) {
  std::uintptr_t sum = 0;
  for (int i = 0; i < 100; ++i) {
    __asm__ volatile(
        "add %0, %0\n\tadd %0, %0\n\tadd %0, %0\n\tadd %0, %0\n\tadd %0, %0\n\t"
        "add %0, %0\n\tadd %0, %0\n\tadd %0, %0\n\tadd %0, %0\n\tadd %0, %0"
        : "+r"(sum));
  }
}

const std::map<std::string, Route (*)()>& makers() {
  static const std::map<std::string, Route (*)()> routes = {
      {"sse2", [] { return built_in_route(false); }},
      {"sse41", [] { return built_in_route(true); }},
      {"avx2", [] { return plugin_route(NEROVA_AVX2_PLUGIN, "avx2"); }},
      {"avx512", [] { return plugin_route(NEROVA_AVX512_PLUGIN, "avx512"); }},
      {"library", [] { return library_route(NEROVA_LIBRARY_WITH_PLUGINS); }},
      {"library-alone", [] { return library_route(NEROVA_LIBRARY_ALONE); }},
      {"cpu-question", without_matrices<ask_processor>},
      {"cycles", without_matrices<count_cycles>},
      {"stream", without_matrices<stream_frame>},
      {"stream-prefetched", without_matrices<stream_frame_prefetched>},
      {"stream-uncached", without_matrices<stream_frame_uncached>},
      {"plain", without_matrices<plain_loop>},
#ifdef NEROVA_OPENCV_PEER
      {"opencv", without_matrices<opencv_functions>},
#endif
  };
  return routes;
}

}  // namespace

Route find_route(const std::string& name) {
  const auto found = makers().find(name);
  if (found == makers().end()) {
    throw std::runtime_error("no such route: " + name);
  }
  return found->second();
}

std::string runnable_routes() {
  std::string names;
  for (const auto& [name, make] : makers()) {
    try {
      make();
      names += name + " ";
    } catch (const std::runtime_error&) {  // NOLINT(bugprone-empty-catch): left out
    }
  }
  return names;
}

}  // namespace nerova_zel::benchmark
