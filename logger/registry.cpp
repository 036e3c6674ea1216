#include "registry.h"

#include <new>

namespace nerova_zel::logger {

namespace {

void report(const ConfigurationFault& fault, const char* file_name, Log& log) noexcept {
  try {
    std::string message = "ERROR: ";
    message += file_name;
    if (fault.line != 0) {
      message += ", line " + std::to_string(fault.line);
    }
    message += ": " + fault.reason + '.';
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

Registry::Entry& Registry::entry_of(const Names& names) {
  const auto place = entries_.find(names);
  return place != entries_.end()
             ? place->second
             : entries_.try_emplace({std::string(names.first), std::string(names.second)}).first->second;
}

Log* Registry::acquire(const char* module_name, const char* second_name, const char* configuration_file_name) {
  const std::lock_guard<std::mutex> lock(mutex_);
  Entry& entry = entry_of({module_name, second_name});
  ++entry.references;  // first: whoever gets no log for lack of memory gives it back all the same
  if (!entry.log) {
    const ConfigurationReading reading = read_configuration(configuration_file_name);
    std::string name = module_name;
    if (*second_name != '\0') {
      name.append("/").append(second_name);
    }
    entry.log.emplace(std::move(name), reading.configuration);
    for (const ConfigurationFault& fault : reading.faults) {
      report(fault, configuration_file_name, *entry.log);
    }
  }
  return &*entry.log;
}

void Registry::release(const char* module_name, const char* second_name) {
  const std::lock_guard<std::mutex> lock(mutex_);
  const auto place = entries_.find(Names(module_name, second_name));
  if (place != entries_.end() && --place->second.references == 0) {
    entries_.erase(place);
  }
}

void Registry::flush() noexcept {
  const std::unique_lock<std::mutex> lock(mutex_, std::try_to_lock);
  if (lock.owns_lock()) {
    for (auto& [names, entry] : entries_) {
      if (entry.log) {
        entry.log->flush();
      }
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
