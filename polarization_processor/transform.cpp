#include "transform.h"

#include <algorithm>
#include <iterator>

#include "floating_point_environment.h"
#include "kernels/built_in/kernel_selection.h"
#include "kernels/shared/outputs.h"
#include "nerova_zel/polarization_processor.h"
#include "platform/high_resolution_counter.h"
#include "records.h"

namespace nerova_zel {

namespace {

/** Runs from its construction, if its time is wanted. Counts that cannot be read stay 0. */
class Stopwatch {
 public:
  explicit Stopwatch(bool wanted) noexcept : wanted_(wanted) {
    if (wanted_ && read_counter_frequency(frequency_)) {
      read_counter(start_);
    }
  }

  /** False when the counter cannot be read now, or was not to be read. */
  bool elapsed_microseconds(double& microseconds) const noexcept {
    std::int64_t end = 0;
    if (!wanted_ || !read_counter(end)) {
      return false;
    }
    microseconds = static_cast<double>(end - start_) / static_cast<double>(frequency_) * 1000000.0;
    return true;
  }

 private:
  bool wanted_;
  std::int64_t frequency_ = 0;
  std::int64_t start_ = 0;
};

/** The phase of the frame's own top-left pixel. A negative phase counts as 0 once a swap applies. */
PolarPhase phase_at_origin(PolarPhase phase, std::int32_t origin_x, std::int32_t origin_y) noexcept {
  const std::int32_t x = origin_x % 2;  // -1 for a negative odd coordinate, which takes the diagonal swap
  const std::int32_t y = origin_y % 2;
  if (x == 0 && y == 0) {
    return phase;
  }
  // The three swaps of two pairs of phases are the three ways to flip bits of the phase.
  constexpr PolarPhase vertical_swap = 1;
  constexpr PolarPhase diagonal_swap = 2;
  constexpr PolarPhase horizontal_swap = 3;
  PolarPhase swap = diagonal_swap;
  if (x == 0 && y == 1) {
    swap = vertical_swap;
  } else if (x == 1 && y == 0) {
    swap = horizontal_swap;
  }
  return std::max(phase, 0) ^ swap;
}

std::int32_t check_outputs(const TransformArguments& arguments) noexcept {
  const void* wanted[Outputs::count] = {};
  const void** end = std::begin(wanted);
  Outputs::for_each([&](auto output) {
    if (const void* const image = arguments.images.*output.image) {
      *end++ = image;
    }
  });
  if (end == std::begin(wanted)) {
    return NV_POLARIZATION_PROCESSOR_ERROR_NO_OUTPUT;
  }
  if (std::find(std::begin(wanted), end, arguments.input) != end) {
    return NV_POLARIZATION_PROCESSOR_ERROR_OUTPUT_IS_INPUT;
  }
  for (const void** image = std::begin(wanted); image != end; ++image) {
    if (std::find(image + 1, end, *image) != end) {
      return NV_POLARIZATION_PROCESSOR_ERROR_OUTPUTS_EQUAL;
    }
  }
  return NV_POLARIZATION_PROCESSOR_SUCCESS;
}

/** The first check that fails decides the code. */
std::int32_t check(const LogClient& client, const TransformArguments& arguments) noexcept {
  if (arguments.processor == nullptr) {
    records::transform_null_handle(client);
    return NV_POLARIZATION_PROCESSOR_ERROR_NULL_HANDLE;
  }
  if (arguments.phase >= phase_count) {
    return NV_POLARIZATION_PROCESSOR_ERROR_PHASE;
  }
  if (arguments.input == nullptr) {
    return NV_POLARIZATION_PROCESSOR_ERROR_NULL_INPUT;
  }
  if (const std::int32_t result = check_outputs(arguments)) {
    return result;
  }
  if (arguments.width < 2) {
    return NV_POLARIZATION_PROCESSOR_ERROR_WIDTH;
  }
  if (arguments.height < 2) {
    return NV_POLARIZATION_PROCESSOR_ERROR_HEIGHT;
  }
  if (arguments.output_maximum == 0) {
    return NV_POLARIZATION_PROCESSOR_ERROR_OUTPUT_MAXIMUM;
  }
  if (arguments.bit_depth < 0 || arguments.bit_depth > 16) {
    return NV_POLARIZATION_PROCESSOR_ERROR_BIT_DEPTH;
  }
  return NV_POLARIZATION_PROCESSOR_SUCCESS;
}

TransformParameters make_parameters(const TransformArguments& arguments) noexcept {
  return {
      arguments.height,
      arguments.width,
      phase_at_origin(arguments.phase, arguments.origin_x, arguments.origin_y),
      arguments.input,
      arguments.bit_depth,
      static_cast<float>((std::int32_t{1} << arguments.bit_depth) - 1),
      static_cast<float>(arguments.output_maximum),
      arguments.output_maximum,
      arguments.images,
  };
}

/** No plugin stands in for the other: a level whose own plugin is unusable gets the built-in kernels. */
void route(const Processor& processor, const TransformParameters& parameters, bool sse41) {
  const MatrixRow matrices = processor.matrix_row(parameters.phase);
  if (processor.cpu_level() == CpuLevel::Avx512 && processor.avx512_plugin().usable()) {
    processor.avx512_plugin().transform(parameters, matrices);
  } else if (processor.cpu_level() == CpuLevel::Avx2 && processor.avx2_plugin().usable()) {
    processor.avx2_plugin().transform(parameters, matrices);
  } else {
    run_built_in(parameters, matrices, sse41);
  }
}

}  // namespace

std::int32_t transform(const LogClient& client, const TransformArguments& arguments) noexcept {
  // A processor exists only where the computer has vector units; 64-bit code cannot do without.
  const bool has_vector_units = sizeof(void*) == 8 || arguments.processor != nullptr;
  const QuietX87 quiet_x87;
  const QuietVectorUnits quiet_vector_units(has_vector_units);
  const Stopwatch stopwatch(client.enabled());
  const std::int32_t result = check(client, arguments);
  if (result == NV_POLARIZATION_PROCESSOR_SUCCESS) {
    try {
      route(*arguments.processor, make_parameters(arguments), cpu_has_sse41());
    } catch (...) {  // NOLINT(bugprone-empty-catch): what a plugin makes of a frame is not examined
    }
  }
  double microseconds = 0;
  if (stopwatch.elapsed_microseconds(microseconds)) {
    records::transform_time(client, microseconds);
  }
  return result;
}

}  // namespace nerova_zel
