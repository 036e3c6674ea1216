#pragma once

#include <atomic>
#include <string>
#include <vector>

#include "frames/bit_depth.h"

namespace nerova_zel {

/** What the reading of frames leaves to be said. A batch says each kind once, of the first frame. Thread-safe. */
class FrameNotes {
 public:
  /** Sentences about a frame that was read with this choice; `name` is what they call it. */
  std::vector<std::string> of(const std::string& name, const RawFrame& frame, const PixelCounts& counts,
                              const DepthChoice& choice);

 private:
  std::atomic<bool> orientation_told_{false};
  std::atomic<bool> small_values_told_{false};
  std::atomic<bool> left_aligned_told_{false};
};

}  // namespace nerova_zel
