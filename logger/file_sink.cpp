#include "file_sink.h"

#include <spdlog/details/os.h>

#include <algorithm>
#include <chrono>

namespace nerova_zel::logger {

namespace {

constexpr std::chrono::seconds longest_wait(1);
constexpr std::uint64_t buffer_size = 65536;

}  // namespace

FileSink::FileSink(const Configuration& configuration)
    : formatter_(make_record_formatter(configuration.pattern)),
      policy_(configuration.flush),
      most_waiting_(static_cast<std::size_t>(
          configuration.max_size == 0 ? buffer_size : std::min(buffer_size, configuration.max_size))),
      file_(configuration.file, configuration.max_size, configuration.kept_files) {}

void FileSink::log(const Record& record) {
  if (policy_ == FlushPolicy::Buffer) {
    const int process = spdlog::details::os::pid();
    if (process != process_) {
      waiting_.clear();  // forked: these lines are the parent's
      process_ = process;
    }
  }
  if (waiting_.size() == 0) {
    oldest_ = record.time;
  }
  try {
    add_line(record);
    if (is_due(record)) {
      flush();
    }
  } catch (...) {
    waiting_.clear();
    throw;
  }
}

void FileSink::add_line(const Record& record) {
  const std::size_t start = waiting_.size();
  formatter_->format(record, waiting_);
  std::replace_if(
      waiting_.begin() + start, waiting_.end() - 1,
      [](char character) { return character == '\n' || character == '\r'; }, ' ');
}

bool FileSink::is_due(const Record& record) const {
  // A clock that was set back makes lines due, too.
  return policy_ != FlushPolicy::Buffer || record.number <= error_level || waiting_.size() >= most_waiting_ ||
         record.time < oldest_ || record.time - oldest_ >= longest_wait;
}

void FileSink::flush() {
  if (waiting_.size() == 0) {
    return;
  }
  const bool written =
      file_.append(waiting_.data(), waiting_.size()) && (policy_ != FlushPolicy::Disk || file_.force_to_disk());
  waiting_.clear();
  if (!written) {
    throw spdlog::spdlog_ex("the log file cannot be written");
  }
}

}  // namespace nerova_zel::logger
