#include <windows.h>

#include "platform/high_resolution_counter.h"

namespace nerova_zel {

bool read_counter_frequency(std::int64_t& frequency) noexcept {
  LARGE_INTEGER value;
  if (QueryPerformanceFrequency(&value) == 0) {
    return false;
  }
  frequency = value.QuadPart;
  return true;
}

bool read_counter(std::int64_t& count) noexcept {
  LARGE_INTEGER value;
  if (QueryPerformanceCounter(&value) == 0) {
    return false;
  }
  count = value.QuadPart;
  return true;
}

}  // namespace nerova_zel
