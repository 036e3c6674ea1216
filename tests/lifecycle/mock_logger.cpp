#include "lifecycle/mock_behaviour.h"
#include "lifecycle/program_name.h"

namespace {

nerova_zel::test::LoggerBehaviour& behaviour() {
  using nerova_zel::test::find_in_program;
  return reinterpret_cast<decltype(&mock_logger_behaviour)>(find_in_program("mock_logger_behaviour"))();
}

}  // namespace

MOCK_EXPORT void* zel_get_log(const char* module_name, const char* second_name, const char* configuration) {
  return behaviour().get_log(module_name, second_name, configuration);
}

MOCK_EXPORT std::int32_t zel_log(void* log, std::int32_t level, const char* file, std::int32_t line,
                                 const char* function, const char* message) {
  return behaviour().log(log, level, file, line, function, message);
}

MOCK_EXPORT void zel_free_log(const char* module_name, const char* second_name) {
  behaviour().free_log(module_name, second_name);
}
