#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <iterator>

#include "codec_error.h"
#include "samples.h"
#include "tiff_file.h"
#include "tiff_memory.h"

namespace nerova_zel {

namespace {

class TiffReader {
 public:
  TiffReader(ByteSource& source, const std::string& name) : name_(name), file_(source) {
    if (file_.tiff() == nullptr) {
      fail();
    }
  }

  std::vector<std::uint64_t> pages() {
    std::vector<std::uint64_t> offsets;
    for (;;) {
      const auto kind = field<std::uint32_t>(TIFFTAG_SUBFILETYPE, 0);
      if ((kind & (FILETYPE_REDUCEDIMAGE | FILETYPE_MASK)) == 0) {
        offsets.push_back(TIFFCurrentDirOffset(tiff()));
      }
      if (TIFFLastDirectory(tiff()) != 0) {
        break;
      }
      if (TIFFReadDirectory(tiff()) == 0) {
        fail();
      }
    }
    if (offsets.empty()) {
      throw CodecError(CodecError::Reason::unsupported, name_ + " holds thumbnails or masks only");
    }
    return offsets;
  }

  void go_to(std::uint64_t offset) {
    if (TIFFCurrentDirOffset(tiff()) != offset && TIFFSetSubDirectory(tiff(), offset) == 0) {
      fail();
    }
  }

  PageFacts facts(std::uint64_t pixel_limit) {
    PageFacts facts;
    const auto width = field<std::uint32_t>(TIFFTAG_IMAGEWIDTH, 0);
    const auto height = field<std::uint32_t>(TIFFTAG_IMAGELENGTH, 0);
    checked_pixel_count(name_, width, height, pixel_limit);
    facts.width = static_cast<int>(width);
    facts.height = static_cast<int>(height);
    check_kind();
    facts.stored_bits = bits() <= 8 ? 8 : bits();
    facts.greatest = greatest();
    const auto orientation = field<std::uint16_t>(TIFFTAG_ORIENTATION, 1);
    facts.orientation = orientation >= 1 && orientation <= 8 ? orientation : 1;
    add_text(facts, TIFFTAG_IMAGEDESCRIPTION, "ImageDescription");
    add_text(facts, TIFFTAG_SOFTWARE, "Software");
    return facts;
  }

  void pixels(GreyPage& page) {
    page.pixels.resize(static_cast<std::size_t>(page.facts.width) * static_cast<std::size_t>(page.facts.height));
    if (TIFFIsTiled(tiff()) != 0) {
      read_tiles(page);
    } else {
      read_strips(page);
    }
    finish_values(page.pixels);
  }

 private:
  TIFF* tiff() const { return file_.tiff(); }

  [[noreturn]] void fail() const {
    const std::string reason = file_.error();
    throw CodecError(CodecError::Reason::damaged, name_ + " is damaged or cut short: its pixels cannot be decoded" +
                                                      (reason.empty() ? "" : " (" + reason + ")"));
  }

  template <class Value>
  Value field(std::uint32_t tag, Value otherwise) const {
    Value value{};
    return TIFFGetField(tiff(), tag, &value) != 0 ? value : otherwise;
  }

  int bits() const { return field<std::uint16_t>(TIFFTAG_BITSPERSAMPLE, 1); }

