#include "raw_frame.h"

#include "failure.h"

namespace nerova_zel {

int bit_depth_of(const RawFrame& frame, const std::optional<int>& wanted, const std::string& name) {
  if (wanted && *wanted > frame.storage_bits) {
    throw Failure("--bit-depth " + std::to_string(*wanted) + " is more than the " + std::to_string(frame.storage_bits) +
                  " bits of a pixel in " + name + ".");
  }
  return wanted.value_or(frame.bit_depth);
}

}  // namespace nerova_zel
