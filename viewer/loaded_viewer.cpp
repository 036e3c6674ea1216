// The same function as the server's, for programs that load it when they start one.
#include "failure.h"
#include "processor/dynamic_module.h"
#include "viewer_module.h"

namespace nerova_zel {

std::unique_ptr<Viewer> start_viewer(ViewSettings settings, ViewedFrames& frames) {
  const std::string path = find_module("nerova_zel_viewer.so", "nerova-polarize");
  const auto load = [&path]() -> const DynamicModule& {
    try {
      return *new DynamicModule(path);  // never unloaded: what it gives out is its own
    } catch (const std::runtime_error& error) {
      throw Failure("the library that serves the page cannot be loaded: " + std::string(error.what()) + ".");
    }
  };
  static const DynamicModule& module = load();
  const auto get = reinterpret_cast<GetStartViewer>(module.find("nerova_zel_viewer"));
  if (get == nullptr) {
    throw Failure(path + " is not the library that serves the page.");
  }
  return get()(std::move(settings), frames);
}

}  // namespace nerova_zel
