#pragma once

#include <cstddef>
#include <functional>

namespace nerova_zel {

/**
 * Calls work(0) on the caller's thread and work(1) to work(count - 1) each on a thread of its own, or on the caller's
 * where the system has no more threads. Returns when all have ended; then throws what the first of them threw, by
 * number. The threads live no longer than the call, so that a process may fork at any other time.
 */
void on_threads(std::size_t count, const std::function<void(std::size_t)>& work);

}  // namespace nerova_zel
