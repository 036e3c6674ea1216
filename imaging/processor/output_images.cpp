#include "processor/output_images.h"

#include <utility>

namespace nerova_zel {

OutputImages::OutputImages(std::set<Output> wanted) : made_(std::move(wanted)) {
  if (made_.count(Output::angle) != 0) {
    made_.insert(Output::stokes);
  }
}

void OutputImages::allocate(int width, int height) {
  width_ = width;
  height_ = height;
  const std::size_t pixels = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
  for (const Output output : made_) {
    const std::size_t elements = pixels * describe(output).channels;
    if (describe(output).element == OutputElement::float32) {
      floats_[static_cast<std::size_t>(output)].resize(elements);
    } else {
      values_[static_cast<std::size_t>(output)].resize(elements);
    }
  }
}

const std::uint16_t* OutputImages::values(Output output) const {
  const auto& image = values_[static_cast<std::size_t>(output)];
  return image.empty() ? nullptr : image.data();
}

const float* OutputImages::floats(Output output) const {
  const auto& image = floats_[static_cast<std::size_t>(output)];
  return image.empty() ? nullptr : image.data();
}

float* OutputImages::room_for_floats(Output output) {
  auto& image = floats_[static_cast<std::size_t>(output)];
  return image.empty() ? nullptr : image.data();
}

Buffer<std::uint16_t> OutputImages::room_for(Output output) {
  auto& image = values_[static_cast<std::size_t>(output)];
  return image.empty() ? Buffer<std::uint16_t>() : Buffer<std::uint16_t>(image);
}

ImageBuffers OutputImages::buffers(std::uint16_t output_maximum) {
  auto& pairs = floats_[static_cast<std::size_t>(Output::stokes)];
  const Outputs library{pairs.empty() ? Buffer<float>() : Buffer<float>(pairs),
                        room_for(Output::power),
                        room_for(Output::hv),
                        room_for(Output::diagonal),
                        room_for(Output::azimuth),
                        room_for(Output::dolp),
                        output_maximum};
  return {library,
          {room_for_floats(Output::s0), room_for_floats(Output::s1), room_for_floats(Output::s2)},
          room_for_floats(Output::angle)};
}

}  // namespace nerova_zel
