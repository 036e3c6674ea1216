#include "commands/sensor_pictures.h"

namespace nerova_zel {

SensorPictures::SensorPictures(const std::string& name, const TransformSettings& settings,
                               const std::optional<ColourSettings>& colour, const SensorTransformer& transformer,
                               const Style& style)
    : style_(style) {
  planes_.reserve(transformer.plane_count());
  for (std::size_t i = 0; i < transformer.plane_count(); ++i) {
    const FrameTransformer& plane = transformer.plane(i);
    planes_.push_back({colour ? colour->name(i) : name, settings.layout, plane.origin(), plane.bit_depth(),
                       settings.output_maximum, plane.frame(), plane.outputs(), settings.power_headroom});
    pictures_.push_back(std::make_unique<FramePictures>(planes_.back(), style_));
  }
  if (colour) {
    content_.emplace(ColourPictureContent{name, colour->pattern, settings.layout, transformer.origin(),
                                          transformer.frame(), planes_, style.balance});
    colours_.emplace(*content_, style_);
  }
}

Picture SensorPictures::draw(const OutputFile& file) {
  const auto kind = std::get<PictureKind>(file.content);
  if (file.plane == all_planes) {
    return kind == PictureKind::power_picture ? colours_->power() : colours_->sheet();
  }
  return pictures_[static_cast<std::size_t>(file.plane)]->draw(kind);
}

}  // namespace nerova_zel
