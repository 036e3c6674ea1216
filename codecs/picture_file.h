#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "byte_source.h"
#include "image.h"
#include "npy_file.h"

namespace nerova_zel {

enum class PictureFormat { png, tiff, pgm, npy };

/**
 * A file of grey images of unsigned integers: PNG, TIFF, binary PGM, or a NumPy array of rows and columns, or of
 * images, rows and columns. Told apart by content, not by name. Only what a page needs is read, when it is read; the
 * file is not kept open. Errors are CodecErrors.
 *
 * Thread safety: any number of threads may read pages at the same time.
 */
class PictureFile {
 public:
  explicit PictureFile(std::string path, std::uint64_t pixel_limit = default_pixel_limit);

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
  void find_arrays(ByteSource& source);
  std::unique_ptr<ByteSource> open() const;
  PageFacts npy_facts() const;

  bool in_memory_;
  Bytes bytes_;
  std::string name_;  ///< the path of a file that is not in memory
  std::uint64_t pixel_limit_;
  PictureFormat format_ = PictureFormat::png;
  std::vector<std::uint64_t> pages_;  ///< where they begin: an offset in the file, or an array's first element
  NpyArray array_;
};

}  // namespace nerova_zel
