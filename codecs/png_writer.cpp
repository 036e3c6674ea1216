#include <png.h>
#include <zlib.h>

#include <algorithm>
#include <cstring>

#include "codec_error.h"
#include "message_text.h"
#include "png_errors.h"
#include "png_file.h"

namespace nerova_zel {

namespace {

bool is_ascii(const std::string& text) {
  return std::all_of(text.begin(), text.end(), [](unsigned char c) { return c < 128; });
}

class PngWriter : PngErrors {
 public:
  PngWriter() {
    png_ = png_create_write_struct(PNG_LIBPNG_VER_STRING, static_cast<PngErrors*>(this), &on_error, &on_warning);
    info_ = png_ == nullptr ? nullptr : png_create_info_struct(png_);
    if (info_ == nullptr) {
      png_destroy_write_struct(&png_, nullptr);
      throw std::bad_alloc();
    }
    png_set_write_fn(png_, this, &append, nullptr);
  }
  ~PngWriter() { png_destroy_write_struct(&png_, &info_); }
  PngWriter(const PngWriter&) = delete;
  PngWriter& operator=(const PngWriter&) = delete;

  void write_head(const ImageView& image, const std::vector<TextEntry>& entries) {
    std::vector<png_text> texts;
    for (const TextEntry& entry : entries) {
      png_text text{};
      text.compression = is_ascii(entry.text) ? PNG_TEXT_COMPRESSION_NONE : PNG_ITXT_COMPRESSION_NONE;
      text.key = const_cast<char*>(entry.key.c_str());
      text.text = const_cast<char*>(entry.text.c_str());
      text.text_length = is_ascii(entry.text) ? entry.text.size() : 0;
      text.itxt_length = is_ascii(entry.text) ? 0 : entry.text.size();
      texts.push_back(text);
    }
    attempt([&] {
      png_set_user_limits(png_, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
      png_set_IHDR(png_, info_, static_cast<png_uint_32>(image.width), static_cast<png_uint_32>(image.height),
                   image.element == Element::uint16 ? 16 : 8,
                   image.channels == 1 ? PNG_COLOR_TYPE_GRAY : PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
                   PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
      png_set_text(png_, info_, texts.data(), static_cast<int>(texts.size()));
      png_write_info(png_, info_);
    });
  }

  void write_pixels(const ImageView& image) {
    attempt([&] {
      const std::uint16_t one = 1;
      if (image.element == Element::uint16 && *reinterpret_cast<const unsigned char*>(&one) == 1) {
        png_set_swap(png_);
      }
      for (int y = 0; y < image.height; ++y) {
        png_write_row(png_, image.row(y));
      }
      png_write_end(png_, nullptr);
    });
  }

  /** Before write_head. */
  void choose(Compression compression) {
    attempt([&] {
      if (compression == Compression::small) {
        png_set_filter(png_, PNG_FILTER_TYPE_BASE, PNG_ALL_FILTERS);
        png_set_compression_level(png_, 6);
      } else {
        png_set_filter(png_, PNG_FILTER_TYPE_BASE, PNG_FILTER_SUB);
        png_set_compression_level(png_, 1);
        png_set_compression_strategy(png_, Z_RLE);
      }
    });
  }

  Bytes take() { return std::move(bytes_); }

 private:
  template <class Action>
  void attempt(const Action& action) {
    if (!succeeds(action)) {
      throw CodecError(CodecError::Reason::unsupported,
                       std::string("an image cannot be encoded as PNG: ") + message_text(message_));
    }
  }

  static void append(png_structp png, png_bytep data, std::size_t count) {
    auto& self = *static_cast<PngWriter*>(png_get_io_ptr(png));
    bool full = false;
    try {
      self.bytes_.insert(self.bytes_.end(), data, data + count);
    } catch (...) {
      full = true;
    }
    if (full) {  // outside of the handler, because this call does not return
      png_error(png, "memory ran out");
    }
  }

  Bytes bytes_;
};

}  // namespace

Bytes encode_png(const ImageView& image, const std::vector<TextEntry>& texts, Compression compression) {
  if (image.element == Element::float32 || (image.channels != 1 && image.channels != 3)) {
    throw CodecError(CodecError::Reason::unsupported,
                     "an image of floating-point numbers or of other than 1 or 3 channels cannot be encoded as PNG");
  }
  PngWriter writer;
  writer.choose(compression);
  writer.write_head(image, texts);
  writer.write_pixels(image);
  return writer.take();
}

}  // namespace nerova_zel
