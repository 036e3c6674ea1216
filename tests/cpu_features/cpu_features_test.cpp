#include "cpu_features.h"

#include <cpuid.h>
#include <gtest/gtest.h>

PretendedProcessor pretended_processor;

namespace nerova_zel::test {
namespace {

constexpr unsigned bit(unsigned index) { return 1U << index; }

constexpr unsigned sse = bit(25);
constexpr unsigned sse2 = bit(26);
constexpr unsigned sse41 = bit(19);
constexpr unsigned fma = bit(12);
constexpr unsigned osxsave = bit(27);
constexpr unsigned avx = bit(28);
constexpr unsigned avx2 = bit(5);
constexpr unsigned avx512f = bit(16);
constexpr unsigned avx512dq = bit(17);
constexpr unsigned avx512bw = bit(30);

/** Which registers the operating system keeps is not pretended. */
bool system_keeps(unsigned state) {
  unsigned low = 0;
  unsigned high = 0;
  if (__builtin_cpu_supports("avx") != 0) {
    __asm__ volatile("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
  }
  return (low & state) == state;
}

TEST(CpuFeatures, EverythingThatARouteNeedsIsAskedFor) {
  const bool keeps_avx = system_keeps(0x06);
  const bool keeps_avx512 = system_keeps(0xE0);
  if (!keeps_avx) {
    GTEST_SKIP() << "a pretended processor may not ask a system that does not answer";
  }
  constexpr unsigned all_1 = osxsave | avx | fma;
  constexpr unsigned all_7 = avx2 | avx512f | avx512dq | avx512bw;
  struct Case {
    unsigned ecx;
    unsigned ebx;
    bool level_avx512;
    bool level_avx2;  ///< also where the system does not keep the registers: that is left to the plugin
    bool runs_avx2;
    bool runs_avx512;
  };
  const Case cases[] = {
      {all_1, all_7, true, true, true, true},
      {all_1, all_7 & ~avx512f, false, true, true, false},
      {all_1, all_7 & ~avx512dq, false, true, true, false},
      {all_1, all_7 & ~avx512bw, false, true, true, false},
      {all_1, all_7 & ~avx2, true, false, false, false},
      {all_1 & ~fma, all_7, true, false, false, false},
      {all_1 & ~osxsave, all_7, false, true, false, false},
      {all_1 & ~avx, all_7, false, true, false, false},
      {all_1, avx2, false, true, true, false},
      {all_1 & ~fma, avx2, false, false, false, false},
      {all_1, 0, false, false, false, false},
      {0, 0, false, false, false, false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << std::hex << c.ecx << ", " << c.ebx);
    pretended_processor = {c.ecx, sse | sse2, c.ebx};
    const bool level_avx512 = c.level_avx512 && keeps_avx512;
    EXPECT_EQ(measure_cpu_level(), level_avx512 ? CpuLevel::Avx512 : c.level_avx2 ? CpuLevel::Avx2 : CpuLevel::BuiltIn);
    EXPECT_EQ(system_runs_avx2(), c.runs_avx2);
    EXPECT_EQ(system_runs_avx512(), c.runs_avx512 && keeps_avx512);
  }
}

TEST(CpuFeatures, FormsOfTheBuiltInKernels) {
  pretended_processor = {sse41, sse | sse2, 0};
  EXPECT_TRUE(cpu_has_sse() && cpu_has_sse41());
  pretended_processor = {sse41, sse, 0};
  EXPECT_FALSE(cpu_has_sse41());
  pretended_processor = {0, sse | sse2, 0};
  EXPECT_FALSE(cpu_has_sse41());
  pretended_processor = {sse41, sse2, 0};
  EXPECT_FALSE(cpu_has_sse());
}

}  // namespace
}  // namespace nerova_zel::test
