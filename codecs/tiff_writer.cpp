#include <algorithm>
#include <cstring>

#include "codec_error.h"
#include "tiff_file.h"
#include "tiff_memory.h"

namespace nerova_zel {

namespace {

/** 128 KiB, but at least one row. */
std::size_t rows_per_strip(const ImageView& image) {
  return std::max<std::size_t>(1, std::size_t{128} * 1024 / image.row_bytes());
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
  TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, static_cast<std::uint32_t>(rows_per_strip(image)));
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

bool write_strips(TIFF* tiff, const ImageView& image) {
  const std::size_t rows = std::min(rows_per_strip(image), static_cast<std::size_t>(image.height));
  Bytes strip(rows * image.row_bytes());
  const auto height = static_cast<std::size_t>(image.height);
  std::uint32_t number = 0;
  for (std::size_t y = 0; y < height; y += rows) {
    // A copy, because the differences are taken in place.
    const std::size_t size = std::min(rows, height - y) * image.row_bytes();
    std::memcpy(strip.data(), image.row(static_cast<int>(y)), size);
    if (TIFFWriteEncodedStrip(tiff, number++, strip.data(), static_cast<tmsize_t>(size)) < 0) {
      return false;
    }
  }
  return true;
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
  const bool written = write_strips(file.tiff(), image);
  const bool finished = written && TIFFWriteDirectory(file.tiff()) != 0;
  file.close();
  if (!finished || !file.error().empty()) {
    fail(file.error());
  }
  return bytes;
}

}  // namespace nerova_zel
