#include "processor/sensor_transformer.h"

#include <chrono>
#include <utility>

#include "failure.h"
#include "frames/colour_interpolation.h"

namespace nerova_zel {

namespace {

constexpr std::size_t green2 = static_cast<std::size_t>(ColourPlane::green2);

/** Where every plane begins when it is cut to what all have; this does not depend on the frame's size. */
Origin common_origin(const Origin& origin) {
  const ColourMosaic mosaic(ColourPattern::rggb, origin, {8, 8});
  const Origin plane = mosaic.plane_origin(ColourPlane::red);
  const Region common = mosaic.common_region(ColourPlane::red);
  return {plane.x + common.x, plane.y + common.y};
}

}  // namespace

ColourPlane ColourSettings::plane(std::size_t i) const { return colour_planes[merge_green && i > 1 ? i + 1 : i]; }

const char* ColourSettings::name(std::size_t i) const {
  return merge_green && plane(i) == ColourPlane::green1 ? "G" : name_of(plane(i));
}

// Pixels of both greens are averaged before the matrices are applied: exact where the two calibrations are equal, and
// wrong by the product of their difference and that of the greens where they are not.
std::optional<CameraCalibration> ColourSettings::calibration(std::size_t i) const {
  if (!calibrations) {
    return std::nullopt;
  }
  CameraCalibration result = (*calibrations)[static_cast<std::size_t>(plane(i))];
  if (merge_green && plane(i) == ColourPlane::green1) {
    const CameraCalibration& other = (*calibrations)[green2];
    for (std::size_t m = 0; m < result.matrices.size(); ++m) {
      for (std::size_t k = 0; k < result.matrices[m].size(); ++k) {
        result.matrices[m][k] = 0.5F * (result.matrices[m][k] + other.matrices[m][k]);
      }
      result.dark_levels[m] = 0.5 * (result.dark_levels[m] + other.dark_levels[m]);
    }
  }
  return result;
}

SensorLibraries::SensorLibraries(const std::string& path, const TransformSettings& settings,
                                 const std::optional<ColourSettings>& colour) {
  const bool one_each = colour && colour->calibrations;
  for (std::size_t i = 0; i < (one_each ? colour->plane_count() : 1); ++i) {
    libraries_.push_back(std::make_unique<Library>(path));
    const std::optional<CameraCalibration> calibration = colour ? colour->calibration(i) : settings.calibration;
    if (calibration) {
      libraries_.back()->set_calibration(calibration->matrices);
    }
  }
}

SensorTransformer::SensorTransformer(const TransformSettings& settings, const std::optional<ColourSettings>& colour,
                                     const SensorLibraries& libraries, const std::set<Output>& wanted)
    : settings_(settings), colour_(colour), origin_(settings.origin) {
  if (settings_.region) {
    origin_.x += settings_.region->x;
    origin_.y += settings_.region->y;
  }
  if (!colour_) {
    planes_.push_back(std::make_unique<Plane>(settings_, libraries.of(0), wanted));
    return;
  }
  for (std::size_t i = 0; i < colour_->plane_count(); ++i) {
    TransformSettings of_plane = settings_;
    of_plane.region.reset();
    of_plane.depth = {};  // settled before
    of_plane.allow_overflow = true;
    of_plane.origin = colour_->full_size ? origin_ : common_origin(origin_);
    of_plane.calibration = colour_->calibration(i);
    planes_.push_back(std::make_unique<Plane>(of_plane, libraries.of(i), wanted));
  }
}

FrameTransformer::Timing SensorTransformer::run(const std::string& name) {
  if (!colour_) {
    return planes_.front()->transformer.run(name);
  }
  settle_pixels(name);
  const auto start = std::chrono::steady_clock::now();
  take_apart(name);
  const std::chrono::duration<double, std::milli> elapsed = std::chrono::steady_clock::now() - start;
  FrameTransformer::Timing sum{elapsed.count(), elapsed.count()};
  for (const auto& plane : planes_) {
    const FrameTransformer::Timing timing = plane->transformer.run(name);
    sum.first_ms += timing.first_ms;
    sum.best_ms += timing.best_ms;
  }
  return sum;
}

/** What is of the frame as a whole, and what averages need: the significant bits lowest. */
void SensorTransformer::settle_pixels(const std::string& name) {
  if (settings_.region) {
    crop(frame_, *settings_.region, name);
  }
  const int bit_depth = settle_bit_depth(frame_, settings_.depth, name);
  counts_ = counts_of(frame_, (1 << bit_depth) - 1);
  if (!settings_.allow_overflow) {
    check_overflow(counts_, frame_, bit_depth, name);
  }
  colour_bits_ = bit_depth;
}

void SensorTransformer::take_apart(const std::string& name) {
  const ColourMosaic mosaic(colour_->pattern, origin_, {frame_.width, frame_.height});
  const FrameSize usable = colour_->full_size ? mosaic.size() : mosaic.common_region(ColourPlane::red).size;
  const int least = colour_->full_size ? 4 : 2;
  if (usable.width < least || usable.height < least) {
    throw Failure(name + " is " + std::to_string(frame_.width) + " x " + std::to_string(frame_.height) +
                  " pixels, too small for its colours to have a mosaic of 2 x 2 pixels each at the same place.");
  }
  split_frame(mosaic, frame_, raw_);
  for (std::size_t i = 0; i < planes_.size(); ++i) {
    const ColourPlane plane = colour_->plane(i);
    const bool is_merged = colour_->merge_green && plane == ColourPlane::green1;
    RawFrame& frame = planes_[i]->transformer.frame();
    take_plane(mosaic, plane, name, frame);
    if (is_merged) {
      take_plane(mosaic, ColourPlane::green2, name, other_green_);
      average_images(frame.pixels.data(), other_green_.pixels.data(), frame.pixels.size(), frame.pixels.data());
    }
    frame.bit_depth = colour_bits_;
    frame.storage_bits = frame_.storage_bits;
  }
}

/** Makes `frame` the plane, cut to what all planes have, or interpolated. */
void SensorTransformer::take_plane(const ColourMosaic& mosaic, ColourPlane plane, const std::string& name,
                                   RawFrame& frame) {
  RawFrame& raw = raw_[static_cast<std::size_t>(plane)];
  if (!colour_->full_size) {
    crop(raw, mosaic.common_region(plane), name);
    std::swap(frame, raw);
    return;
  }
  frame.width = frame_.width;
  frame.height = frame_.height;
  frame.pixels.resize(frame_.pixels.size());
  interpolate_plane(mosaic, plane, raw.pixels.data(), frame.pixels.data());
}

}  // namespace nerova_zel
