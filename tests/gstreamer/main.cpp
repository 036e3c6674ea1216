#include <gst/gst.h>
#include <gtest/gtest.h>

int main(int count, char** arguments) {
  testing::InitGoogleTest(&count, arguments);
  gst_init(&count, &arguments);
  gst_registry_fork_set_enabled(FALSE);  // a process without the sanitizers of this one could not load the plugin
  gst_registry_scan_path(gst_registry_get(), NEROVA_PLUGIN_DIRECTORY);
  const int result = RUN_ALL_TESTS();
  gst_deinit();
  return result;
}
