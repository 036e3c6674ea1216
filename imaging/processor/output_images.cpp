#include "processor/output_images.h"

namespace nerova_zel {

void OutputImages::allocate(int width, int height) {
  width_ = width;
  height_ = height;
  const std::size_t pixels = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
  for (const Output output : wanted_) {
    const std::size_t elements = pixels * describe(output).channels;
    if (describe(output).element == OutputElement::float32) {
      stokes_.resize(elements);
    } else {
      values_[static_cast<std::size_t>(output)].resize(elements);
    }
  }
}

const std::uint16_t* OutputImages::values(Output output) const {
  const auto& image = values_[static_cast<std::size_t>(output)];
  return image.empty() ? nullptr : image.data();
}

Buffer<std::uint16_t> OutputImages::room_for(Output output) {
  auto& image = values_[static_cast<std::size_t>(output)];
  return image.empty() ? Buffer<std::uint16_t>() : Buffer<std::uint16_t>(image);
}

Outputs OutputImages::buffers(std::uint16_t output_maximum) {
  return {stokes_.empty() ? Buffer<float>() : Buffer<float>(stokes_),
          room_for(Output::power),
          room_for(Output::hv),
          room_for(Output::diagonal),
          room_for(Output::azimuth),
          room_for(Output::dolp),
          output_maximum};
}

}  // namespace nerova_zel
