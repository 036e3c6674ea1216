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

void OutputImages::keep_superpixels() {
  const auto width = static_cast<std::size_t>(width_);
  const int halved_width = width_ / 2;
  const int halved_height = height_ / 2;
  const auto keep = [&](auto& image, std::size_t channels) {
    std::size_t to = 0;
    for (std::size_t y = 0; y < static_cast<std::size_t>(halved_height); ++y) {
      for (std::size_t x = 0; x < static_cast<std::size_t>(halved_width); ++x) {
        for (std::size_t channel = 0; channel < channels; ++channel) {
          image[to++] = image[channels * (2 * y * width + 2 * x) + channel];
        }
      }
    }
    image.resize(to);
  };
  for (const Output output : made_) {
    const std::size_t channels = describe(output).channels;
    if (describe(output).element == OutputElement::float32) {
      keep(floats_[static_cast<std::size_t>(output)], channels);
    } else {
      keep(values_[static_cast<std::size_t>(output)], channels);
    }
  }
  width_ = halved_width;
  height_ = halved_height;
}

const std::uint16_t* OutputImages::values(Output output) const {
  const auto& image = values_[static_cast<std::size_t>(output)];
  return image.empty() ? nullptr : image.data();
}

const float* OutputImages::floats(Output output) const {
  const auto& image = floats_[static_cast<std::size_t>(output)];
  return image.empty() ? nullptr : image.data();
}

std::vector<std::uint16_t> OutputImages::take_values(Output output) {
  return std::exchange(values_[static_cast<std::size_t>(output)], {});
}

std::vector<float> OutputImages::take_floats(Output output) {
  return std::exchange(floats_[static_cast<std::size_t>(output)], {});
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
