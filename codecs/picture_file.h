#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "image.h"
#include "npy_file.h"

namespace nerova_zel {

enum class PictureFormat { png, tiff, pgm, npy };

/**
 * A file of grey images of unsigned integers: PNG, TIFF, binary PGM, or a NumPy array of rows and columns, or of
 * images, rows and columns. Told apart by content, not by name. The file is kept in memory; its pages are decoded when
 * they are read. Errors are CodecErrors.
 *
 * Thread safety: any number of threads may read pages at the same time.
 */
class PictureFile {
 public:
  explicit PictureFile(const std::string& path, std::uint64_t pixel_limit = default_pixel_limit);

  /** A file's bytes; `name` stands for it in errors. */
  PictureFile(Bytes bytes, std::string name, std::uint64_t pixel_limit = default_pixel_limit);

  PictureFormat format() const { return format_; }

  /** At least 1. */
  std::size_t page_count() const { return pages_.size(); }

  /** What page 0 to page_count() - 1 says of itself, without its pixels. */
  PageFacts facts(std::size_t page) const;

  /** Reads a page into `room`, whose memory is used again. */
  void read(std::size_t page, GreyPage& room) const;

 private:
  void find_pages();
  PageFacts npy_facts() const;

  Bytes bytes_;
  std::string name_;
  std::uint64_t pixel_limit_;
  PictureFormat format_ = PictureFormat::png;
  std::vector<std::uint64_t> pages_;  ///< where they begin: an offset in the file, or an array's first element
  NpyArray array_;
};

}  // namespace nerova_zel
