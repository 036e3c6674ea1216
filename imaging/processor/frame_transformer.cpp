#include "processor/frame_transformer.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "processor/frame_images.h"

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
  bit_depth_ = settle_bit_depth(frame_, settings_.depth, name);
  if (settings_.calibration) {
    check_bit_depth(*settings_.calibration, bit_depth_, name);
  }
  counts_ = count_pixels(frame_.pixels.data(), frame_.pixels.size(), full_scale());
  if (!settings_.allow_overflow) {
    check_overflow(counts_, frame_, bit_depth_, name);
  }
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

FrameTransformer::Timing FrameTransformer::transform() {
  const std::vector<std::uint16_t>& pixels = pixels_to_transform();
  const Frame frame{pixels,    frame_.width, frame_.height,
                    origin_.x, origin_.y,    static_cast<Phase>(settings_.layout.phase()),
                    bit_depth_};
  const ImageBuffers images = outputs_.buffers(static_cast<std::uint16_t>(settings_.output_maximum));
  const Calibration matrices = library_.calibration();
  const auto call = [this](const Frame& rows, const Outputs& outputs) { library_.transform(rows, outputs); };
  Timing timing{};
  for (int i = 0; i < settings_.repeat; ++i) {
    const auto start = std::chrono::steady_clock::now();
    compute_images(call, matrices, frame, images, 1);
    const std::chrono::duration<double, std::milli> elapsed = std::chrono::steady_clock::now() - start;
    if (i == 0) {
      timing = {elapsed.count(), elapsed.count()};
    }
    timing.best_ms = std::min(timing.best_ms, elapsed.count());
  }
  return timing;
}

}  // namespace nerova_zel
