#include "fuzz/call_sequence.h"

#include <xmmintrin.h>

#include <algorithm>
#include <cstring>

#include "campaign/image_comparison.h"
#include "fuzz/finding.h"

namespace nerova_zel::test {

namespace {

constexpr int most_steps = 32;
constexpr std::size_t most_processors = 4;
constexpr std::size_t matrix_size = sizeof(CalibrationMatrix);

using Placement = GuardedBuffer::Placement;

/** Room for one matrix at any alignment, watched by the address sanitizer to the byte. */
class MatrixRoom {
 public:
  explicit MatrixRoom(std::size_t shift) : bytes_(shift + matrix_size, 0x5A), shift_(shift) {}
  float* get() { return reinterpret_cast<float*>(bytes_.data() + shift_); }
  bool holds(const CalibrationMatrix& matrix) const {
    return std::equal(bytes_.begin() + static_cast<std::ptrdiff_t>(shift_), bytes_.end(),
                      reinterpret_cast<const unsigned char*>(matrix.data()));
  }
  void put(const CalibrationMatrix& matrix) { std::memcpy(bytes_.data() + shift_, matrix.data(), matrix_size); }

 private:
  std::vector<unsigned char> bytes_;
  std::size_t shift_;
};

}  // namespace

void CallSequence::run() {
  if (!data_.ConsumeBool()) {  // otherwise most calls would only find that nothing is ready for them
    initialize();
    create();
  }
  for (int i = 0; i < most_steps && data_.remaining_bytes() > 0; ++i) {
    step();
    ++calls_;
    require(errors_ == expected_errors_, "another number of error records than calls with a NULL handle");
    require(timings_ == expected_timings_, "another number of timing records than transforms");
  }
  finish();
}

void CallSequence::step() {
  switch (data_.ConsumeIntegralInRange(0, 15)) {
    case 0:
      return terminate();
    case 1:
    case 2:
      return initialize();
    case 3:
    case 4:
      return create();
    case 5:
      return destroy();
    case 6:
    case 7:
      return set_coefficients();
    case 8:
      return get_coefficients();
    default:
      return transform();
  }
}

void CallSequence::initialize() {
  gives_log_ = data_.ConsumeBool();
  log_result_ = data_.ConsumeIntegral<std::int32_t>();
  require(library_.module_initialize() == 0, "initialize failed");
  ++initializations_;
}

void CallSequence::terminate() {
  require(library_.module_terminate() == 0, "terminate failed");
  initializations_ = std::max(0, initializations_ - 1);
  require(initialized() || !writes_records_, "the log was not given back");
}

void CallSequence::create() {
  if (processors_.size() == most_processors) {
    return;
  }
  auto* const untouched = reinterpret_cast<nv_polarization_processor*>(this);
  nv_polarization_processor* handle = untouched;
  const std::int32_t result = library_.create(&handle);
  require(result == (initialized() ? 0 : NV_POLARIZATION_PROCESSOR_ERROR_NOT_INITIALIZED), "create: another result");
  require((handle == untouched) == (result != 0), "create: a handle on failure, or none on success");
  if (result == 0) {
    processors_.push_back({handle, default_matrices()});
  }
}

std::int32_t CallSequence::result_for(const Processor* processor) const {
  if (!initialized()) {
    return NV_POLARIZATION_PROCESSOR_ERROR_NOT_INITIALIZED;
  }
  return processor == nullptr ? NV_POLARIZATION_PROCESSOR_ERROR_NULL_HANDLE : NV_POLARIZATION_PROCESSOR_SUCCESS;
}

CallSequence::Processor* CallSequence::some_processor() {
  const auto number = data_.ConsumeIntegralInRange<std::size_t>(0, 15);
  return processors_.empty() || number == 15 ? nullptr : &processors_[number % processors_.size()];
}

void CallSequence::destroy() {
  Processor* const processor = some_processor();
  const std::int32_t expected = result_for(processor);
  expect_errors(expected);
  require(library_.destroy(processor == nullptr ? nullptr : processor->handle) == expected, "destroy: another result");
  if (expected == NV_POLARIZATION_PROCESSOR_SUCCESS) {
    processors_.erase(processors_.begin() + (processor - processors_.data()));
  }
}

CalibrationMatrices CallSequence::some_matrices() {
  CalibrationMatrices matrices;
  if (data_.ConsumeBool()) {
    FrameCase seeded;
    seeded.matrices = static_cast<MatrixKind>(data_.ConsumeIntegralInRange(0, static_cast<int>(MatrixKind::Count) - 1));
    seeded.seed = data_.ConsumeIntegral<std::uint64_t>();
    return make_matrices(seeded);
  }
  for (CalibrationMatrix& matrix : matrices) {
    matrix.fill(0.0F);
    data_.ConsumeData(matrix.data(), matrix_size);  // any bits
  }
  return matrices;
}

void CallSequence::set_coefficients() {
  Processor* const processor = some_processor();
  const CalibrationMatrices matrices = some_matrices();
  const auto missing = data_.ConsumeIntegral<std::uint8_t>();
  std::vector<MatrixRoom> rooms(4, MatrixRoom(data_.ConsumeIntegralInRange<std::size_t>(0, 7)));
  std::array<const float*, 4> arguments = {};
  for (std::size_t i = 0; i < 4; ++i) {
    rooms[i].put(matrices[i]);
    arguments[i] = ((missing >> i) & 1U) != 0 ? nullptr : rooms[i].get();
  }
  const std::int32_t expected = result_for(processor);
  expect_errors(expected);
  require(library_.set_coefficients(processor == nullptr ? nullptr : processor->handle, arguments[0], arguments[1],
                                    arguments[2], arguments[3]) == expected,
          "set: another result");
  for (std::size_t i = 0; i < 4 && expected == NV_POLARIZATION_PROCESSOR_SUCCESS; ++i) {
    if (arguments[i] != nullptr) {
      std::memcpy(&processor->matrices[i], &matrices[i], matrix_size);
    }
  }
}

void CallSequence::get_coefficients() {
  Processor* const processor = some_processor();
  const auto missing = data_.ConsumeIntegral<std::uint8_t>();
  std::vector<MatrixRoom> rooms(4, MatrixRoom(data_.ConsumeIntegralInRange<std::size_t>(0, 7)));
  CalibrationMatrix untouched;
  std::memset(untouched.data(), 0x5A, matrix_size);
  std::array<float*, 4> arguments = {};
  for (std::size_t i = 0; i < 4; ++i) {
    arguments[i] = ((missing >> i) & 1U) != 0 ? nullptr : rooms[i].get();
  }
  const std::int32_t expected = result_for(processor);
  expect_errors(expected);
  require(library_.get_coefficients(processor == nullptr ? nullptr : processor->handle, arguments[0], arguments[1],
                                    arguments[2], arguments[3]) == expected,
          "get: another result");
  for (std::size_t i = 0; i < 4; ++i) {
    const bool written = expected == NV_POLARIZATION_PROCESSOR_SUCCESS && arguments[i] != nullptr;
    require(rooms[i].holds(written ? processor->matrices[i] : untouched), "get: other matrices than were set");
  }
}

FrameCase CallSequence::some_frame() {
  FrameCase frame_case;
  const auto any_or = [this](int first, int last) {
    return data_.ConsumeIntegralInRange(0, 31) == 31 ? data_.ConsumeIntegral<std::int32_t>()
                                                     : data_.ConsumeIntegralInRange(first, last);
  };
  frame_case.width = any_or(1, 260);
  frame_case.height = any_or(1, 40);
  frame_case.phase = any_or(-1, 4);
  frame_case.origin_x = any_or(-2, 3);
  frame_case.origin_y = any_or(-2, 3);
  frame_case.bit_depth = any_or(-1, 17);
  frame_case.output_maximum = data_.ConsumeIntegral<std::uint16_t>();
  if (frame_case.output_maximum % 4 == 1 && frame_case.bit_depth >= 0 && frame_case.bit_depth <= 16) {
    frame_case.output_maximum = static_cast<std::uint16_t>((1U << static_cast<unsigned>(frame_case.bit_depth)) - 1);
  }
  frame_case.samples =
      static_cast<SampleKind>(data_.ConsumeIntegralInRange(0, static_cast<int>(SampleKind::Count) - 1));
  frame_case.seed = data_.ConsumeIntegral<std::uint16_t>();
  return frame_case;
}

void* CallSequence::some_place(std::size_t buffer, std::size_t bytes) {
  return arena_[buffer].place(bytes, data_.ConsumeBool() ? Placement::AfterGuard : Placement::BeforeGuard);
}

/** Every buffer is placed as an empty block, so that none may be read or written. */
TransformValues CallSequence::some_values(const Processor* processor, const FrameCase& frame_case) {
  TransformValues values = {processor == nullptr ? nullptr : processor->handle,
                            frame_case.phase,
                            some_place(0, 0),
                            frame_case.origin_x,
                            frame_case.origin_y,
                            frame_case.width,
                            frame_case.height,
                            frame_case.bit_depth,
                            frame_case.output_maximum,
                            {}};
  const auto wanted = data_.ConsumeIntegral<std::uint8_t>();
  for (std::size_t i = 0; i < values.outputs.size(); ++i) {
    values.outputs[i] = some_place(i + 1, 0);
    if (((wanted >> i) & 1U) == 0) {
      values.outputs[i] = nullptr;
    }
  }
  if (data_.ConsumeIntegralInRange(0, 7) == 7) {
    const auto alias = data_.ConsumeIntegralInRange<std::size_t>(0, 5);
    const auto of = data_.ConsumeIntegralInRange<std::size_t>(0, 6);
    values.outputs[alias] = of == 6 ? const_cast<void*>(values.input) : values.outputs[of];
  }
  if (data_.ConsumeIntegralInRange(0, 15) == 15) {
    values.input = nullptr;
  }
  return values;
}

std::int32_t CallSequence::call_transform(const TransformValues& values) {
  constexpr unsigned rounding = _MM_ROUND_MASK;
  const unsigned before = _mm_getcsr();
  const unsigned callers = data_.ConsumeIntegral<std::uint16_t>() & ~rounding;
  // A flag raised and unmasked makes no exception by itself, and none but the library computes in between.
  _mm_setcsr(callers);
  const std::int32_t result = values.call(library_.transform);
  const unsigned after = _mm_getcsr();
  _mm_setcsr(before);
  require(after == callers, "transform: the caller's floating-point settings or flags changed");
  return result;
}

void CallSequence::transform() {
  const Processor* const processor = some_processor();
  FrameCase frame_case = some_frame();
  TransformValues values = some_values(processor, frame_case);
  const std::int32_t expected = documented_result(initialized(), values);
  expect_errors(expected);
  expected_timings_ += writes_records_ ? 1 : 0;

  OutputImages reference;
  if (expected == NV_POLARIZATION_PROCESSOR_SUCCESS) {
    values.width = frame_case.width = 2 + (frame_case.width - 2) % (most_pixels / 2 - 1);
    values.height = frame_case.height = 2 + (frame_case.height - 2) % (most_pixels / frame_case.width - 1);
    std::vector<std::uint16_t> samples = make_samples(frame_case);
    data_.ConsumeData(samples.data(), std::min<std::size_t>(data_.ConsumeIntegral<std::uint8_t>(),
                                                            samples.size() * sizeof(std::uint16_t)));
    reference = compute_reference(frame_of(frame_case, samples), processor->matrices, route_);
    const std::size_t bytes = samples.size() * sizeof(std::uint16_t);
    void* const input = some_place(0, bytes);
    std::memcpy(input, samples.data(), bytes);
    values.input = input;
    for (std::size_t i = 0; i < values.outputs.size(); ++i) {
      if (values.outputs[i] != nullptr) {
        values.outputs[i] = some_place(i + 1, i == 0 ? 2 * sizeof(float) * samples.size() : bytes);
      }
    }
  }

  arena_[0].set_writable(false);
  const std::int32_t result = call_transform(values);
  arena_[0].set_writable(true);
  if (result != expected) {
    report_finding("transform: result " + std::to_string(result) + " instead of " + std::to_string(expected));
  }
  for (std::size_t i = 0; i < output_count; ++i) {
    require(arena_[i + 1].surroundings_intact(), output_name(i));
  }
  if (result == NV_POLARIZATION_PROCESSOR_SUCCESS) {
    if (const auto fault = first_difference(reference, values.outputs, values.width)) {
      report_finding(describe(frame_case) + ": " + *fault);
    }
    ++frames_;
  }
}

/** Leaves the library as it was found. */
void CallSequence::finish() {
  if (!initialized()) {
    library_.module_initialize();
    ++initializations_;
  }
  for (const Processor& processor : processors_) {
    require(library_.destroy(processor.handle) == 0, "destroy failed");
  }
  while (initialized()) {
    terminate();
  }
}

void* CallSequence::get_log(const char* module_name, const char* second_name, const char* configuration) {
  require(!initialized() && !writes_records_, "a log is asked for a second time");
  require(std::strlen(module_name) > 0 && std::strlen(second_name) == 0 && std::strlen(configuration) > 0,
          "get_log: strange names");
  writes_records_ = gives_log_;
  return gives_log_ ? this : nullptr;
}

std::int32_t CallSequence::log(void* log, std::int32_t level, const char* file, std::int32_t line, const char* function,
                               const char* message) {
  require(log == this && writes_records_, "a record for another log");
  require(line > 0 && std::strlen(file) > 0 && std::strlen(function) > 0 && std::strlen(message) > 0,
          "an empty record");
  require(level == 2 || level == 7, "a record of a strange level");
  ++(level == 2 ? errors_ : timings_);
  return log_result_;
}

void CallSequence::free_log(const char* /*module_name*/, const char* /*second_name*/) { writes_records_ = false; }

}  // namespace nerova_zel::test
