#include "picture_file.h"

#include <utility>

#include "codec_error.h"
#include "file_bytes.h"
#include "pgm_file.h"
#include "png_file.h"
#include "samples.h"
#include "tiff_file.h"

namespace nerova_zel {

PictureFile::PictureFile(const std::string& path, std::uint64_t pixel_limit)
    : PictureFile(read_bytes(path), path, pixel_limit) {}

PictureFile::PictureFile(Bytes bytes, std::string name, std::uint64_t pixel_limit)
    : bytes_(std::move(bytes)), name_(std::move(name)), pixel_limit_(pixel_limit) {
  if (bytes_.empty()) {
    throw CodecError(CodecError::Reason::empty, name_ + " is empty");
  }
  find_pages();
}

void PictureFile::find_pages() {
  if (is_png(bytes_)) {
    format_ = PictureFormat::png;
    pages_ = {0};
  } else if (is_tiff(bytes_)) {
    format_ = PictureFormat::tiff;
    pages_ = tiff_pages(bytes_, name_);
  } else if (is_pgm(bytes_)) {
    format_ = PictureFormat::pgm;
    pages_ = pgm_pages(bytes_, name_, pixel_limit_);
  } else if (is_npy(bytes_)) {
    format_ = PictureFormat::npy;
    array_ = parse_npy(bytes_, name_);
    if (array_.element == Element::float32) {
      throw CodecError(CodecError::Reason::unsupported, name_ + " holds signed or floating-point pixels");
    }
    if (array_.shape.size() != 2 && array_.shape.size() != 3) {
      throw CodecError(CodecError::Reason::unsupported,
                       name_ + " holds an array of " + std::to_string(array_.shape.size()) +
                           " dimensions; 2 are read (rows, columns) and 3 (images, rows, columns)");
    }
    const PageFacts facts = npy_facts();
    const std::size_t pixels = static_cast<std::size_t>(facts.width) * static_cast<std::size_t>(facts.height);
    for (std::size_t first = 0; first < array_.count; first += pixels) {
      pages_.push_back(first);
    }
    if (pages_.empty()) {
      throw CodecError(CodecError::Reason::empty, name_ + " holds no images");
    }
  } else {
    throw CodecError(CodecError::Reason::unknown_format, name_ + " is not a PNG, TIFF, binary PGM or NPY file");
  }
}

PageFacts PictureFile::npy_facts() const {
  const std::size_t height = array_.shape[array_.shape.size() - 2];
  const std::size_t width = array_.shape[array_.shape.size() - 1];
  checked_pixel_count(name_, width, height, pixel_limit_);
  PageFacts facts;
  facts.width = static_cast<int>(width);
  facts.height = static_cast<int>(height);
  facts.stored_bits = array_.element == Element::uint16 ? 16 : 8;
  return facts;
}

PageFacts PictureFile::facts(std::size_t page) const {
  const std::uint64_t at = pages_.at(page);
  switch (format_) {
    case PictureFormat::png:
      return png_facts(bytes_, name_, pixel_limit_);
    case PictureFormat::tiff:
      return tiff_facts(bytes_, name_, at, pixel_limit_);
    case PictureFormat::pgm:
      return pgm_facts(bytes_, name_, at, pixel_limit_);
    case PictureFormat::npy:
      break;
  }
  return npy_facts();
}

void PictureFile::read(std::size_t page, GreyPage& room) const {
  const std::uint64_t at = pages_.at(page);
  switch (format_) {
    case PictureFormat::png:
      return read_png(bytes_, name_, pixel_limit_, room);
    case PictureFormat::tiff:
      return read_tiff(bytes_, name_, at, pixel_limit_, room);
    case PictureFormat::pgm:
      return read_pgm(bytes_, name_, at, pixel_limit_, room);
    case PictureFormat::npy:
      break;
  }
  room.facts = npy_facts();
  room.pixels.resize(static_cast<std::size_t>(room.facts.width) * static_cast<std::size_t>(room.facts.height));
  npy_pixels(bytes_, array_, static_cast<std::size_t>(at), room.pixels.size(), room.pixels.data());
}

}  // namespace nerova_zel
