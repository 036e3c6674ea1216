#pragma once

#include <spdlog/formatter.h>

#include <memory>

#include "configuration.h"
#include "record.h"
#include "rotating_file.h"

namespace nerova_zel::logger {

/**
 * Writes records to a file that processes share, which spdlog's own file sinks do not provide for.
 * Throws spdlog::spdlog_ex when the file cannot be written; what waited for it is dropped. Not for several threads.
 */
class FileSink {
 public:
  explicit FileSink(const Configuration& configuration);

  void log(const Record& record);
  void flush();

 private:
  void add_line(const Record& record);
  bool is_due(const Record& record) const;

  const std::unique_ptr<spdlog::formatter> formatter_;
  const FlushPolicy policy_;
  const std::size_t most_waiting_;
  RotatingFile file_;
  spdlog::memory_buf_t waiting_;  ///< whole lines; keeps its memory from record to record
  spdlog::log_clock::time_point oldest_;
  int process_ = 0;  ///< whose lines wait
};

}  // namespace nerova_zel::logger
