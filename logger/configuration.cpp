#include "configuration.h"

#include <cerrno>
#include <charconv>
#include <cstring>
#include <fstream>
#include <limits>
#include <optional>
#include <string_view>

#include "record_pattern.h"

namespace nerova_zel::logger {

namespace {

constexpr std::uint32_t most_kept_files = 999;

/** Why a value is refused; nothing when it was taken. */
using Refusal = std::optional<std::string>;

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view blanks = " \t\r";
  const std::size_t first = text.find_first_not_of(blanks);
  return first == std::string_view::npos ? std::string_view()
                                         : text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

/** A comment starts at the line's start or after a blank, so that a pattern may hold "%#". */
std::string_view without_comment(std::string_view line) {
  for (std::size_t i = line.find('#'); i != std::string_view::npos; i = line.find('#', i + 1)) {
    if (i == 0 || line[i - 1] == ' ' || line[i - 1] == '\t') {
      return line.substr(0, i);
    }
  }
  return line;
}

/** The whole text as a number in decimal digits. */
template <class Number>
std::optional<Number> number_of(std::string_view text) {
  Number number{};
  const char* const text_end = text.data() + text.size();
  const auto [end, error] = std::from_chars(text.data(), text_end, number);
  const bool whole = error == std::errc() && end == text_end;
  return whole && text[0] != '-' ? std::optional<Number>(number) : std::nullopt;
}

Refusal take_file(std::string_view value, Configuration& configuration) {
  configuration.file = value;
  return std::nullopt;
}

Refusal take_level(std::string_view value, Configuration& configuration) {
  const auto level = number_of<std::int32_t>(value);
  if (!level) {
    return "a level is a whole number from 0 to 2147483647";
  }
  configuration.level = *level;
  return std::nullopt;
}

Refusal take_max_size(std::string_view value, Configuration& configuration) {
  unsigned shift = 0;
  constexpr std::string_view units = "KMG";
  const std::size_t unit = units.find(value.back());
  if (unit != std::string_view::npos) {
    shift = 10 * (static_cast<unsigned>(unit) + 1);
    value = trimmed(value.substr(0, value.size() - 1));
  }
  const auto size = number_of<std::uint64_t>(value);
  if (!size || *size > std::numeric_limits<std::uint64_t>::max() >> shift) {
    return "a size is a whole number of bytes, or of K, M or G (2^10, 2^20, 2^30 bytes), such as 10M; 0 is no limit";
  }
  configuration.max_size = *size << shift;
  return std::nullopt;
}

Refusal take_kept_files(std::string_view value, Configuration& configuration) {
  const auto kept_files = number_of<std::uint32_t>(value);
  if (!kept_files || *kept_files > most_kept_files) {
    return "the number of kept files is a whole number from 0 to " + std::to_string(most_kept_files);
  }
  configuration.kept_files = *kept_files;
  return std::nullopt;
}

Refusal take_pattern(std::string_view value, Configuration& configuration) {
  std::string pattern;
  for (std::size_t i = 0; i < value.size(); ++i) {
    if (value.substr(i, 2) == "\\t") {
      pattern += '\t';
      ++i;
    } else {
      pattern += value[i];
    }
  }
  if (Refusal refusal = fault_of_pattern(pattern)) {
    return refusal;
  }
  configuration.pattern = std::move(pattern);
  return std::nullopt;
}

Refusal take_flush(std::string_view value, Configuration& configuration) {
  if (value == "record") {
    configuration.flush = FlushPolicy::Record;
  } else if (value == "disk") {
    configuration.flush = FlushPolicy::Disk;
  } else if (value == "buffer") {
    configuration.flush = FlushPolicy::Buffer;
  } else {
    return "flush is one of record, disk, buffer";
  }
  return std::nullopt;
}

struct Key {
  std::string_view name;
  Refusal (*take)(std::string_view value, Configuration& configuration);  ///< the value is not empty
};

constexpr Key keys[] = {
    {"file", take_file},       {"level", take_level}, {"max_size", take_max_size}, {"kept_files", take_kept_files},
    {"pattern", take_pattern}, {"flush", take_flush},
};

Refusal take_line(std::string_view line, Configuration& configuration) {
  line = trimmed(without_comment(line));
  if (line.empty()) {
    return std::nullopt;
  }
  const std::size_t equals = line.find('=');
  if (equals == std::string_view::npos) {
    return "it is not of the form key = value";
  }
  const std::string_view name = trimmed(line.substr(0, equals));
  const std::string_view value = trimmed(line.substr(equals + 1));
  std::string names;
  for (const Key& key : keys) {
    if (key.name == name) {
      return value.empty() ? "there is no value" : key.take(value, configuration);
    }
    names.append(names.empty() ? "" : ", ").append(key.name);
  }
  return "there is no such key; the keys are " + names;
}

}  // namespace

ConfigurationReading read_configuration(const char* file_name) {
  ConfigurationReading reading;
  errno = 0;
  std::ifstream stream(file_name);
  if (!stream) {
    if (errno != ENOENT) {
      reading.faults.push_back({0, "the file cannot be read, defaults are used: " + std::string(std::strerror(errno))});
    }
    return reading;
  }
  std::int32_t number = 0;
  for (std::string line; std::getline(stream, line);) {
    std::string_view text = line;
    constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";
    if (++number == 1 && text.substr(0, byte_order_mark.size()) == byte_order_mark) {
      text.remove_prefix(byte_order_mark.size());
    }
    if (Refusal refusal = take_line(text, reading.configuration)) {
      reading.faults.push_back({number, "the line is ignored, " + *refusal});
    }
  }
  return reading;
}

}  // namespace nerova_zel::logger
