#include "viewer_module.h"

extern "C" [[gnu::visibility("default")]] nerova_zel::StartViewer nerova_zel_viewer() {
  return &nerova_zel::start_viewer;
}
