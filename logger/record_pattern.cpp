#include "record_pattern.h"

#include <cctype>

namespace nerova_zel::logger {

namespace {

// Of spdlog's flags those that make sense here: its level names, colours and time zones mean nothing for these records.
constexpr char flags[] = "lngs#!vtPYCmdHIMSefFEpaAbhBcDxrRTXuioO%";

bool is_digit(char character) { return std::isdigit(static_cast<unsigned char>(character)) != 0; }

}  // namespace

std::optional<std::string> fault_of_pattern(const std::string& pattern) {
  for (std::size_t i = pattern.find('%'); i != std::string::npos; i = pattern.find('%', i + 1)) {
    ++i;  // behind the last character stands a zero
    if (pattern[i] == '-' || pattern[i] == '=') {
      ++i;
    }
    const std::size_t width = i;
    while (is_digit(pattern[i])) {
      ++i;
    }
    if (i > width && pattern[i] == '!') {
      ++i;
    }
    if (i == pattern.size()) {
      return "the pattern ends within a flag; a percent sign is written %%";
    }
    if (std::string(flags).find(pattern[i]) == std::string::npos) {
      return std::string("the pattern holds an unknown flag %") + pattern[i] + "; a percent sign is written %%";
    }
  }
  return std::nullopt;
}

}  // namespace nerova_zel::logger
