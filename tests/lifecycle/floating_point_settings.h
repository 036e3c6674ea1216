#pragma once

#include <cstdint>

namespace nerova_zel::test {

/** Of this thread: what is masked, flushed and rounded how, and what the old unit has flagged. */
struct FloatingPointSettings {
  std::uint32_t vector_units = 0x1F80;
  std::uint16_t x87 = 0x037F;
  std::uint16_t x87_flags = 0;

  void apply() const {
    __asm__ volatile("ldmxcsr %0" : : "m"(vector_units));
    __asm__ volatile("fnclex\n\tfldcw %0" : : "m"(x87));  // what was flagged under a mask is nobody's exception now
  }
  static FloatingPointSettings now() {
    FloatingPointSettings settings;
    __asm__ volatile("stmxcsr %0" : "=m"(settings.vector_units));
    __asm__ volatile("fnstcw %0\n\tfnstsw %1" : "=m"(settings.x87), "=m"(settings.x87_flags));
    settings.x87_flags &= 0x3FU;
    return settings;
  }
  bool operator==(const FloatingPointSettings& other) const {
    return vector_units == other.vector_units && x87 == other.x87 && x87_flags == other.x87_flags;
  }
};

}  // namespace nerova_zel::test
