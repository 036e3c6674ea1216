#include "registry.h"

#include <new>
#include <tuple>

namespace nerova_zel::logger {

namespace {

void report(const ConfigurationFault& fault, const char* file_name, Log& log) {
  std::string message = "ERROR: ";
  message += file_name;
  if (fault.line != 0) {
    message += ", line " + std::to_string(fault.line);
  }
  message += ": " + fault.reason + '.';
  try {
    log.write(error_level, file_name, fault.line, "zel_get_log", message.c_str());
  } catch (...) {  // NOLINT(bugprone-empty-catch): a log that cannot be written says so on each record
  }
}

/** Of programs that end without giving their logs back. */
struct FlushAtExit {
  FlushAtExit() = default;
  ~FlushAtExit() { registry().flush(); }
  FlushAtExit(const FlushAtExit&) = delete;
  FlushAtExit& operator=(const FlushAtExit&) = delete;
};

}  // namespace

Log* Registry::acquire(const char* module_name, const char* second_name, const char* configuration_file_name) {
  std::pair<std::string, std::string> names(module_name, second_name);
  const std::lock_guard<std::mutex> lock(mutex_);
  auto place = entries_.find(names);
  if (place == entries_.end()) {
    const ConfigurationReading reading = read_configuration(configuration_file_name);
    std::string name = names.second.empty() ? names.first : names.first + '/' + names.second;
    place = entries_
                .emplace(std::piecewise_construct, std::forward_as_tuple(std::move(names)),
                         std::forward_as_tuple(std::move(name), reading.configuration))
                .first;
    for (const ConfigurationFault& fault : reading.faults) {
      report(fault, configuration_file_name, place->second.log);
    }
  }
  ++place->second.references;
  return &place->second.log;
}

void Registry::release(const char* module_name, const char* second_name) {
  const std::pair<std::string, std::string> names(module_name, second_name);
  const std::lock_guard<std::mutex> lock(mutex_);
  const auto place = entries_.find(names);
  if (place != entries_.end() && --place->second.references == 0) {
    entries_.erase(place);
  }
}

void Registry::flush() noexcept {
  const std::unique_lock<std::mutex> lock(mutex_, std::try_to_lock);
  if (lock.owns_lock()) {
    for (auto& [names, entry] : entries_) {
      entry.log.flush();
    }
  }
}

Registry& registry() {
  alignas(Registry) static unsigned char place[sizeof(Registry)];
  static Registry& only = *new (place) Registry;
  static const FlushAtExit flush_at_exit;
  return only;
}

}  // namespace nerova_zel::logger
