#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace nerova_zel::logger {

/** Of the levels, which are the caller's, the one that means an error; lower ones are more severe. */
constexpr std::int32_t error_level = 2;

/** When records leave the logger. */
enum class FlushPolicy {
  Record,  ///< each goes to the operating system before zel_log returns
  Disk,    ///< and to the disk
  Buffer,  ///< gathered in memory
};

struct Configuration {
  std::string file = "nerova_zel.log";
  std::int32_t level = error_level;
  std::uint64_t max_size = std::uint64_t{10} << 20;  ///< bytes; 0: the file is never rotated
  std::uint32_t kept_files = 3;
  std::string pattern = "%Y-%m-%dT%H:%M:%S.%eZ\t%l\t%n\t%g:%#\t%!\t%v";
  FlushPolicy flush = FlushPolicy::Record;
};

/** A line that is ignored. */
struct ConfigurationFault {
  std::int32_t line;  ///< from 1; 0: the file as a whole
  std::string reason;
};

struct ConfigurationReading {
  Configuration configuration;
  std::vector<ConfigurationFault> faults;
};

/** Reads the file. What is missing or faulty keeps its default; a missing file is no fault. Throws std::bad_alloc. */
ConfigurationReading read_configuration(const char* file_name);

}  // namespace nerova_zel::logger
