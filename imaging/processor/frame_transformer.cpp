#include "processor/frame_transformer.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "processor/linear_stokes.h"

namespace nerova_zel {

FrameTransformer::FrameTransformer(const TransformSettings& settings, const Library& library, std::set<Output> wanted)
    : settings_(settings), library_(library), origin_(settings.origin), outputs_(std::move(wanted)) {
  if (settings_.region) {
    origin_.x += settings_.region->x;
    origin_.y += settings_.region->y;
  }
}

FrameTransformer::Timing FrameTransformer::run(const std::string& name) {
  check_mosaic_size(frame_, name);
  if (settings_.region) {
    crop(frame_, *settings_.region, name);
  }
  bit_depth_ = bit_depth_of(frame_, settings_.bit_depth, name);
  outputs_.allocate(frame_.width, frame_.height);
  return transform();
}

const std::vector<std::uint16_t>& FrameTransformer::pixels_to_transform() {
  if (!settings_.calibration) {
    return frame_.pixels;
  }
  without_dark_level(frame_, {settings_.layout, origin_, bit_depth_}, *settings_.calibration, calibrated_);
  return calibrated_;
}

/** What the library does not compute. */
void FrameTransformer::compute_others(const std::vector<std::uint16_t>& pixels) {
  const StokesPlanes planes{outputs_.room_for_floats(Output::s0), outputs_.room_for_floats(Output::s1),
                            outputs_.room_for_floats(Output::s2)};
  if (planes.s0 != nullptr || planes.s1 != nullptr || planes.s2 != nullptr) {
    const MosaicFrame mosaic{pixels.data(), frame_.width, frame_.height, settings_.layout, origin_};
    compute_linear_stokes(mosaic, library_.calibration(), 0, frame_.height, planes);
  }
  if (float* const angle = outputs_.room_for_floats(Output::angle)) {
    angles_of_pairs(outputs_.stokes(), frame_.pixels.size(), angle);
  }
}

FrameTransformer::Timing FrameTransformer::transform() {
  const std::vector<std::uint16_t>& pixels = pixels_to_transform();
  const Frame frame{pixels,    frame_.width, frame_.height,
                    origin_.x, origin_.y,    static_cast<Phase>(settings_.layout.phase()),
                    bit_depth_};
  const Outputs outputs = outputs_.buffers(static_cast<std::uint16_t>(settings_.output_maximum));
  Timing timing{};
  for (int i = 0; i < settings_.repeat; ++i) {
    const auto start = std::chrono::steady_clock::now();
    if (outputs_.has_library_outputs()) {
      library_.transform(frame, outputs);
    }
    compute_others(pixels);
    const std::chrono::duration<double, std::milli> elapsed = std::chrono::steady_clock::now() - start;
    if (i == 0) {
      timing = {elapsed.count(), elapsed.count()};
    }
    timing.best_ms = std::min(timing.best_ms, elapsed.count());
  }
  return timing;
}

}  // namespace nerova_zel
