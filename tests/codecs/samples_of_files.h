#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "codec_error.h"
#include "picture_file.h"
#include "support/folder.h"

namespace nerova_zel::test {

/** Values of `bits` bits: a slope with noise, which has no pattern of its own that a fault could hide behind. */
std::vector<std::uint16_t> noisy_slope(int width, int height, int bits);

/** The same as bytes, which must be of 8 bits. */
Bytes bytes_of(const std::vector<std::uint16_t>& pixels);

ImageView view_of(const std::vector<std::uint16_t>& pixels, int width, int height, int channels = 1);
ImageView view_of(const Bytes& pixels, int width, int height, int channels = 1);

/** What a PNG or TIFF file is that libpng or libtiff writes row by row. */
struct FileKind {
  int width = 21;
  int height = 19;
  int bits = 8;
  bool interlaced = false;  ///< PNG
  int colour = 0;           ///< PNG's colour type; TIFF's photometric interpretation
  int channels = 1;
  int significant_bits = 0;              ///< PNG's sBIT
  int compression = 1;                   ///< TIFF
  int predictor = 1;                     ///< TIFF
  bool tiled = false;                    ///< TIFF: tiles of 16 x 16
  bool big_endian = false;               ///< TIFF
  int format = 1;                        ///< TIFF's sample format
  int orientation = 1;                   ///< TIFF; 0: leaves out it and the number of channels
  int greatest = 0;                      ///< TIFF's MaxSampleValue
  bool greatest_is_number = false;       ///< or else its SMaxSampleValue
  std::vector<int> subfile_types = {0};  ///< TIFF, one for each page
};

/** Files that these codecs do not write themselves, of the given samples; each page of a TIFF begins one sample later.
 */
Bytes odd_png(const FileKind& kind, const std::vector<std::uint16_t>& samples);
Bytes odd_tiff(const FileKind& kind, const std::vector<std::uint16_t>& samples);

/** A page of a file in memory. */
GreyPage page_of(const Bytes& bytes, std::size_t page = 0);

/** The sentence of the CodecError that an action ends with, or an empty text. Checks that it is one line. */
std::string error_of(const std::function<void()>& action);

/** The same for reading all pages of a file in memory, which must be named. */
std::string error_of_reading(const Bytes& bytes);

}  // namespace nerova_zel::test
