#pragma once

#include <cstdint>

namespace nerova_zel::test {

/** What the mock logger does. */
class LoggerBehaviour {
 public:
  virtual void* get_log(const char* module_name, const char* second_name, const char* configuration) = 0;
  virtual std::int32_t log(void* log, std::int32_t level, const char* file, std::int32_t line, const char* function,
                           const char* message) = 0;
  virtual void free_log(const char* module_name, const char* second_name) = 0;

 protected:
  ~LoggerBehaviour() = default;
};

/** What a mock vector plugin does. */
class PluginBehaviour {
 public:
  virtual std::int32_t initialize() = 0;
  virtual void transform(const void* parameters, const float* const* matrices) = 0;
  virtual void terminate() = 0;
  /** Called first in transform: whether the stack came in as aligned as the C convention of the platform asks. */
  virtual void stack_alignment(bool aligned) = 0;

 protected:
  ~PluginBehaviour() = default;
};

}  // namespace nerova_zel::test

#if defined(_WIN32)
#define MOCK_EXPORT extern "C" __declspec(dllexport)
#else
#define MOCK_EXPORT extern "C" __attribute__((visibility("default")))
#endif

// The test program provides these; a mock asks it for them by name.
MOCK_EXPORT nerova_zel::test::LoggerBehaviour& mock_logger_behaviour();
MOCK_EXPORT nerova_zel::test::PluginBehaviour& mock_avx512_behaviour();
MOCK_EXPORT nerova_zel::test::PluginBehaviour& mock_avx2_behaviour();
