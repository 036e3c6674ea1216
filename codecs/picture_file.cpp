#include "picture_file.h"

#include <utility>

#include "codec_error.h"
#include "pgm_file.h"
#include "png_file.h"
#include "samples.h"
#include "tiff_file.h"

namespace nerova_zel {

namespace {

Bytes whole(ByteSource& source) { return source.part(0, static_cast<std::size_t>(source.size())); }

}  // namespace

PictureFile::PictureFile(std::string path, std::uint64_t pixel_limit)
    : in_memory_(false), name_(std::move(path)), pixel_limit_(pixel_limit) {
  find_pages();
}

PictureFile::PictureFile(Bytes bytes, std::string name, std::uint64_t pixel_limit)
    : in_memory_(true), bytes_(std::move(bytes)), name_(std::move(name)), pixel_limit_(pixel_limit) {
  find_pages();
}

std::unique_ptr<ByteSource> PictureFile::open() const {
  if (in_memory_) {
    return std::make_unique<MemorySource>(bytes_);
  }
  return std::make_unique<FileSource>(name_);
}

void PictureFile::find_pages() {
  constexpr std::size_t longest_magic = 8;
  const std::unique_ptr<ByteSource> source = open();
  if (source->size() == 0) {
    throw CodecError(CodecError::Reason::empty, name_ + " is empty");
  }
  const Bytes head = source->part(0, longest_magic);
  if (is_png(head)) {
    format_ = PictureFormat::png;
    pages_ = {0};
  } else if (is_tiff(head)) {
    format_ = PictureFormat::tiff;
    pages_ = tiff_pages(*source, name_);
  } else if (is_pgm(head)) {
    format_ = PictureFormat::pgm;
    pages_ = pgm_pages(*source, name_, pixel_limit_);
  } else if (is_npy(head)) {
    format_ = PictureFormat::npy;
    find_arrays(*source);
  } else {
    throw CodecError(CodecError::Reason::unknown_format, name_ + " is not a PNG, TIFF, binary PGM or NPY file");
  }
}

void PictureFile::find_arrays(ByteSource& source) {
  array_ = parse_npy(source.part(0, npy_head_room), source.size(), name_);
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
  const std::unique_ptr<ByteSource> source = open();
  switch (format_) {
    case PictureFormat::png:
      return png_facts(whole(*source), name_, pixel_limit_);
    case PictureFormat::tiff:
      return tiff_facts(*source, name_, at, pixel_limit_);
    case PictureFormat::pgm:
      return pgm_facts(*source, name_, at, pixel_limit_);
    case PictureFormat::npy:
      break;
  }
  return npy_facts();
}

void PictureFile::read(std::size_t page, GreyPage& room) const {
  const std::uint64_t at = pages_.at(page);
  const std::unique_ptr<ByteSource> source = open();
  switch (format_) {
    case PictureFormat::png:
      return read_png(whole(*source), name_, pixel_limit_, room);
    case PictureFormat::tiff:
      return read_tiff(*source, name_, at, pixel_limit_, room);
    case PictureFormat::pgm:
      return read_pgm(*source, name_, at, pixel_limit_, room);
    case PictureFormat::npy:
      break;
  }
  room.facts = npy_facts();
  room.pixels.resize(static_cast<std::size_t>(room.facts.width) * static_cast<std::size_t>(room.facts.height));
  const std::size_t element = size_of(array_.element);
  const Bytes elements = source->part(array_.at + at * element, room.pixels.size() * element);
  if (elements.size() != room.pixels.size() * element) {
    throw CodecError(CodecError::Reason::damaged, name_ + " is damaged or cut short: it changed while it was read");
  }
  npy_pixels(elements.data(), array_, room.pixels.size(), room.pixels.data());
}

}  // namespace nerova_zel
