// The exported functions: what is raised behind them ends here.

#include "nerova_zel/logger.h"

#include "log.h"
#include "registry.h"

using nerova_zel::logger::Log;
using nerova_zel::logger::registry;

void* zel_get_log(const char* module_name, const char* second_name, const char* configuration_file_name) {
  try {
    return registry().acquire(module_name, second_name, configuration_file_name);
  } catch (...) {
    return nullptr;
  }
}

std::int32_t zel_log(void* log, std::int32_t level, const char* source_file, std::int32_t source_line,
                     const char* function_name, const char* message) {
  auto* const known = static_cast<Log*>(log);
  if (known == nullptr || !known->wants(level)) {
    return 1;
  }
  try {
    known->write(level, source_file, source_line, function_name, message);
    return 0;
  } catch (...) {
    return 1;
  }
}

void zel_free_log(const char* module_name, const char* second_name) {
  try {
    registry().release(module_name, second_name);
  } catch (...) {  // NOLINT(bugprone-empty-catch): a mutex that fails; the log stays open
  }
}
