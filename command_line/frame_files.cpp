#include "frame_files.h"

#include <algorithm>
#include <cctype>
#include <filesystem>

#include "input_bytes.h"
#include "pgm_file.h"
#include "picture_file.h"
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

RawFrame read_picture(const std::string& path) {
  const PictureFile file(read_file(path, "the file of a frame"), path);
  GreyPage page;
  file.read(0, page);
  const PageFacts& facts = page.facts;
  return {facts.width, facts.height, declared_bit_depth(facts), facts.stored_bits, std::move(page.pixels)};
}

std::string lower_case_extension(const std::string& path) {
  std::string extension = std::filesystem::path(path).extension().string();
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
  return extension == ".png" ? encode_png(image) : encode_tiff(image);
}

}  // namespace nerova_zel
