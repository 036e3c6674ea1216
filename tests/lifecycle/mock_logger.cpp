#include "lifecycle/mock_behaviour.h"

MOCK_EXPORT void* zel_get_log(const char* module_name, const char* second_name, const char* configuration) {
  return mock_logger_behaviour().get_log(module_name, second_name, configuration);
}

MOCK_EXPORT std::int32_t zel_log(void* log, std::int32_t level, const char* file, std::int32_t line,
                                 const char* function, const char* message) {
  return mock_logger_behaviour().log(log, level, file, line, function, message);
}

MOCK_EXPORT void zel_free_log(const char* module_name, const char* second_name) {
  mock_logger_behaviour().free_log(module_name, second_name);
}
