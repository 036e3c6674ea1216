#include "log.h"

#include <utility>

#include "file_sink.h"

namespace nerova_zel::logger {

Log::Log(std::string name, const Configuration& configuration)
    : name_(std::move(name)), threshold_(configuration.level), sink_(std::make_unique<FileSink>(configuration)) {}

Log::~Log() { flush(); }

void Log::write(std::int32_t level, const char* source_file, std::int32_t source_line, const char* function_name,
                const char* message) {
  const spdlog::source_loc source(source_file, source_line, function_name);
  const std::lock_guard<std::mutex> lock(mutex_);
  Record record(source, name_, spdlog::level::info, message);  // under the lock, so that times never go backwards
  record.number = level;
  sink_->log(record);
}

void Log::flush() noexcept {
  try {
    const std::unique_lock<std::mutex> lock(mutex_, std::try_to_lock);
    if (lock.owns_lock()) {
      sink_->flush();
    }
  } catch (...) {  // NOLINT(bugprone-empty-catch): there is nobody left to tell
  }
}

}  // namespace nerova_zel::logger
