#pragma once

#include <array>
#include <cstdint>
#include <cstring>
#include <vector>

#include "nerova_zel/polarization_processor.h"

namespace nerova_zel::test {

/** All six images of a frame. */
struct FrameImages {
  explicit FrameImages(std::size_t pixels) : stokes(2 * pixels) { others.fill(std::vector<std::uint16_t>(pixels)); }

  std::vector<float> stokes;
  std::array<std::vector<std::uint16_t>, 5> others;  ///< in the order of transform's arguments

  /** Fills them from 12-bit samples of phase 0 by the library's function. */
  template <class Transform>
  std::int32_t fill(const Transform& transform, nv_polarization_processor* processor,
                    const std::vector<std::uint16_t>& frame, std::int32_t width) {
    return transform(processor, 0, frame.data(), 0, 0, width, static_cast<std::int32_t>(frame.size()) / width, 12,
                     65535, stokes.data(), others[0].data(), others[1].data(), others[2].data(), others[3].data(),
                     others[4].data());
  }

  /** To the last bit, so that NaN equals itself. */
  bool operator==(const FrameImages& images) const {
    return others == images.others && stokes.size() == images.stokes.size() &&
           std::memcmp(stokes.data(), images.stokes.data(), stokes.size() * sizeof(float)) == 0;
  }
};

/** 12-bit samples without an order to them. */
inline std::vector<std::uint16_t> mixed_samples(std::size_t count) {
  std::vector<std::uint16_t> samples(count);
  for (std::size_t i = 0; i < count; ++i) {
    samples[i] = static_cast<std::uint16_t>(static_cast<std::uint32_t>(i) * 2654435761U >> 20U);
  }
  return samples;
}

}  // namespace nerova_zel::test
