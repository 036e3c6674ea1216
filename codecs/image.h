#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace nerova_zel {

using Bytes = std::vector<unsigned char>;

/** What one number of an image is. */
enum class Element { uint8, uint16, float32 };

constexpr std::size_t size_of(Element element) {
  return element == Element::uint8 ? 1 : element == Element::uint16 ? 2 : 4;
}

/** An image that lies somewhere else and stays there: rows from the top without gaps, channels of a pixel together. */
struct ImageView {
  Element element = Element::uint8;
  int width = 0;
  int height = 0;
  int channels = 1;
  const void* data = nullptr;  ///< width * height * channels elements in the byte order of the machine, any alignment

  std::size_t row_bytes() const {
    return static_cast<std::size_t>(width) * static_cast<std::size_t>(channels) * size_of(element);
  }
  const unsigned char* row(int y) const {
    return static_cast<const unsigned char*>(data) + static_cast<std::size_t>(y) * row_bytes();
  }
};

/** A text that a file carries beside its pixels. */
struct TextEntry {
  std::string key;   ///< PNG: 1 to 79 characters of Latin-1; TIFF: ImageDescription or Software
  std::string text;  ///< UTF-8
};

/** How hard a writer tries. What it writes depends on nothing else than this, the pixels and the texts. */
enum class Compression {
  fast,  ///< for images as cameras give them: deflate level 1 over differences of neighbours
  small  ///< for drawings, which repeat themselves: deflate level 6, several times slower
};

/** What a file says of one of its pages. */
struct PageFacts {
  int width = 0;
  int height = 0;
  /** Bits that a sample has room for, 8 to 16. Samples of 1, 2 and 4 bits are scaled up to 8. */
  int stored_bits = 0;
  /** The greatest value that samples may have, as a PGM header or TIFF's MaxSampleValue says; 1 to 65535. */
  std::optional<int> greatest;
  /** PNG's sBIT: so many upper bits of a sample mean something, because samples were scaled up to full scale. */
  std::optional<int> significant_bits;
  /** TIFF's orientation tag, 1 to 8; 1 is the usual one. Pixels are given as stored, whatever it says. */
  int orientation = 1;
  std::vector<TextEntry> texts;
};

/** A page with its pixels. */
struct GreyPage {
  PageFacts facts;
  /** width * height samples by rows, 0 is black. */
  std::vector<std::uint16_t> pixels;
};

/** Key of the text by which a PNG file of a frame says its significant bits, in digits. */
constexpr const char* bit_depth_key = "BitDepth";

/** What a file says of the significant bits of its samples. */
struct DeclaredDepth {
  int bits;        ///< 1 to 16
  bool is_stated;  ///< else they are all that a sample has room for, which need not mean anything
  bool is_scaled;  ///< samples were scaled up from so many bits to all that they have room for
};

/** By the greatest value unless that is all a sample has room for, a text of bit_depth_key, or PNG's sBIT. */
DeclaredDepth declared_depth(const PageFacts& facts);

/** The most pixels that a page may have unless a reader is told otherwise. */
constexpr std::uint64_t default_pixel_limit = std::uint64_t{1} << 28U;

}  // namespace nerova_zel
