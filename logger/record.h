#pragma once

#include <spdlog/details/log_msg.h>

#include <cstdint>
#include <memory>
#include <string>

namespace nerova_zel::logger {

/** A message with a level of the caller's own scale, which spdlog's seven levels cannot hold. */
struct Record : spdlog::details::log_msg {
  using log_msg::log_msg;

  std::int32_t number = 0;  ///< the level
};

/** Formats records, and records only, in UTC; a line ends with a line feed. Throws std::bad_alloc. */
std::unique_ptr<spdlog::formatter> make_record_formatter(const std::string& pattern);

}  // namespace nerova_zel::logger
