#pragma once

#include <cstdint>

namespace nerova_zel {

/** Ticks per second of the monotonic counter below. Returns false, and writes nothing, when there is none. */
bool read_counter_frequency(std::int64_t& frequency) noexcept;

/** Present count in ticks. Returns false, and writes nothing, when it cannot be read. */
bool read_counter(std::int64_t& count) noexcept;

}  // namespace nerova_zel
