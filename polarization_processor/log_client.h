#pragma once

#include <cstdint>

#include "platform/dynamic_library.h"
#include "platform/formatter.h"

namespace nerova_zel {

/** Levels of the records that this library writes. */
enum class LogLevel : std::int32_t { Error = 2, Timing = 7 };

/**
 * The binding to the logger library. Without that library, or without one of its entries, the client exists but is
 * disabled. log may be called from any thread.
 */
class LogClient {
 public:
  /** The name must outlive the client. */
  explicit LogClient(const char* module_name) noexcept;
  ~LogClient();
  LogClient(const LogClient&) = delete;
  LogClient& operator=(const LogClient&) = delete;

  /** Whether records reach a logger. */
  bool enabled() const noexcept { return enabled_; }

  /** Formats as printf does in the C locale. Returns whether the logger accepted the record; raises nothing, not even
   * out of memory. */
  [[gnu::format(printf, 6, 7)]] bool log(LogLevel level, const char* source_file, std::int32_t source_line,
                                         const char* function_name, const char* format, ...) const noexcept;

 private:
  using WriteEntry = std::int32_t (*)(void* log, std::int32_t level, const char* source_file, std::int32_t source_line,
                                      const char* function_name, const char* message);

  void bind() noexcept;

  ModuleHandle logger_module_ = nullptr;
  void* log_handle_ = nullptr;
  WriteEntry write_entry_ = nullptr;
  bool enabled_ = false;
  Formatter formatter_;
  const char* module_name_;
  const char* second_name_ = "";  ///< part of the key under which the logger keeps the log
};

}  // namespace nerova_zel
