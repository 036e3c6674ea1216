#include <cstring>

#include "codec_error.h"
#include "fast_deflate.h"
#include "row_blocks.h"
#include "tiff_file.h"
#include "tiff_memory.h"

namespace nerova_zel {

namespace {

/** A row as horizontal differencing leaves it: each sample less the same one of the pixel to its left, low byte first.
 */
template <class Sample>
void difference_row(const unsigned char* row, std::size_t samples, std::size_t channels, unsigned char* differences) {
  const auto sample = [&](std::size_t i) {
    Sample value = 0;
    std::memcpy(&value, row + i * sizeof(Sample), sizeof(Sample));
    return static_cast<unsigned>(value);
  };
  const auto put = [&](std::size_t i, unsigned value) {
    for (std::size_t byte = 0; byte < sizeof(Sample); ++byte) {
      differences[sizeof(Sample) * i + byte] = static_cast<unsigned char>(value >> 8 * byte);
    }
  };
  for (std::size_t i = 0; i < std::min(channels, samples); ++i) {
    put(i, sample(i));
  }
  for (std::size_t i = channels; i < samples; ++i) {
    put(i, sample(i) - sample(i - channels));
  }
}

[[noreturn]] void fail(const std::string& reason) {
  throw CodecError(CodecError::Reason::unsupported, "an image cannot be encoded as TIFF: " + reason);
}

void set_tags(TIFF* tiff, const ImageView& image, const TiffTags& tags, Compression compression) {
  const bool is_float = image.element == Element::float32;
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, static_cast<std::uint32_t>(image.width));
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, static_cast<std::uint32_t>(image.height));
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, static_cast<int>(8 * size_of(image.element)));
  TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, image.channels);
  TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, is_float ? SAMPLEFORMAT_IEEEFP : SAMPLEFORMAT_UINT);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, image.channels == 3 && !is_float ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK);
  TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
  TIFFSetField(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
  TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, static_cast<std::uint32_t>(rows_per_block(image.row_bytes())));
  if (is_float) {
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    if (image.channels > 1) {
      const std::uint16_t unspecified[3] = {};
      TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, image.channels - 1, unspecified);
    }
  } else {
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_ADOBE_DEFLATE);
    TIFFSetField(tiff, TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
    TIFFSetField(tiff, TIFFTAG_ZIPQUALITY, compression == Compression::small ? 6 : 1);
  }
  if (!tags.description.empty()) {
    TIFFSetField(tiff, TIFFTAG_IMAGEDESCRIPTION, tags.description.c_str());
  }
  if (!tags.software.empty()) {
    TIFFSetField(tiff, TIFFTAG_SOFTWARE, tags.software.c_str());
  }
  if (tags.greatest && !is_float) {
    TIFFSetField(tiff, TIFFTAG_MAXSAMPLEVALUE, *tags.greatest);
  }
}

bool write_fast(TIFF* tiff, const ImageView& image) {
  const auto channels = static_cast<std::size_t>(image.channels);
  const std::size_t samples = static_cast<std::size_t>(image.width) * channels;
  bool written = true;
  std::uint32_t number = 0;
  for_each_block(
      image, image.row_bytes(),
      [&](const unsigned char* row, unsigned char* differences) {
        if (image.element == Element::uint16) {
          difference_row<std::uint16_t>(row, samples, channels, differences);
        } else {
          difference_row<std::uint8_t>(row, samples, channels, differences);
        }
      },
      [&](const unsigned char* block, std::size_t size) {
        Bytes strip;
        FastDeflate deflate(strip);
        deflate.add(block, size);
        deflate.finish();
        written = written && TIFFWriteRawStrip(tiff, number++, strip.data(), static_cast<tmsize_t>(strip.size())) > 0;
      });
  return written;
}

bool write_by_libtiff(TIFF* tiff, const ImageView& image) {
  bool written = true;
  std::uint32_t number = 0;
  for_each_block(
      image, image.row_bytes(),
      [&](const unsigned char* row, unsigned char* copy) { std::memcpy(copy, row, image.row_bytes()); },
      [&](unsigned char* block, std::size_t size) {
        written = written && TIFFWriteEncodedStrip(tiff, number++, block, static_cast<tmsize_t>(size)) > 0;
      });
  return written;
}

}  // namespace

Bytes encode_tiff(const ImageView& image, const TiffTags& tags, Compression compression) {
  const bool is_float = image.element == Element::float32;
  if (image.width < 1 || image.height < 1 || image.channels < 1 || image.channels > 4 ||
      (!is_float && image.channels != 1 && image.channels != 3)) {
    fail("it has no pixels, or not 1 or 3 channels (1 to 4 of floating-point numbers)");
  }
  Bytes bytes;
  bytes.reserve(image.row_bytes() * static_cast<std::size_t>(image.height) / (is_float ? 1 : 2) + 1024);
  TiffMemory file(bytes);
  set_tags(file.tiff(), image, tags, compression);
  const bool written = !is_float && compression == Compression::fast ? write_fast(file.tiff(), image)
                                                                     : write_by_libtiff(file.tiff(), image);
  const bool finished = written && TIFFWriteDirectory(file.tiff()) != 0;
  file.close();
  if (!finished || !file.error().empty()) {
    fail(file.error());
  }
  return bytes;
}

}  // namespace nerova_zel
