#include "log_client.h"

#include <cstdarg>

namespace nerova_zel {

namespace {

using GetEntry = void* (*)(const char* module_name, const char* second_name, const char* configuration_file_name);
using FreeEntry = void (*)(const char* module_name, const char* second_name);

}  // namespace

LogClient::LogClient(const char* module_name) noexcept : module_name_(module_name) { bind(); }

void LogClient::bind() noexcept {
  logger_module_ = load_module("nerova_zel_logger");
  if (logger_module_ == nullptr) {
    return;
  }
  const auto get_log = find_function<GetEntry>(logger_module_, "zel_get_log");
  if (get_log == nullptr) {
    return;
  }
  try {
    log_handle_ = get_log(module_name_, second_name_, "nerova_zel_logger.cfg");
  } catch (...) {  // NOLINT(bugprone-empty-catch): as good as no handle
  }
  if (log_handle_ == nullptr) {
    return;
  }
  write_entry_ = find_function<WriteEntry>(logger_module_, "zel_log");
  enabled_ = write_entry_ != nullptr;
}

LogClient::~LogClient() {
  if (logger_module_ == nullptr) {
    return;
  }
  // The log is keyed by its names, so it is given back even if no handle was ever received.
  if (const auto free_log = find_function<FreeEntry>(logger_module_, "zel_free_log")) {
    try {
      free_log(module_name_, second_name_);
    } catch (...) {  // NOLINT(bugprone-empty-catch): there is nobody left to tell
    }
  }
  unload_module(logger_module_);
}

bool LogClient::log(LogLevel level, const char* source_file, std::int32_t source_line, const char* function_name,
                    const char* format, ...) const noexcept {
  if (!enabled_) {
    return false;
  }
  // On the stack: every frame writes a record, and one must also tell that memory has run out. The longest number that
  // "%f" makes leaves room for the sentence around it.
  char message[512];
  std::va_list arguments;
  va_start(arguments, format);
  // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): it does not follow va_start here
  const bool written = formatter_.write(message, sizeof(message), format, arguments);
  va_end(arguments);
  if (!written) {
    return false;
  }
  try {
    return write_entry_(log_handle_, static_cast<std::int32_t>(level), source_file, source_line, function_name,
                        message) == 0;
  } catch (...) {
    return false;
  }
}

}  // namespace nerova_zel
