#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "support/frame_images.h"
#include "support/loaded_library.h"
#include "support/transform_values.h"

namespace nerova_zel::test {

/** A valid call of transform on a 2 x 2 frame, with all outputs, for tests to spoil or to vary. */
struct TransformCall : TransformValues {
  std::vector<std::uint16_t> frame = {1000, 900, 800, 700};
  FrameImages images = filled();

  explicit TransformCall(nv_polarization_processor* a_processor)
      : TransformValues{a_processor, 0, nullptr, 0, 0, 2, 2, 12, 65535, {}} {
    input = frame.data();
    outputs[0] = images.stokes.data();
    std::transform(images.others.begin(), images.others.end(), outputs.begin() + 1,
                   [](auto& image) { return image.data(); });
  }
  TransformCall(const TransformCall&) = delete;
  TransformCall& operator=(const TransformCall&) = delete;

  std::int32_t run(const LoadedLibrary& library) const { return call(library.transform); }
  bool outputs_untouched() const { return images == filled(); }

  static FrameImages filled() {
    FrameImages images(4);
    images.stokes.assign(8, -7.0F);
    images.others.fill({0xA5A5, 0xA5A5, 0xA5A5, 0xA5A5});
    return images;
  }
};

}  // namespace nerova_zel::test
