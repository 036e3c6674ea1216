#pragma once

#include <cstdint>

namespace nerova_zel {

/** What the processor (CPU) offers beyond the built-in kernels; decides which vector plugin may compute. */
enum class CpuLevel : std::int32_t { BuiltIn = 0, Avx2 = 1, Avx512 = 2 };

bool cpu_has_sse() noexcept;

/** SSE2 and SSE4.1 both: what the SSE4.1 form of the kernels needs. Only where cpu_has_sse. */
bool cpu_has_sse41() noexcept;

CpuLevel measure_cpu_level() noexcept;

/** Whether the processor executes AVX2 and FMA (AVX-512 F, DQ and BW) and the operating system keeps their registers.
 */
bool system_runs_avx2() noexcept;
bool system_runs_avx512() noexcept;

}  // namespace nerova_zel
