#include "processor/frame_transformer.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "failure.h"
#include "processor/frame_images.h"

namespace nerova_zel {

namespace {

bool wants_any(const ImageBuffers& images) {
  const Outputs& library = images.library;
  const StokesPlanes& planes = images.planes;
  for (const void* image :
       {static_cast<const void*>(library.normalized_stokes.data()),
        static_cast<const void*>(library.total_power.data()),
        static_cast<const void*>(library.horizontal_vertical.data()), static_cast<const void*>(library.diagonal.data()),
        static_cast<const void*>(library.azimuth.data()),
        static_cast<const void*>(library.degree_of_linear_polarization.data()), static_cast<const void*>(planes.s0),
        static_cast<const void*>(planes.s1), static_cast<const void*>(planes.s2),
        static_cast<const void*>(images.angle)}) {
    if (image != nullptr) {
      return true;
    }
  }
  return false;
}

}  // namespace

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
  counts_ = counts_of(frame_, full_scale());
  if (!settings_.allow_overflow) {
    check_overflow(counts_, frame_, bit_depth_, name);
  }
  if (settings_.power_headroom && bit_depth_ == 16) {
    throw Failure(name + " has 16 bits; power with headroom needs a bit depth below.", Fact::no_headroom);
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

double FrameTransformer::clipped_power() const {
  const std::uint16_t* const power = outputs_.values(Output::power);
  const std::size_t pixels = static_cast<std::size_t>(outputs_.width()) * static_cast<std::size_t>(outputs_.height());
  if (power == nullptr || pixels == 0) {
    return 0.0;
  }
  return static_cast<double>(count_pixels(power, pixels, settings_.output_maximum).saturated) /
         static_cast<double>(pixels);
}

void FrameTransformer::compute_bilinear_images(const Frame& frame, const ImageBuffers& images) {
  for (std::vector<float>& plane : windows_) {
    plane.resize(frame_.pixels.size());
  }
  const MosaicFrame mosaic{frame.pixels.data(), frame.width, frame.height, settings_.layout, origin_};
  compute_linear_stokes(mosaic, library_.calibration(), 0, frame.height,
                        {windows_[0].data(), windows_[1].data(), windows_[2].data()});
  const double power_scale = settings_.power_headroom ? 2 * full_scale() + 1 : full_scale();
  compute_bilinear({windows_[0].data(), windows_[1].data(), windows_[2].data(), frame.width, frame.height},
                   full_scale(), power_scale, images);
}

void FrameTransformer::compute(const Frame& frame, ImageBuffers images) {
  if (settings_.sampling == Sampling::bilinear) {
    compute_bilinear_images(frame, images);
    return;
  }
  if (settings_.power_headroom && images.library.total_power.data() != nullptr) {
    Frame dimmed = frame;
    dimmed.bit_depth = bit_depth_ + 1;
    Outputs power;
    power.output_maximum = images.library.output_maximum;
    std::swap(power.total_power, images.library.total_power);
    library_.transform(dimmed, power, settings_.threads);
  }
  if (wants_any(images)) {
    const auto call = [this](const Frame& rows, const Outputs& outputs) { library_.transform(rows, outputs); };
    compute_images(call, library_.calibration(), frame, images, settings_.threads);
  }
}

FrameTransformer::Timing FrameTransformer::transform() {
  const std::vector<std::uint16_t>& pixels = pixels_to_transform();
  const Frame frame{pixels,    frame_.width, frame_.height,
                    origin_.x, origin_.y,    static_cast<Phase>(settings_.layout.phase()),
                    bit_depth_};
  const ImageBuffers images = outputs_.buffers(static_cast<std::uint16_t>(settings_.output_maximum));
  Timing timing{};
  for (int i = 0; i < settings_.repeat; ++i) {
    const auto start = std::chrono::steady_clock::now();
    compute(frame, images);
    const std::chrono::duration<double, std::milli> elapsed = std::chrono::steady_clock::now() - start;
    if (i == 0) {
      timing = {elapsed.count(), elapsed.count()};
    }
    timing.best_ms = std::min(timing.best_ms, elapsed.count());
  }
  if (settings_.sampling == Sampling::superpixel) {
    outputs_.keep_superpixels();
  }
  return timing;
}

}  // namespace nerova_zel
