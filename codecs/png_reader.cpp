#include <png.h>

#include <cstring>

#include "codec_error.h"
#include "message_text.h"
#include "png_errors.h"
#include "png_file.h"
#include "samples.h"

namespace nerova_zel {

namespace {

class PngReader : PngErrors {
 public:
  PngReader(const Bytes& bytes, const std::string& name) : bytes_(bytes), name_(name) {
    png_ = png_create_read_struct(PNG_LIBPNG_VER_STRING, static_cast<PngErrors*>(this), &on_error, &on_warning);
    info_ = png_ == nullptr ? nullptr : png_create_info_struct(png_);
    if (info_ == nullptr) {
      png_destroy_read_struct(&png_, nullptr, nullptr);
      throw std::bad_alloc();
    }
    png_set_read_fn(png_, this, &read);
    png_set_user_limits(png_, PNG_UINT_31_MAX, PNG_UINT_31_MAX);  // checked later, for a better sentence
  }
  ~PngReader() { png_destroy_read_struct(&png_, &info_, nullptr); }
  PngReader(const PngReader&) = delete;
  PngReader& operator=(const PngReader&) = delete;

  PageFacts read_facts(std::uint64_t pixel_limit) {
    attempt([this] { png_read_info(png_, info_); });
    checked_pixel_count(name_, png_get_image_width(png_, info_), png_get_image_height(png_, info_), pixel_limit);
    check_kind();
    PageFacts facts;
    facts.width = static_cast<int>(png_get_image_width(png_, info_));
    facts.height = static_cast<int>(png_get_image_height(png_, info_));
    const int bits = png_get_bit_depth(png_, info_);
    facts.stored_bits = bits == 16 ? 16 : 8;
    png_color_8p significant = nullptr;
    if (bits >= 8 && png_get_sBIT(png_, info_, &significant) != 0 && significant->gray >= 1 &&
        significant->gray <= bits) {
      facts.significant_bits = significant->gray;
    }
    add_texts(facts);
    return facts;
  }

  void read_pixels(GreyPage& page) {
    const auto width = static_cast<std::size_t>(page.facts.width);
    const auto height = static_cast<std::size_t>(page.facts.height);
    const bool two_bytes = page.facts.stored_bits == 16;
    page.pixels.resize(width * height);
    Bytes narrow(two_bytes ? 0 : width * height);
    std::vector<png_bytep> rows(height);
    for (std::size_t y = 0; y < height; ++y) {
      rows[y] = two_bytes ? reinterpret_cast<png_bytep>(page.pixels.data() + y * width) : narrow.data() + y * width;
    }
    attempt([&] {
      if (two_bytes) {
        if (low_byte_is_first()) {
          png_set_swap(png_);
        }
      } else {
        png_set_expand_gray_1_2_4_to_8(png_);
      }
      png_set_interlace_handling(png_);
      png_read_update_info(png_, info_);
      png_read_image(png_, rows.data());
      png_read_end(png_, info_);
    });
    if (!two_bytes) {
      widen(narrow.data(), narrow.size(), page.pixels.data());
    }
    page.facts.texts.clear();
    add_texts(page.facts);  // now those behind the pixels as well
  }

 private:
  template <class Action>
  void attempt(const Action& action) {
    if (!succeeds(action)) {
      throw CodecError(CodecError::Reason::damaged, name_ + " is damaged or cut short: its pixels cannot be decoded (" +
                                                        message_text(message_) + ")");
    }
  }

  void check_kind() const {
    const int colour = png_get_color_type(png_, info_);
    if (colour != PNG_COLOR_TYPE_GRAY) {
      throw CodecError(CodecError::Reason::unsupported,
                       colour == PNG_COLOR_TYPE_PALETTE
                           ? name_ + " has a palette of colours"
                           : name_ + " has " + std::to_string(png_get_channels(png_, info_)) + " channels");
    }
  }

  void add_texts(PageFacts& facts) const {
    png_textp texts = nullptr;
    const int count = png_get_text(png_, info_, &texts, nullptr);
    for (int i = 0; i < count; ++i) {
      facts.texts.push_back({texts[i].key, texts[i].text != nullptr ? texts[i].text : ""});
    }
  }

  static bool low_byte_is_first() {
    const std::uint16_t one = 1;
    unsigned char first = 0;
    std::memcpy(&first, &one, 1);
    return first == 1;
  }

  static void read(png_structp png, png_bytep room, std::size_t count) {
    auto& self = *static_cast<PngReader*>(png_get_io_ptr(png));
    if (count > self.bytes_.size() - self.at_) {
      png_error(png, "it ends too early");
    }
    std::memcpy(room, self.bytes_.data() + self.at_, count);
    self.at_ += count;
    // libpng would take memory for a chunk's length before it reads the chunk.
    const bool is_header = (png_get_io_state(png) & PNG_IO_CHUNK_HDR) != 0 && count == 8;
    if (is_header && png_get_uint_32(room) > self.bytes_.size() - self.at_) {
      png_error(png, "it ends too early");
    }
  }

  const Bytes& bytes_;
  const std::string& name_;
  std::size_t at_ = 0;
};

}  // namespace

bool is_png(const Bytes& bytes) { return bytes.size() >= 4 && std::memcmp(bytes.data(), "\x89PNG", 4) == 0; }

PageFacts png_facts(const Bytes& bytes, const std::string& name, std::uint64_t pixel_limit) {
  return PngReader(bytes, name).read_facts(pixel_limit);
}

void read_png(const Bytes& bytes, const std::string& name, std::uint64_t pixel_limit, GreyPage& page) {
  PngReader reader(bytes, name);
  page.facts = reader.read_facts(pixel_limit);
  reader.read_pixels(page);
}

}  // namespace nerova_zel
