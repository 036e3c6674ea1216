#include "routes.h"

#include <dlfcn.h>

#include <stdexcept>

#include "kernels/kernel_selection.h"
#include "peers/plain_loop.h"
#include "streaming_limit.h"

namespace nerova_zel::benchmark {

namespace {

void run_sse2(const TransformParameters& parameters, MatrixRow matrices) { run_built_in(parameters, matrices, false); }

void run_sse41(const TransformParameters& parameters, MatrixRow matrices) { run_built_in(parameters, matrices, true); }

/** The transform entry of a plugin of this build, initialised. It stays loaded. */
Route plugin_route(const std::string& path, const std::string& set) {
  void* const module = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (module == nullptr) {
    throw std::runtime_error(dlerror());
  }
  const auto find = [&](const std::string& name) { return dlsym(module, name.c_str()); };
  const auto initialize = reinterpret_cast<std::int32_t (*)()>(
      find("nv_polarization_processor_vector_" + set + "_module_initialize"));
  const auto transform = reinterpret_cast<void (*)(const TransformParameters*, MatrixRow)>(
      find("nv_polarization_processor_transform_vector_" + set));
  if (initialize == nullptr || transform == nullptr || initialize() != 0) {
    throw std::runtime_error("the " + set + " plugin does not run here");
  }
  return [transform](const TransformParameters& parameters, MatrixRow matrices) { transform(&parameters, matrices); };
}

}  // namespace

Route find_route(const std::string& name) {
  if (name == "sse2") {
    return run_sse2;
  }
  if (name == "sse41") {
    return run_sse41;
  }
  if (name == "avx2") {
    return plugin_route(NEROVA_AVX2_PLUGIN, name);
  }
  if (name == "avx512") {
    return plugin_route(NEROVA_AVX512_PLUGIN, name);
  }
  if (name == "stream") {
    return [](const TransformParameters& parameters, MatrixRow /*matrices*/) { stream_frame(parameters); };
  }
  if (name == "stream-uncached") {
    return [](const TransformParameters& parameters, MatrixRow /*matrices*/) { stream_frame_uncached(parameters); };
  }
  if (name == "plain") {
    return [](const TransformParameters& parameters, MatrixRow /*matrices*/) { plain_loop(parameters); };
  }
  throw std::runtime_error("no such route: " + name);
}

}  // namespace nerova_zel::benchmark
