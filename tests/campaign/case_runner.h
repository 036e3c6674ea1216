#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>

#include "campaign/frame_case.h"
#include "support/guarded_buffer.h"
#include "support/loaded_library.h"

namespace nerova_zel::test {

/** One transform of a frame: bit i of outputs asks for output i in the order of the interface. */
struct Call {
  unsigned outputs;
  std::array<GuardedBuffer::Placement, 7> placements;  // of the input and of the six outputs
};

constexpr unsigned all_outputs = 63;

/** Transforms frames in guarded memory and compares every element of every output with the reference, bit for bit. */
class CaseRunner {
 public:
  /** For frames of up to max_pixels. Throws when the library gives no processor. */
  CaseRunner(const LoadedLibrary& library, Route route, std::size_t max_pixels);
  ~CaseRunner();
  CaseRunner(const CaseRunner&) = delete;
  CaseRunner& operator=(const CaseRunner&) = delete;

  /** Sets the calibration and computes the reference for the calls that follow. */
  void begin_frame(const FrameCase& frame_case);

  /** The first fault, in words, or nothing. */
  std::optional<std::string> run(const Call& call);

 private:
  std::optional<std::string> compare(unsigned outputs) const;

  const LoadedLibrary& library_;
  Route route_;
  nv_polarization_processor* processor_ = nullptr;
  std::array<std::unique_ptr<GuardedBuffer>, 7> buffers_;  // the input's, then one for each output
  FrameCase frame_case_;
  std::vector<std::uint16_t> samples_;
  OutputImages reference_;
  const float* normalized_stokes_ = nullptr;
  std::array<std::uint16_t*, CodeImageCount> codes_ = {};
};

}  // namespace nerova_zel::test
