#pragma once

#include <string>

#include "nerova_zel/logger.h"
#include "support/loaded_library.h"

namespace nerova_zel::test {

/** The logger library as its users load it. */
class LoadedLogger : public LoadedModule {
 public:
  explicit LoadedLogger(const std::string& path) : LoadedModule(path) {
    resolve("zel_get_log", get_log);
    resolve("zel_log", log);
    resolve("zel_free_log", free_log);
  }

  decltype(&zel_get_log) get_log = nullptr;
  decltype(&zel_log) log = nullptr;
  decltype(&zel_free_log) free_log = nullptr;
};

}  // namespace nerova_zel::test
