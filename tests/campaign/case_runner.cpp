#include "campaign/case_runner.h"

#include <cstring>
#include <stdexcept>

#include "campaign/image_comparison.h"

namespace nerova_zel::test {

namespace {

bool wants(unsigned outputs, std::size_t output) { return ((outputs >> output) & 1U) != 0; }

}  // namespace

CaseRunner::CaseRunner(const LoadedLibrary& library, Route route, std::size_t max_pixels)
    : library_(library), route_(route) {
  for (std::size_t i = 0; i < buffers_.size(); ++i) {
    const std::size_t bytes_per_pixel = i == 1 ? 2 * sizeof(float) : sizeof(std::uint16_t);
    buffers_[i] = std::make_unique<GuardedBuffer>(bytes_per_pixel * max_pixels);
  }
  library_.module_initialize();
  if (library_.create(&processor_) != NV_POLARIZATION_PROCESSOR_SUCCESS) {
    throw std::runtime_error("the library creates no processor");
  }
}

CaseRunner::~CaseRunner() {
  library_.destroy(processor_);
  library_.module_terminate();
}

void CaseRunner::begin_frame(const FrameCase& frame_case) {
  frame_case_ = frame_case;
  samples_ = make_samples(frame_case);
  const CalibrationMatrices matrices = make_matrices(frame_case);
  library_.set_coefficients(processor_, matrices[0].data(), matrices[1].data(), matrices[2].data(), matrices[3].data());
  const Frame frame = {frame_case.width,    frame_case.height,   samples_.data(),      frame_case.phase,
                       frame_case.origin_x, frame_case.origin_y, frame_case.bit_depth, frame_case.output_maximum};
  reference_ = compute_reference(frame, matrices, route_);
}

std::optional<std::string> CaseRunner::run(const Call& call) {
  buffers_[0]->set_writable(true);
  void* const input = buffers_[0]->place(samples_.size() * sizeof(std::uint16_t), call.placements[0]);
  std::memcpy(input, samples_.data(), samples_.size() * sizeof(std::uint16_t));
  buffers_[0]->set_writable(false);

  const auto place_output = [&](std::size_t output, std::size_t bytes) {
    return wants(call.outputs, output) ? buffers_[output + 1]->place(bytes, call.placements[output + 1]) : nullptr;
  };
  auto* const stokes = static_cast<float*>(place_output(0, 2 * samples_.size() * sizeof(float)));
  normalized_stokes_ = stokes;
  for (std::size_t image = 0; image < CodeImageCount; ++image) {
    codes_[image] = static_cast<std::uint16_t*>(place_output(image + 1, samples_.size() * sizeof(std::uint16_t)));
  }

  const std::int32_t result =
      library_.transform(processor_, frame_case_.phase, static_cast<const std::uint16_t*>(input), frame_case_.origin_x,
                         frame_case_.origin_y, frame_case_.width, frame_case_.height, frame_case_.bit_depth,
                         frame_case_.output_maximum, stokes, codes_[TotalPower], codes_[HorizontalVertical],
                         codes_[Diagonal], codes_[Azimuth], codes_[DegreeOfPolarization]);
  if (result != NV_POLARIZATION_PROCESSOR_SUCCESS) {
    return "transform returned " + std::to_string(result);
  }
  return compare(call.outputs);
}

std::optional<std::string> CaseRunner::compare(unsigned outputs) const {
  for (std::size_t output = 0; output < output_count; ++output) {
    if (wants(outputs, output) && !buffers_[output + 1]->surroundings_intact()) {
      return std::string("memory outside the output was written: ") + output_name(output);
    }
  }
  return first_difference(reference_, normalized_stokes_, codes_, frame_case_.width);
}

}  // namespace nerova_zel::test
