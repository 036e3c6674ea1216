#pragma once

#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "log.h"

namespace nerova_zel::logger {

/** The logs by their pairs of names. All may be called from any thread. */
class Registry {
 public:
  /**
   * The log of the two names, made on the first call for them; each call needs a release, also one that throws
   * std::bad_alloc. Faults of the configuration are the first records of a new log, whatever its level.
   */
  Log* acquire(const char* module_name, const char* second_name, const char* configuration_file_name);

  /** Takes back one acquire; the last one destroys the log. Unknown names do nothing. */
  void release(const char* module_name, const char* second_name);

  /** Flushes all logs, leaving out what other threads are at. */
  void flush() noexcept;

 private:
  struct Entry {
    unsigned references = 0;
    std::optional<Log> log;  ///< nothing while memory does not suffice
  };
  using Names = std::pair<std::string_view, std::string_view>;
  /** Compares names without a copy of them, so that finding an entry takes no memory. */
  struct InOrder {
    using is_transparent = void;
    bool operator()(const Names& one, const Names& other) const { return one < other; }
  };

  Entry& entry_of(const Names& names);

  std::mutex mutex_;
  std::map<std::pair<std::string, std::string>, Entry, InOrder> entries_;
};

/** The one of this process. Never destroyed: a thread may still log while the program ends. */
Registry& registry();

}  // namespace nerova_zel::logger
