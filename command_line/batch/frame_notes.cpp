#include "batch/frame_notes.h"

#include "formatted.h"

namespace nerova_zel {

namespace {

std::string sentence_of(const DepthDoubt& doubt, const std::string& name, int bits) {
  const std::string taken = name + formatted(" does not say its bit depth and is taken for %d bits, but ", bits);
  if (doubt.reason == DepthDoubt::Reason::small_values) {
    return taken + formatted(
                       "its largest sample is %d, less than an eighth of full scale; if its pixels have fewer "
                       "bits, say so: --bit-depth %d.",
                       doubt.greatest, doubt.likely_depth);
  }
  return taken + formatted(
                     "the lowest %d bits of all its samples are 0; if they are left-aligned, say so: "
                     "--bit-depth %d --left-aligned.",
                     doubt.zero_bits, doubt.likely_depth);
}

}  // namespace

std::vector<std::string> FrameNotes::of(const std::string& name, const RawFrame& frame, const PixelCounts& counts,
                                        const DepthChoice& choice) {
  std::vector<std::string> sentences;
  if (frame.orientation != 1 && !orientation_told_.exchange(true)) {
    sentences.push_back(name + formatted(" has the orientation tag %d, which is ignored: pixels are taken as stored, "
                                         "where the sensor has its polarizers.",
                                         frame.orientation));
  }
  if (!choice.bit_depth) {
    if (const auto doubt = doubt_bit_depth(counts, frame)) {
      auto& told = doubt->reason == DepthDoubt::Reason::small_values ? small_values_told_ : left_aligned_told_;
      if (!told.exchange(true)) {
        sentences.push_back(sentence_of(*doubt, name, frame.bit_depth));
      }
    }
  }
  return sentences;
}

}  // namespace nerova_zel
