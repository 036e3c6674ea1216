#include "vector_plugin.h"

namespace nerova_zel {

VectorPlugin::VectorPlugin(const VectorPluginNames& names) { unusable_ = !load(names); }

bool VectorPlugin::load(const VectorPluginNames& names) {
  module_ = load_module(names.module);
  if (module_ == nullptr) {
    return false;
  }
  initialize_entry_ = find_function<InitializeEntry>(module_, names.initialize);
  if (initialize_entry_ == nullptr) {
    return false;
  }
  transform_entry_ = find_function<TransformEntry>(module_, names.transform);
  if (transform_entry_ == nullptr) {
    return false;
  }
  terminate_entry_ = find_function<TerminateEntry>(module_, names.terminate);
  return terminate_entry_ != nullptr && initialize_entry_() == 0;
}

VectorPlugin::~VectorPlugin() {
  if (terminate_entry_ != nullptr) {
    try {
      terminate_entry_();
    } catch (...) {  // NOLINT(bugprone-empty-catch): unloading goes on
    }
  }
  if (module_ != nullptr) {
    unload_module(module_);
  }
}

}  // namespace nerova_zel
