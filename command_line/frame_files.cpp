#include "frame_files.h"

#include <algorithm>
#include <cctype>
#include <filesystem>

#include "pgm_file.h"
#include "png_file.h"
#include "tiff_file.h"
#include "usage_error.h"

namespace nerova_zel {

namespace {

Bytes headerless(const std::vector<std::uint16_t>& pixels, bool two_bytes) {
  if (!two_bytes) {
    return {pixels.begin(), pixels.end()};
  }
  Bytes bytes;
  bytes.reserve(2 * pixels.size());
  for (const std::uint16_t pixel : pixels) {
    bytes.push_back(static_cast<unsigned char>(pixel & 0xFFU));
    bytes.push_back(static_cast<unsigned char>(pixel >> 8U));
  }
  return bytes;
}

}  // namespace

void read_page(const PictureFile& file, std::uint64_t page, RawFrame& frame) {
  GreyPage room;
  room.pixels.swap(frame.pixels);
  file.read(static_cast<std::size_t>(page), room);
  const DeclaredDepth depth = declared_depth(room.facts);
  frame.width = room.facts.width;
  frame.height = room.facts.height;
  frame.bit_depth = depth.bits;
  frame.storage_bits = room.facts.stored_bits;
  frame.depth_is_stated = depth.is_stated;
  frame.scaled_from_bits = depth.is_scaled ? depth.bits : 0;
  frame.orientation = room.facts.orientation;
  frame.pixels.swap(room.pixels);
}

std::string lower_case_extension(const std::string& path) {
  std::string extension = std::filesystem::u8path(path).extension().u8string();
  std::transform(extension.begin(), extension.end(), extension.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return extension;
}

void check_frame_extension(const std::string& path) {
  const std::string extension = lower_case_extension(path);
  for (const char* known : {".png", ".tif", ".tiff", ".pgm", ".raw"}) {
    if (extension == known) {
      return;
    }
  }
  throw UsageError("cannot tell the form of " + path +
                   " from its name; it should end in .png, .tif, .tiff, .pgm or .raw.");
}

Bytes encode_frame(const std::vector<std::uint16_t>& pixels, int width, int height, int bit_depth,
                   const std::string& path) {
  check_frame_extension(path);
  const std::string extension = lower_case_extension(path);
  if (extension == ".pgm") {
    return encode_pgm(pixels.data(), width, height, (1 << bit_depth) - 1);
  }
  const bool two_bytes = bit_depth > 8;
  if (extension == ".raw") {
    return headerless(pixels, two_bytes);
  }
  const Bytes narrow = two_bytes ? Bytes() : headerless(pixels, false);
  ImageView image{two_bytes ? Element::uint16 : Element::uint8, width, height, 1, narrow.data()};
  if (two_bytes) {
    image.data = pixels.data();
  }
  if (extension == ".png") {
    return encode_png(image, {{bit_depth_key, std::to_string(bit_depth)}});
  }
  return encode_tiff(image, {"", "", (1 << bit_depth) - 1});
}

}  // namespace nerova_zel
