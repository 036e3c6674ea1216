#include "frame_reader.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <opencv2/imgcodecs.hpp>

#include "failure.h"
#include "file_bytes.h"
#include "quiet_errors.h"

namespace nerova_zel {

namespace {

using Bytes = std::vector<unsigned char>;

bool starts_with(const Bytes& bytes, const char* magic, std::size_t length) {
  return bytes.size() >= length && std::memcmp(bytes.data(), magic, length) == 0;
}

/** Widens one- or two-byte pixels that start at `first`. */
std::vector<std::uint16_t> widen(const unsigned char* first, std::size_t count, bool two_bytes, bool low_byte_first) {
  if (!two_bytes) {
    return {first, first + count};
  }
  std::vector<std::uint16_t> pixels(count);
  for (std::size_t i = 0; i < count; ++i) {
    const unsigned low = first[2 * i + (low_byte_first ? 0 : 1)];
    const unsigned high = first[2 * i + (low_byte_first ? 1 : 0)];
    pixels[i] = static_cast<std::uint16_t>(high << 8U | low);
  }
  return pixels;
}

RawFrame from_headerless(const std::string& path, const Bytes& bytes, const FrameSize& size) {
  const auto count = static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height);
  if (bytes.size() != count && bytes.size() != 2 * count) {
    throw Failure(path + " holds " + std::to_string(bytes.size()) + " bytes, but " + std::to_string(size.width) +
                  " x " + std::to_string(size.height) + " pixels take " + std::to_string(count) + " (8-bit) or " +
                  std::to_string(2 * count) + " (16-bit).");
  }
  const bool two_bytes = bytes.size() != count;
  return {size.width, size.height, two_bytes ? 16 : 8, widen(bytes.data(), count, two_bytes, true)};
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
  frame.pixels = widen(bytes.data() + at, static_cast<std::size_t>(count), greatest > 255, false);
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
  return {wide.cols, wide.rows, bits, {wide.begin<std::uint16_t>(), wide.end<std::uint16_t>()}};
}

}  // namespace

RawFrame read_frame(const std::string& path, const std::optional<FrameSize>& raw_size) {
  const Bytes bytes = read_file(path, "the file of a frame");
  if (raw_size) {
    return from_headerless(path, bytes, *raw_size);
  }
  if (bytes.empty()) {
    throw Failure(path + " is empty; a PNG, TIFF or PGM file is needed.");
  }
  if (starts_with(bytes, "P5", 2)) {
    return from_pgm(path, bytes);
  }
  if (starts_with(bytes, "\x89PNG", 4) || starts_with(bytes, "II*\0", 4) || starts_with(bytes, "MM\0*", 4)) {
    return from_picture(path, bytes);
  }
  throw Failure(path + " is not a PNG, TIFF or binary PGM file; for headerless pixels, say their size with --raw WxH.");
}

int bit_depth_of(const RawFrame& frame, const std::optional<int>& wanted, const std::string& path) {
  const int stored = frame.bit_depth > 8 ? 16 : 8;
  if (wanted && *wanted > stored) {
    throw Failure("--bit-depth " + std::to_string(*wanted) + " is more than the " + std::to_string(stored) +
                  " bits of a pixel in " + path + ".");
  }
  return wanted.value_or(frame.bit_depth);
}

}  // namespace nerova_zel