  void check_kind() const {
    const auto channels = field<std::uint16_t>(TIFFTAG_SAMPLESPERPIXEL, 1);
    const auto photometric = field<std::uint16_t>(TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
    const auto format = field<std::uint16_t>(TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT);
    std::string wrong;
    if (channels != 1) {
      wrong = " has " + std::to_string(channels) + " channels";
    } else if (photometric == PHOTOMETRIC_PALETTE) {
      wrong = " has a palette of colours";
    } else if (photometric != PHOTOMETRIC_MINISBLACK && photometric != PHOTOMETRIC_MINISWHITE &&
               photometric != PHOTOMETRIC_CFA) {
      wrong = " has pixels that are not grey";
    } else if (format == SAMPLEFORMAT_INT || format == SAMPLEFORMAT_IEEEFP) {
      wrong = " holds signed or floating-point pixels";
    } else if (format != SAMPLEFORMAT_UINT && format != SAMPLEFORMAT_VOID) {
      wrong = " holds pixels that are no plain numbers";
    } else if (bits() != 1 && bits() != 2 && bits() != 4 && (bits() < 8 || bits() > 16)) {
      wrong = " has pixels of " + std::to_string(bits()) + " bits";
    }
    if (!wrong.empty()) {
      throw CodecError(CodecError::Reason::unsupported, name_ + wrong);
    }
  }

  /** MaxSampleValue or SMaxSampleValue, where it is a value that a sample can have. */
  std::optional<int> greatest() const {
    if (bits() < 8) {
      return std::nullopt;  // such samples are scaled up
    }
    const int full = (1 << bits()) - 1;
    int value = field<std::uint16_t>(TIFFTAG_MAXSAMPLEVALUE, 0);
    double number = 0.0;
    if (value == 0 && TIFFGetField(tiff(), TIFFTAG_SMAXSAMPLEVALUE, &number) != 0) {
      value = number >= 1.0 && number <= full ? static_cast<int>(std::lround(number)) : 0;
    }
    return value >= 1 && value <= full ? std::optional(value) : std::nullopt;
  }

  void add_text(PageFacts& facts, std::uint32_t tag, const char* key) const {
    const char* text = field<char*>(tag, nullptr);
    if (text != nullptr && *text != '\0') {
      facts.texts.push_back({key, text});
    }
  }

  std::size_t packed_bytes(std::size_t samples) const { return (samples * static_cast<std::size_t>(bits()) + 7) / 8; }

  /** Samples of one row as libtiff leaves them, which has brought 16-bit ones into the order of the machine. */
  void take_row(const unsigned char* row, std::size_t count, std::uint16_t* pixels) const {
    if (bits() == 16) {
      std::memcpy(pixels, row, 2 * count);
    } else if (bits() == 8) {
      widen(row, count, pixels);
    } else {
      unpack_bits(row, count, static_cast<unsigned>(bits()), pixels);
    }
  }

  void read_strips(GreyPage& page) {
    const auto width = static_cast<std::size_t>(page.facts.width);
    const auto height = static_cast<std::uint32_t>(page.facts.height);
    const std::uint32_t rows_per_strip =
        std::clamp<std::uint32_t>(field<std::uint32_t>(TIFFTAG_ROWSPERSTRIP, height), 1, height);
    const std::size_t row_bytes = packed_bytes(width);
    Bytes strip;
    std::uint32_t number = 0;
    for (std::uint32_t y = 0; y < height; y += rows_per_strip, ++number) {
      const std::uint32_t rows = std::min(rows_per_strip, height - y);
      const std::size_t needed = rows * row_bytes;
      std::uint16_t* const pixels = page.pixels.data() + y * width;
      const bool in_place = bits() == 16;
      if (!in_place) {
        strip.resize(needed);
      }
      unsigned char* const room = in_place ? reinterpret_cast<unsigned char*>(pixels) : strip.data();
      if (TIFFReadEncodedStrip(tiff(), number, room, static_cast<tmsize_t>(needed)) != static_cast<tmsize_t>(needed)) {
        fail();
      }
      for (std::uint32_t row = 0; !in_place && row < rows; ++row) {
        take_row(strip.data() + row * row_bytes, width, pixels + row * width);
      }
    }
  }

  void read_tiles(GreyPage& page) {
    const auto width = static_cast<std::size_t>(page.facts.width);
    const auto height = static_cast<std::size_t>(page.facts.height);
    const auto tile_width = static_cast<std::size_t>(field<std::uint32_t>(TIFFTAG_TILEWIDTH, 0));
    const auto tile_height = static_cast<std::size_t>(field<std::uint32_t>(TIFFTAG_TILELENGTH, 0));
    const tmsize_t size = TIFFTileSize(tiff());
    const std::size_t row_bytes = packed_bytes(tile_width);
    // Edges of tiles reach beyond the image, but a small image in vast tiles is a lie.
    const std::size_t largest = std::max<std::size_t>(std::size_t{1} << 26U, 8 * page.pixels.size());
    if (size <= 0 || tile_width == 0 || tile_height == 0 || row_bytes > largest / tile_height ||
        static_cast<std::size_t>(size) != row_bytes * tile_height) {
      fail();
    }
    Bytes tile(static_cast<std::size_t>(size));
    std::uint32_t number = 0;
    for (std::size_t y = 0; y < height; y += tile_height) {
      for (std::size_t x = 0; x < width; x += tile_width, ++number) {
        if (TIFFReadEncodedTile(tiff(), number, tile.data(), size) != size) {
          fail();
        }
        const std::size_t columns = std::min(tile_width, width - x);
        for (std::size_t row = 0; row < std::min(tile_height, height - y); ++row) {
          take_row(tile.data() + row * row_bytes, columns, page.pixels.data() + (y + row) * width + x);
        }
      }
    }
  }

  /** Black at 0, and samples of less than 8 bits scaled up. */
  void finish_values(std::vector<std::uint16_t>& pixels) const {
    const unsigned full = (1U << static_cast<unsigned>(bits())) - 1U;
    const unsigned factor = bits() < 8 ? 255U / full : 1U;
    const bool inverted = field<std::uint16_t>(TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK) == PHOTOMETRIC_MINISWHITE;
    if (!inverted && factor == 1) {
      return;
    }
    for (std::uint16_t& pixel : pixels) {
      pixel = static_cast<std::uint16_t>((inverted ? full - pixel : pixel) * factor);
    }
  }

  const std::string& name_;
  TiffMemory file_;
};

}  // namespace

bool is_tiff(const Bytes& bytes) {
  static constexpr std::array<unsigned char, 4> magics[] = {
      {'I', 'I', '*', 0}, {'M', 'M', 0, '*'}, {'I', 'I', '+', 0}, {'M', 'M', 0, '+'}};
  return bytes.size() >= 4 && std::any_of(std::begin(magics), std::end(magics), [&](const auto& magic) {
           return std::equal(magic.begin(), magic.end(), bytes.begin());
         });
}

std::vector<std::uint64_t> tiff_pages(ByteSource& source, const std::string& name) {
  return TiffReader(source, name).pages();
}

PageFacts tiff_facts(ByteSource& source, const std::string& name, std::uint64_t offset, std::uint64_t pixel_limit) {
  TiffReader reader(source, name);
  reader.go_to(offset);
  return reader.facts(pixel_limit);
}

void read_tiff(ByteSource& source, const std::string& name, std::uint64_t offset, std::uint64_t pixel_limit,
               GreyPage& page) {
  TiffReader reader(source, name);
  reader.go_to(offset);
  page.facts = reader.facts(pixel_limit);
  reader.pixels(page);
}

}  // namespace nerova_zel
