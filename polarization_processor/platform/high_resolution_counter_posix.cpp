#include <ctime>

#include "platform/high_resolution_counter.h"

namespace nerova_zel {

namespace {

constexpr std::int64_t nanoseconds_per_second = 1000000000;

}  // namespace

bool read_counter_frequency(std::int64_t& frequency) noexcept {
  frequency = nanoseconds_per_second;
  return true;
}

bool read_counter(std::int64_t& count) noexcept {
  timespec now = {};
  if (clock_gettime(CLOCK_MONOTONIC, &now) != 0) {
    return false;
  }
  count = std::int64_t{now.tv_sec} * nanoseconds_per_second + now.tv_nsec;
  return true;
}

}  // namespace nerova_zel
