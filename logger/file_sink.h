#pragma once

#include <spdlog/details/null_mutex.h>
#include <spdlog/sinks/base_sink.h>

#include "configuration.h"
#include "record.h"
#include "rotating_file.h"

namespace nerova_zel::logger {

/**
 * Writes records, and records only, to a file that processes share, which spdlog's own file sinks do not provide for.
 * Throws spdlog::spdlog_ex when the file cannot be written; what waited for it is dropped. Not for several threads.
 */
class FileSink final : public spdlog::sinks::base_sink<spdlog::details::null_mutex> {
 public:
  explicit FileSink(const Configuration& configuration);

 private:
  void sink_it_(const spdlog::details::log_msg& message) override;
  void flush_() override;

  void add_line(const spdlog::details::log_msg& message);
  bool is_due(const Record& record) const;

  const FlushPolicy policy_;
  const std::size_t most_waiting_;
  RotatingFile file_;
  spdlog::memory_buf_t waiting_;  ///< whole lines; keeps its memory from record to record
  spdlog::log_clock::time_point oldest_;
  int process_ = 0;  ///< whose lines wait
};

}  // namespace nerova_zel::logger
