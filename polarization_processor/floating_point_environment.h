#pragma once

#include <cstdint>

// Frame code and kernels run with floating-point exceptions masked and denormal numbers kept, whatever the caller has
// set; a division by a dark pixel must not end the caller's process. The rounding mode stays the caller's.
namespace nerova_zel {

/**
 * The old floating-point unit, which 32-bit code computes with where it does without SSE, and runtimes use everywhere:
 * in double precision, whatever the caller has set. Restored on destruction.
 */
class QuietX87 {
 public:
  QuietX87() noexcept {
    __asm__ volatile("fnstcw %0\n\tfnstsw %1" : "=m"(control_), "=m"(status_));
    if ((status_ & pending) != 0) {
      // To load settings would raise the caller's exception; to store the environment masks it.
      Environment masked;
      __asm__ volatile("fnstenv %0" : "=m"(masked));
    }
    constexpr std::uint16_t masks = 0x007F;
    constexpr std::uint16_t double_precision = 0x0200;
    constexpr std::uint16_t rounding = 0x0C00;
    const auto quiet = static_cast<std::uint16_t>((control_ & rounding) | double_precision | masks);
    __asm__ volatile("fldcw %0" : : "m"(quiet));
  }
  ~QuietX87() {
    constexpr unsigned flags = 0x007F;
    std::uint16_t status = 0;
    __asm__ volatile("fnstsw %0" : "=m"(status));
    if (((static_cast<unsigned>(status) ^ status_) & flags) == 0) {
      __asm__ volatile("fldcw %0" : : "m"(control_));
      return;
    }
    // Takes ten times as long.
    Environment environment;
    __asm__ volatile("fnstenv %0" : "=m"(environment));
    environment.control = control_;
    environment.status = status_;
    __asm__ volatile("fldenv %0" : : "m"(environment));
  }
  QuietX87(const QuietX87&) = delete;
  QuietX87& operator=(const QuietX87&) = delete;

 private:
  struct Environment {
    std::uint16_t control;
    std::uint16_t unused;
    std::uint16_t status;
    std::uint8_t rest[22];
  };
  static constexpr std::uint16_t pending = 0x0080;  ///< an exception that is not masked

  std::uint16_t control_ = 0;
  std::uint16_t status_ = 0;
};

/** The vector units, where there are any. Settings and flags are restored on destruction. */
class QuietVectorUnits {
 public:
  explicit QuietVectorUnits(bool exist) noexcept : exist_(exist) {
    if (exist_) {
      constexpr std::uint32_t masks = 0x1F80;
      constexpr std::uint32_t rounding = 0x6000;
      __asm__ volatile("stmxcsr %0" : "=m"(before_));
      const std::uint32_t quiet = (before_ & rounding) | masks;
      __asm__ volatile("ldmxcsr %0" : : "m"(quiet));
    }
  }
  ~QuietVectorUnits() {
    if (exist_) {
      __asm__ volatile("ldmxcsr %0" : : "m"(before_));
    }
  }
  QuietVectorUnits(const QuietVectorUnits&) = delete;
  QuietVectorUnits& operator=(const QuietVectorUnits&) = delete;

 private:
  bool exist_;
  std::uint32_t before_ = 0;
};

}  // namespace nerova_zel
