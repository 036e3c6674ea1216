#include "lifecycle/pretended_counter.h"

#include <optional>

#if defined(_WIN32)
#include <windows.h>

#include "support/redirected_import.h"
#else
#include <sys/syscall.h>
#include <unistd.h>

#include <ctime>
#endif

namespace {

constexpr std::int64_t per_second = 1000000000;

thread_local bool pretended = false;
thread_local std::vector<std::int64_t> counts;  // the next one last

std::optional<std::int64_t> next_count() {
  if (counts.empty()) {
    return std::nullopt;
  }
  const std::int64_t count = counts.back();
  counts.pop_back();
  return count < 0 ? std::nullopt : std::optional<std::int64_t>(count);
}

}  // namespace

#if defined(_WIN32)

namespace {

BOOL WINAPI frequency(LARGE_INTEGER* value) {
  value->QuadPart = per_second;
  return pretended ? TRUE : QueryPerformanceFrequency(value);
}

BOOL WINAPI counter(LARGE_INTEGER* value) {
  const auto count = pretended ? next_count() : std::nullopt;
  value->QuadPart = count.value_or(0);
  return pretended ? (count ? TRUE : FALSE) : QueryPerformanceCounter(value);
}

}  // namespace

void nerova_zel::test::watch_counter(const std::string& library_file) {
  redirect_import(library_file, "QueryPerformanceFrequency", reinterpret_cast<void*>(frequency));
  redirect_import(library_file, "QueryPerformanceCounter", reinterpret_cast<void*>(counter));
}

#else

// Defined here, it serves the libraries loaded by this program as well.
extern "C" __attribute__((visibility("default"))) int clock_gettime(clockid_t clock, timespec* time) noexcept {
  if (!pretended || clock != CLOCK_MONOTONIC) {
    return static_cast<int>(syscall(SYS_clock_gettime, clock, time));
  }
  const auto count = next_count();
  if (count) {
    *time = {static_cast<std::time_t>(*count / per_second), static_cast<long>(*count % per_second)};
  }
  return count ? 0 : -1;
}

void nerova_zel::test::watch_counter(const std::string& /*library_file*/) {}

#endif

namespace nerova_zel::test {

PretendedCounter::PretendedCounter(std::vector<std::int64_t> nanoseconds) {
  counts.assign(nanoseconds.rbegin(), nanoseconds.rend());
  pretended = true;
}

PretendedCounter::~PretendedCounter() { pretended = false; }

}  // namespace nerova_zel::test
