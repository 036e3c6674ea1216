#pragma once

#include <array>
#include <cstring>
#include <optional>
#include <string>

#include "campaign/frame_case.h"
#include "campaign/image_comparison.h"
#include "support/guarded_buffer.h"
#include "support/loaded_library.h"
#include "support/transform_values.h"

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
  /** For frames of up to max_pixels. */
  CaseRunner(const LoadedProcessor& processor, Route route, std::size_t max_pixels)
      : processor_(processor), route_(route), buffers_(max_pixels) {}

  /** Sets the calibration and computes the reference for the calls that follow. */
  void begin_frame(const FrameCase& frame_case) {
    frame_case_ = frame_case;
    samples_ = make_samples(frame_case);
    const CalibrationMatrices matrices = make_matrices(frame_case);
    processor_.set_coefficients(processor_.handle, matrices[0].data(), matrices[1].data(), matrices[2].data(),
                                matrices[3].data());
    reference_ = compute_reference(frame_of(frame_case, samples_), matrices, route_);
  }

  /** The first fault, in words, or nothing. */
  std::optional<std::string> run(const Call& call) {
    const std::size_t bytes = samples_.size() * sizeof(std::uint16_t);
    buffers_[0].set_writable(true);
    const FrameCase& f = frame_case_;
    TransformValues values = {processor_.handle, f.phase,  nullptr,     f.origin_x,       f.origin_y,
                              f.width,           f.height, f.bit_depth, f.output_maximum, {}};
    void* const input = buffers_[0].place(bytes, call.placements[0]);
    std::memcpy(input, samples_.data(), bytes);
    buffers_[0].set_writable(false);
    values.input = input;
    OutputPointers& outputs = values.outputs;
    for (std::size_t i = 0; i < outputs.size(); ++i) {
      if (((call.outputs >> i) & 1U) != 0) {
        outputs[i] = buffers_[i + 1].place(i == 0 ? 4 * bytes : bytes, call.placements[i + 1]);
      }
    }
    const std::int32_t result = values.call(processor_.transform);
    if (result != NV_POLARIZATION_PROCESSOR_SUCCESS) {
      return "transform returned " + std::to_string(result);
    }
    for (std::size_t i = 0; i < outputs.size(); ++i) {
      if (outputs[i] != nullptr && !buffers_[i + 1].surroundings_intact()) {
        return std::string("memory outside the output was written: ") + output_name(i);
      }
    }
    return first_difference(reference_, outputs, f.width);
  }

 private:
  const LoadedProcessor& processor_;
  const Route route_;
  GuardedFrame buffers_;
  FrameCase frame_case_;
  std::vector<std::uint16_t> samples_;
  OutputImages reference_;
};

}  // namespace nerova_zel::test
