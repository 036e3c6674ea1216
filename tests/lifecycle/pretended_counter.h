#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace nerova_zel::test {

/** Lets the counter that a loaded library reads be pretended, where the program's own functions do not serve it. */
void watch_counter(const std::string& library_file);

/**
 * While it lives, the library's high-resolution counter gives this thread these nanoseconds; a negative one fails, and
 * so does what follows the last.
 */
class PretendedCounter {
 public:
  explicit PretendedCounter(std::vector<std::int64_t> nanoseconds);
  ~PretendedCounter();
  PretendedCounter(const PretendedCounter&) = delete;
  PretendedCounter& operator=(const PretendedCounter&) = delete;
};

}  // namespace nerova_zel::test
