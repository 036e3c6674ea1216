#pragma once

#include <stdexcept>
#include <string>

namespace nerova_zel {

/** Failures that a program can add advice to, because the remedy is a setting of its own. */
enum class Fact {
  other,
  library_not_loaded,   ///< nothing can be computed without the polarization processor library
  file_length,          ///< a headerless file does not hold one frame of 8- or 16-bit pixels
  bit_depth_too_great,  ///< a pixel has fewer bits than are to be used
  bit_depth_unknown,    ///< left-aligned pixels need one
  stride_without_format,
  value_too_great,  ///< a pixel has a value above the full scale of the bit depth
  overflow,         ///< more than a few pixels have
  other_bit_depth,  ///< a calibration was made with another one
  no_headroom,      ///< above the full scale of 16 bits
  region_beyond_frame,
  colour_calibration,  ///< a calibration of colours is given for a frame without
  grey_calibration,    ///< and the other way round
  wrong_orientation,   ///< polarizers are found at angles that the layout does not have
};

/** What is wrong, in one sentence that names the frame or file. It knows nothing of the program that asked. */
class Failure : public std::runtime_error {
 public:
  explicit Failure(const std::string& sentence, Fact fact = Fact::other) : std::runtime_error(sentence), fact_(fact) {}

  Fact fact() const { return fact_; }

 private:
  Fact fact_;
};

}  // namespace nerova_zel
