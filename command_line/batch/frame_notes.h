#pragma once

#include <atomic>
#include <string>
#include <vector>

#include "frames/bit_depth.h"
#include "processor/sensor_transformer.h"

namespace nerova_zel {

/** What the reading of frames leaves to be said. A batch says each kind once, of the first frame. Thread-safe. */
class FrameNotes {
 public:
  /** Sentences about the frame that was transformed, with this choice; `name` is what they call it. */
  std::vector<std::string> of(const std::string& name, const SensorTransformer& transformer, const DepthChoice& choice);

 private:
  void add_pattern_note(const std::string& name, const SensorTransformer& transformer,
                        std::vector<std::string>& sentences);

  std::atomic<bool> orientation_told_{false};
  std::atomic<bool> small_values_told_{false};
  std::atomic<bool> left_aligned_told_{false};
  std::atomic<bool> pattern_told_{false};
};

}  // namespace nerova_zel
