#include "batch/frame_notes.h"

#include "formatted.h"
#include "statistics/colour_contrast.h"

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

std::vector<std::string> FrameNotes::of(const std::string& name, const SensorTransformer& transformer,
                                        const DepthChoice& choice) {
  const RawFrame& frame = transformer.frame();
  std::vector<std::string> sentences;
  if (frame.orientation != 1 && !orientation_told_.exchange(true)) {
    sentences.push_back(name + formatted(" has the orientation tag %d, which is ignored: pixels are taken as stored, "
                                         "where the sensor has its polarizers.",
                                         frame.orientation));
  }
  if (!choice.bit_depth) {
    if (const auto doubt = doubt_bit_depth(transformer.counts(), frame)) {
      auto& told = doubt->reason == DepthDoubt::Reason::small_values ? small_values_told_ : left_aligned_told_;
      if (!told.exchange(true)) {
        sentences.push_back(sentence_of(*doubt, name, frame.bit_depth));
      }
    }
  }
  add_pattern_note(name, transformer, sentences);
  return sentences;
}

void FrameNotes::add_pattern_note(const std::string& name, const SensorTransformer& transformer,
                                  std::vector<std::string>& sentences) {
  if (pattern_told_) {
    return;
  }
  const auto contrast = measure_colour_contrast(transformer.frame(), transformer.origin(), transformer.full_scale());
  const bool is_colour = transformer.plane_count() > 1;
  if (!contrast || !(is_colour ? contrast->is_grey() : contrast->is_colour()) || pattern_told_.exchange(true)) {
    return;
  }
  sentences.push_back(is_colour ? "the four colour planes of " + name +
                                      " are equal within noise, as those of a sensor without colour filters; if it is "
                                      "one, leave --colour out."
                                : name +
                                      " has a pattern that repeats every 4 pixels, as that of a sensor with colour "
                                      "filters; if it is one, say "
                                      "its pattern with --colour.");
}

}  // namespace nerova_zel
