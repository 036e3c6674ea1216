#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

#include "configuration.h"

namespace nerova_zel::logger {

class FileSink;

/** The log of one pair of names. All may be called from any thread. */
class Log {
 public:
  /** Throws std::bad_alloc. */
  Log(std::string name, const Configuration& configuration);
  ~Log();
  Log(const Log&) = delete;
  Log& operator=(const Log&) = delete;

  bool wants(std::int32_t level) const noexcept { return level <= threshold_; }

  /** Whatever the level. Throws std::exception when the record cannot be written. */
  void write(std::int32_t level, const char* source_file, std::int32_t source_line, const char* function_name,
             const char* message);

  /** Writes what is still in memory, unless another thread is at it. Failing, it is dropped. */
  void flush() noexcept;

 private:
  const std::string name_;
  const std::int32_t threshold_;
  std::mutex mutex_;
  const std::unique_ptr<FileSink> sink_;  ///< guarded by the mutex
};

}  // namespace nerova_zel::logger
