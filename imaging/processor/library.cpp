#include "processor/library.h"

#include "failure.h"
#include "processor/bands.h"
#include "processor/route.h"

namespace nerova_zel {

namespace {

std::string default_path() { return find_module(module_file_name("nerova_zel_polarization_processor")); }

/** The functions of a library, or a Failure that names the one that is missing. */
class Resolver {
 public:
  Resolver(const DynamicModule& module, const std::string& path) : module_(module), path_(path) {}

  template <class Function>
  void operator()(Function& function, const char* name) const {
    function = reinterpret_cast<Function>(module_.find(name));
    if (function == nullptr) {
      throw Failure(path_ + " is not a polarization processor library: it does not export " + name + ".");
    }
  }

 private:
  const DynamicModule& module_;
  const std::string& path_;
};

EntryPoints entry_points(const DynamicModule& module, const std::string& path) {
  const Resolver resolve(module, path);
  EntryPoints found;
  resolve(found.module_initialize, "nv_polarization_processor_module_initialize");
  resolve(found.module_terminate, "nv_polarization_processor_module_terminate");
  resolve(found.create, "nv_polarization_processor_create_polarization_processor");
  resolve(found.destroy, "nv_polarization_processor_destroy_polarization_processor");
  resolve(found.set_coefficients, "nv_polarization_processor_set_custom_calibration_coefficients");
  resolve(found.get_coefficients, "nv_polarization_processor_get_custom_calibration_coefficients");
  resolve(found.transform, "nv_polarization_processor_transform");
  return found;
}

DynamicModule load(const std::string& path) {
  try {
    return DynamicModule(path);
  } catch (const std::runtime_error& error) {
    throw Failure("cannot load the polarization processor library " + path + " (" + error.what() + ").",
                  Fact::library_not_loaded);
  }
}

/** Calls the library; what it refuses becomes a Failure that says which library it was. */
template <class Call>
auto checked(const std::string& path, const Call& call) {
  try {
    return call();
  } catch (const ProcessorError& error) {
    throw Failure("the library " + path + " returned error " + std::to_string(error.code()) + ": " +
                  error_text(error.code()) + ".");
  }
}

}  // namespace

Library::Library(const std::string& path)
    : path_(path.empty() ? default_path() : path),
      module_(load(path_)),
      processor_(checked(path_, [&] { return Processor(entry_points(module_, path_)); })) {}

void Library::transform(const Frame& frame, const Outputs& outputs, int threads) const {
  checked(path_, [&] {
    transform_in_bands([this](const Frame& rows, const Outputs& images) { processor_.transform(rows, images); }, frame,
                       outputs, bands_worth_a_thread(frame.width, frame.height, threads));
  });
}

void Library::set_calibration(const Calibration& matrices) {
  checked(path_, [&] { processor_.set_calibration(matrices); });
}

Calibration Library::calibration() const {
  return checked(path_, [&] { return processor_.calibration(); });
}

bool Library::calibrates_every_pixel() {
  return checked(path_, [&] { return nerova_zel::calibrates_every_pixel(processor_); });
}

}  // namespace nerova_zel
