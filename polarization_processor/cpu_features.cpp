#include "cpu_features.h"

#include <cpuid.h>

namespace nerova_zel {

namespace {

struct Leaf {
  unsigned eax;
  unsigned ebx;
  unsigned ecx;
  unsigned edx;
};

/** All zero when the processor does not know the leaf, or has no CPUID at all. */
Leaf read_leaf(unsigned number) noexcept {
  Leaf leaf = {};
  __get_cpuid_count(number, 0, &leaf.eax, &leaf.ebx, &leaf.ecx, &leaf.edx);
  return leaf;
}

constexpr bool has_bits(unsigned value, unsigned bits) noexcept { return (value & bits) == bits; }

constexpr unsigned bit(unsigned index) noexcept { return 1U << index; }

/** Low half of the extended control register 0; only with OSXSAVE. Assembler, as the intrinsic needs -mxsave. */
unsigned read_extended_control_register() noexcept {
  unsigned low = 0;
  unsigned high = 0;
  __asm__ volatile("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
  return low;
}

constexpr unsigned osxsave_and_avx = bit(27) | bit(28);
constexpr unsigned fma = bit(12);
constexpr unsigned avx2 = bit(5);
constexpr unsigned avx512_f_dq_bw = bit(16) | bit(17) | bit(30);
constexpr unsigned xmm_and_ymm_state = 0x06;
constexpr unsigned opmask_and_zmm_state = 0xE0;

/** Whether the operating system saves and restores these registers, given the features of leaf 1. */
bool keeps_state(const Leaf& features, unsigned state) noexcept {
  return has_bits(features.ecx, osxsave_and_avx) && has_bits(read_extended_control_register(), state);
}

}  // namespace

bool cpu_has_sse() noexcept { return has_bits(read_leaf(1).edx, bit(25)); }

bool cpu_has_sse41() noexcept {
  // Asked for every frame, and a virtual machine makes each question a costly one: no second one for the highest leaf.
  // There is a processor object, so leaf 1 exists: it said that there is SSE.
  Leaf features;
  __cpuid(1, features.eax, features.ebx, features.ecx, features.edx);
  return has_bits(features.edx, bit(26)) && has_bits(features.ecx, bit(19));
}

CpuLevel measure_cpu_level() noexcept {
  const Leaf features = read_leaf(1);
  const Leaf extended = read_leaf(7);
  if (keeps_state(features, opmask_and_zmm_state) && has_bits(extended.ebx, avx512_f_dq_bw)) {
    return CpuLevel::Avx512;
  }
  // Here the operating system is not asked on purpose: where it does not keep the registers, the plugin refuses to
  // start.
  if (has_bits(extended.ebx, avx2) && has_bits(features.ecx, fma)) {
    return CpuLevel::Avx2;
  }
  return CpuLevel::BuiltIn;
}

bool system_runs_avx2() noexcept {
  const Leaf features = read_leaf(1);
  return keeps_state(features, xmm_and_ymm_state) && has_bits(features.ecx, fma) && has_bits(read_leaf(7).ebx, avx2);
}

bool system_runs_avx512() noexcept {
  return system_runs_avx2() && keeps_state(read_leaf(1), opmask_and_zmm_state) &&
         has_bits(read_leaf(7).ebx, avx512_f_dq_bw);
}

}  // namespace nerova_zel
