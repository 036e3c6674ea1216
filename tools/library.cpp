#include "library.h"

#include <algorithm>
#include <filesystem>
#include <vector>

#if defined(_WIN32)
#define WIN32_LEAN_AND_MEAN
#include <windows.h>
#else
#include <dlfcn.h>
#endif

#include "failure.h"

namespace nerova_zel {

namespace {

namespace fs = std::filesystem;

#if defined(_WIN32)
constexpr const char* file_name = "nerova_zel_polarization_processor.dll";

void* open_module(const std::string& path) { return LoadLibraryA(path.c_str()); }
void close_module(void* module) { FreeLibrary(static_cast<HMODULE>(module)); }
void* find_name(void* module, const char* name) {
  return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(module), name));
}
std::string reason() { return "error " + std::to_string(GetLastError()); }
fs::path program_directory() {
  char path[MAX_PATH] = "";
  GetModuleFileNameA(nullptr, path, MAX_PATH);
  return fs::path(path).parent_path();
}
#else
constexpr const char* file_name = "libnerova_zel_polarization_processor.so";

void* open_module(const std::string& path) { return dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL); }
void close_module(void* module) { dlclose(module); }
void* find_name(void* module, const char* name) { return dlsym(module, name); }
std::string reason() {
  const char* text = dlerror();
  return text != nullptr ? text : "unknown reason";
}
fs::path program_directory() {
  std::error_code error;
  return fs::read_symlink("/proc/self/exe", error).parent_path();
}
#endif

std::string default_path() {
  const fs::path directory = program_directory();
  for (const fs::path& candidate :
       {directory / NEROVA_WAY_TO_LIBRARY / file_name, directory / ".." / "lib" / file_name, directory / file_name}) {
    std::error_code error;
    if (!directory.empty() && fs::exists(candidate, error)) {
      return candidate.lexically_normal().string();
    }
  }
  return file_name;
}

/** What a result other than 0 means to a user. */
std::string meaning(std::int32_t code) {
  switch (code) {
    case NV_POLARIZATION_PROCESSOR_ERROR_CREATION_FAILED:
      return "it could not make a processor, most likely because this computer lacks SSE";
    case NV_POLARIZATION_PROCESSOR_ERROR_NOT_INITIALIZED:
      return "it is not initialized, most likely because memory ran out";
    case NV_POLARIZATION_PROCESSOR_ERROR_OUT_OF_MEMORY:
      return "memory ran out while it made a processor";
    case NV_POLARIZATION_PROCESSOR_ERROR_NULL_HANDLE:
      return "it was called without a processor";
    case NV_POLARIZATION_PROCESSOR_ERROR_NULL_INPUT:
      return "it was called without a frame";
    case NV_POLARIZATION_PROCESSOR_ERROR_NO_OUTPUT:
      return "it was called without any output";
    case NV_POLARIZATION_PROCESSOR_ERROR_OUTPUT_IS_INPUT:
      return "an output was the frame itself";
    case NV_POLARIZATION_PROCESSOR_ERROR_OUTPUTS_EQUAL:
      return "two outputs were the same";
    case NV_POLARIZATION_PROCESSOR_ERROR_PHASE:
      return "the layout's phase must be 0 to 3";
    case NV_POLARIZATION_PROCESSOR_ERROR_OUTPUT_MAXIMUM:
      return "the output maximum must be 1 to 65535";
    case NV_POLARIZATION_PROCESSOR_ERROR_WIDTH:
      return "a frame must be at least 2 pixels wide";
    case NV_POLARIZATION_PROCESSOR_ERROR_HEIGHT:
      return "a frame must be at least 2 pixels high";
    case NV_POLARIZATION_PROCESSOR_ERROR_BIT_DEPTH:
      return "the bit depth must be at most 16";
    default:
      return "the reason is unknown to this program";
  }
}

}  // namespace

Library::Library(const std::string& path) : path_(path.empty() ? default_path() : path), module_(open_module(path_)) {
  if (module_ == nullptr) {
    throw Failure("cannot load the polarization processor library " + path_ + " (" + reason() +
                  "); say where it is with --library PATH.");
  }
  try {
    start();
  } catch (...) {
    close();
    throw;
  }
}

Library::~Library() { close(); }

void Library::start() {
  resolve(module_initialize_, "nv_polarization_processor_module_initialize");
  resolve(module_terminate_, "nv_polarization_processor_module_terminate");
  resolve(create_, "nv_polarization_processor_create_polarization_processor");
  resolve(destroy_, "nv_polarization_processor_destroy_polarization_processor");
  resolve(set_matrices_, "nv_polarization_processor_set_custom_calibration_coefficients");
  resolve(get_matrices_, "nv_polarization_processor_get_custom_calibration_coefficients");
  resolve(transform_, "nv_polarization_processor_transform");
  module_initialize_();
  initialized_ = true;
  check(create_(&processor_));
}

void Library::check(std::int32_t code) const {
  if (code != NV_POLARIZATION_PROCESSOR_SUCCESS) {
    throw Failure("the library " + path_ + " returned error " + std::to_string(code) + ": " + meaning(code) + ".");
  }
}

void Library::close() {
  if (processor_ != nullptr) {
    destroy_(processor_);
  }
  if (initialized_) {
    module_terminate_();
  }
  close_module(module_);
}

template <class Function>
void Library::resolve(Function& function, const char* name) {
  function = reinterpret_cast<Function>(find_name(module_, name));
  if (function == nullptr) {
    throw Failure(path_ + " is not a polarization processor library: it does not export " + name + ".");
  }
}

void Library::transform(const TransformInput& input, const TransformOutput& output) const {
  check(transform_(processor_, input.phase, input.pixels, input.origin_x, input.origin_y, input.width, input.height,
                   input.bit_depth, input.output_maximum, output.normalized_stokes, output.total_power,
                   output.horizontal_vertical, output.diagonal, output.azimuth, output.degree_of_linear_polarization));
}

void Library::set_calibration(const std::array<std::array<float, 16>, 4>& matrices) {
  check(set_matrices_(processor_, matrices[0].data(), matrices[1].data(), matrices[2].data(), matrices[3].data()));
}

bool Library::calibrates_every_pixel() {
  constexpr std::size_t width = 16;
  constexpr std::size_t height = 4;
  const std::vector<std::uint16_t> frame(width * height, 1000);
  std::vector<std::uint16_t> power(frame.size());
  TransformOutput output;
  output.total_power = power.data();
  std::array<std::array<float, 16>, 4> kept{};
  std::array<std::array<float, 16>, 4> trial{};
  for (auto& matrix : trial) {
    std::fill_n(matrix.begin(), 4, 10.0F);  // ten times the default weights of the power
  }
  check(get_matrices_(processor_, kept[0].data(), kept[1].data(), kept[2].data(), kept[3].data()));
  set_calibration(trial);
  transform({0, frame.data(), 0, 0, static_cast<int>(width), static_cast<int>(height), 16, 65535}, output);
  set_calibration(kept);
  // 2000 by the default calibration and 20000 by this one; no later pixel is farther from the last column and row.
  return power.front() > 10000;
}

}  // namespace nerova_zel
