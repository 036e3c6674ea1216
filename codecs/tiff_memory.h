#pragma once

#include <tiffio.h>

#include <cstdint>
#include <string>

#include "byte_source.h"
#include "image.h"

namespace nerova_zel {

/** A TIFF file that is read in parts or written to memory, opened with libtiff. What libtiff has to say of errors is
 * kept here and printed nowhere. */
class TiffMemory {
 public:
  /** Opens a file for reading; `input` must outlive this. tiff() is NULL if libtiff refuses it. */
  explicit TiffMemory(ByteSource& input);

  /** Begins a file with the low byte first; `output` must outlive this. Throws std::bad_alloc. */
  explicit TiffMemory(Bytes& output);

  ~TiffMemory() { close(); }
  TiffMemory(const TiffMemory&) = delete;
  TiffMemory& operator=(const TiffMemory&) = delete;

  TIFF* tiff() const { return tiff_; }

  /** Writes what is left to write. */
  void close();

  /** The first error since the file was opened, or an empty text. */
  std::string error() const;

 private:
  void open(const char* mode);
  tmsize_t read(void* room, tmsize_t count);
  tmsize_t write(const void* data, tmsize_t count);
  std::uint64_t size() const { return output_ != nullptr ? output_->size() : input_->size(); }

  [[gnu::format(printf, 4, 0)]] static int on_error(TIFF* tiff, void* self, const char* module, const char* format,
                                                    va_list arguments);
  static int on_warning(TIFF* tiff, void* self, const char* module, const char* format, va_list arguments);

  ByteSource* input_ = nullptr;
  Bytes* output_ = nullptr;
  std::uint64_t position_ = 0;
  char error_[160] = "";
  TIFF* tiff_ = nullptr;
};

}  // namespace nerova_zel
