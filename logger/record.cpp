#include "record.h"

#include <spdlog/pattern_formatter.h>

#include <string_view>
#include <utility>

namespace nerova_zel::logger {

namespace {

using Text = std::string_view;

/** Room for the digits of a number while it is printed. */
using Digits = fmt::format_int;

/**
 * One of the flags that spdlog lacks, or leaves empty in a record of source line 0, which a caller is free to give.
 */
class RecordFlag final : public spdlog::custom_flag_formatter {
 public:
  using Print = void (*)(const Record& record, const RecordFlag& flag, spdlog::memory_buf_t& line);

  explicit RecordFlag(Print print) : print_(print) {}

  void format(const spdlog::details::log_msg& message, const std::tm& /*time*/, spdlog::memory_buf_t& line) override {
    print_(static_cast<const Record&>(message), *this, line);
  }

  std::unique_ptr<custom_flag_formatter> clone() const override { return std::make_unique<RecordFlag>(print_); }

  void append(Text text, spdlog::memory_buf_t& line) const {
    const spdlog::details::scoped_padder padder(text.size(), padinfo_, line);
    line.append(text.data(), text.data() + text.size());
  }

 private:
  Print print_;
};

void print_number(std::int32_t number, const RecordFlag& flag, spdlog::memory_buf_t& line) {
  const Digits digits(number);
  flag.append(Text(digits.data(), digits.size()), line);
}

void print_level(const Record& record, const RecordFlag& flag, spdlog::memory_buf_t& line) {
  print_number(record.number, flag, line);
}

void print_file(const Record& record, const RecordFlag& flag, spdlog::memory_buf_t& line) {
  flag.append(record.source.filename, line);
}

void print_file_name(const Record& record, const RecordFlag& flag, spdlog::memory_buf_t& line) {
  const Text path = record.source.filename;
  flag.append(path.substr(path.find_last_of("/\\") + 1), line);  // records may have the paths of another platform
}

void print_line(const Record& record, const RecordFlag& flag, spdlog::memory_buf_t& line) {
  print_number(record.source.line, flag, line);
}

void print_function(const Record& record, const RecordFlag& flag, spdlog::memory_buf_t& line) {
  flag.append(record.source.funcname, line);
}

constexpr std::pair<char, RecordFlag::Print> record_flags[] = {
    {'l', print_level}, {'g', print_file}, {'s', print_file_name}, {'#', print_line}, {'!', print_function},
};

}  // namespace

std::unique_ptr<spdlog::formatter> make_record_formatter(const std::string& pattern) {
  spdlog::pattern_formatter::custom_flags flags;
  for (const auto& [flag, print] : record_flags) {
    flags[flag] = std::make_unique<RecordFlag>(print);
  }
  return std::make_unique<spdlog::pattern_formatter>(pattern, spdlog::pattern_time_type::utc, "\n", std::move(flags));
}

}  // namespace nerova_zel::logger
