#pragma once

#include <array>
#include <cstdint>
#include <cstring>
#include <vector>

namespace nerova_zel::test {

/** All six images of a frame. */
struct FrameImages {
  explicit FrameImages(std::size_t pixels) : stokes(2 * pixels) { others.fill(std::vector<std::uint16_t>(pixels)); }

  std::vector<float> stokes;
  std::array<std::vector<std::uint16_t>, 5> others;  ///< in the order of transform's arguments

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
