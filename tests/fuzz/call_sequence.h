#pragma once

#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <vector>

#include "campaign/frame_case.h"
#include "fuzz/documented_checks.h"
#include "lifecycle/mock_behaviour.h"
#include "reference/reference_model.h"
#include "support/guarded_buffer.h"
#include "support/loaded_library.h"

namespace nerova_zel::test {

constexpr int most_pixels = 4096;  ///< of the frames of all sequences

/**
 * A sequence of calls that the bytes stand for, each held against what the header documents: results, matrices, every
 * element of every image, untouched memory, and how many records the logger gets.
 */
class CallSequence final : public LoggerBehaviour {
 public:
  CallSequence(const LoadedLibrary& library, Route route, GuardedFrame& arena, FuzzedDataProvider& data)
      : library_(library), route_(route), arena_(arena), data_(data) {}

  void run();

  long calls() const { return calls_; }
  /** Transforms whose images were compared. */
  long frames() const { return frames_; }

  void* get_log(const char* module_name, const char* second_name, const char* configuration) override;
  std::int32_t log(void* log, std::int32_t level, const char* file, std::int32_t line, const char* function,
                   const char* message) override;
  void free_log(const char* module_name, const char* second_name) override;

 private:
  struct Processor {
    nv_polarization_processor* handle;
    CalibrationMatrices matrices;
  };

  void step();
  void initialize();
  void terminate();
  void create();
  void destroy();
  void set_coefficients();
  void get_coefficients();
  void transform();
  void finish();

  bool initialized() const { return initializations_ > 0; }
  /** The result of a call that asks for nothing but a processor. */
  std::int32_t result_for(const Processor* processor) const;
  /** One of those made, or none. */
  Processor* some_processor();
  FrameCase some_frame();
  CalibrationMatrices some_matrices();
  void* some_place(std::size_t buffer, std::size_t bytes);
  TransformValues some_values(const Processor* processor, const FrameCase& frame_case);
  /** Calls with the caller's floating-point settings that the bytes ask for. */
  std::int32_t call_transform(const TransformValues& values);
  void expect_errors(std::int32_t result) { expected_errors_ += result == 4 && writes_records_ ? 1 : 0; }

  const LoadedLibrary& library_;
  const Route route_;
  GuardedFrame& arena_;
  FuzzedDataProvider& data_;

  long calls_ = 0;
  long frames_ = 0;
  int initializations_ = 0;
  std::vector<Processor> processors_;
  bool gives_log_ = true;
  std::int32_t log_result_ = 0;
  bool writes_records_ = false;
  long errors_ = 0;
  long expected_errors_ = 0;
  long timings_ = 0;
  long expected_timings_ = 0;
};

}  // namespace nerova_zel::test
