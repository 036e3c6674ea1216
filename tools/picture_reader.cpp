#include "picture_reader.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <opencv2/imgcodecs.hpp>

#include "failure.h"
#include "file_bytes.h"
#include "quiet_errors.h"

namespace nerova_zel {

namespace {

bool starts_with(const Bytes& bytes, const char* magic, std::size_t length) {
  return bytes.size() >= length && std::memcmp(bytes.data(), magic, length) == 0;
}

/** Widens one-byte pixels, or two-byte ones with the high byte first, that start at `first`. */
std::vector<std::uint16_t> widen(const unsigned char* first, std::size_t count, bool two_bytes) {
  if (!two_bytes) {
    return {first, first + count};
  }
  std::vector<std::uint16_t> pixels(count);
  for (std::size_t i = 0; i < count; ++i) {
    pixels[i] = static_cast<std::uint16_t>(first[2 * i] << 8U | first[2 * i + 1]);
  }
  return pixels;
}

/** The next number of a PGM header, past white space and comments; -1 when there is none. */
int next_header_number(const Bytes& bytes, std::size_t& at) {
  while (at < bytes.size() && (std::isspace(bytes[at]) != 0 || bytes[at] == '#')) {
    if (bytes[at] == '#') {
      at = static_cast<std::size_t>(std::find(bytes.begin() + static_cast<std::ptrdiff_t>(at), bytes.end(), '\n') -
                                    bytes.begin());
    } else {
      ++at;
    }
  }
  int value = -1;
  while (at < bytes.size() && std::isdigit(bytes[at]) != 0 && value < 100'000'000) {
    value = 10 * std::max(value, 0) + (bytes[at] - '0');
    ++at;
  }
  return value;
}

RawFrame from_pgm(const std::string& path, const Bytes& bytes) {
  std::size_t at = 2;
  RawFrame frame;
  frame.width = next_header_number(bytes, at);
  frame.height = next_header_number(bytes, at);
  const int greatest = next_header_number(bytes, at);
  ++at;  // the single white space between header and pixels
  if (frame.width < 1 || frame.height < 1 || greatest < 1 || greatest > 65535) {
    throw Failure(path +
                  " has a broken PGM header; it should read P5, width, height and a greatest value of at most "
                  "65535.");
  }
  const std::uint64_t count = static_cast<std::uint64_t>(frame.width) * static_cast<std::uint64_t>(frame.height);
  const std::uint64_t needed = greatest > 255 ? 2 * count : count;
  const std::size_t present = bytes.size() - std::min(at, bytes.size());
  if (present < needed) {
    throw Failure(path + " is cut short: " + std::to_string(frame.width) + " x " + std::to_string(frame.height) +
                  " pixels take " + std::to_string(needed) + " bytes, and " + std::to_string(present) + " are there.");
  }
  while (frame.bit_depth < 16 && (1 << frame.bit_depth) - 1 < greatest) {
    ++frame.bit_depth;
  }
  frame.pixels = widen(bytes.data() + at, static_cast<std::size_t>(count), greatest > 255);
  frame.storage_bits = greatest > 255 ? 16 : 8;
  return frame;
}

RawFrame from_picture(const std::string& path, const Bytes& bytes) {
  cv::Mat picture;
  try {
    const QuietErrors quiet;
    picture = cv::imdecode(bytes, cv::IMREAD_UNCHANGED);
  } catch (const cv::Exception&) {
    picture.release();
  }
  if (picture.empty()) {
    throw Failure(path + " is damaged or cut short: its pixels cannot be decoded.");
  }
  if (picture.channels() != 1) {
    throw Failure(path + " has " + std::to_string(picture.channels()) +
                  " channels; a raw mosaic frame has a single grey one.");
  }
  if (picture.depth() != CV_8U && picture.depth() != CV_16U) {
    throw Failure(path + " holds signed or floating-point pixels; a raw mosaic frame has unsigned 8- or 16-bit ones.");
  }
  const int bits = picture.depth() == CV_8U ? 8 : 16;
  cv::Mat wide;
  picture.convertTo(wide, CV_16U);
  return {wide.cols, wide.rows, bits, bits, {wide.begin<std::uint16_t>(), wide.end<std::uint16_t>()}};
}

}  // namespace

RawFrame read_picture(const std::string& path) {
  const Bytes bytes = read_bytes(path, "the file of a frame");
  if (bytes.empty()) {
    throw Failure(path + " is empty; a PNG, TIFF or PGM file is needed.");
  }
  if (starts_with(bytes, "P5", 2)) {
    return from_pgm(path, bytes);
  }
  if (starts_with(bytes, "\x89PNG", 4) || starts_with(bytes, "II*\0", 4) || starts_with(bytes, "MM\0*", 4)) {
    return from_picture(path, bytes);
  }
  throw Failure(path + " is not a PNG, TIFF or binary PGM file.", Fact::unknown_file_format);
}

}  // namespace nerova_zel
