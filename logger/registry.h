#pragma once

#include <map>
#include <mutex>
#include <string>
#include <utility>

#include "log.h"

namespace nerova_zel::logger {

/** The logs by their pairs of names. All may be called from any thread. */
class Registry {
 public:
  /**
   * The log of the two names, made on the first call for them; each call needs a release. Faults of the configuration
   * are the first records of a new log, whatever its level. Throws std::bad_alloc.
   */
  Log* acquire(const char* module_name, const char* second_name, const char* configuration_file_name);

  /** Takes back one acquire; the last one destroys the log. Unknown names do nothing. Throws std::bad_alloc. */
  void release(const char* module_name, const char* second_name);

  /** Flushes all logs, leaving out what other threads are at. */
  void flush() noexcept;

 private:
  struct Entry {
    Entry(std::string name, const Configuration& configuration) : log(std::move(name), configuration) {}

    Log log;
    unsigned references = 0;
  };

  std::mutex mutex_;
  std::map<std::pair<std::string, std::string>, Entry> entries_;
};

/** The one of this process. Never destroyed: a thread may still log while the program ends. */
Registry& registry();

}  // namespace nerova_zel::logger
