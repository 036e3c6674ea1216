#include "pgm_file.h"

#include <algorithm>
#include <cctype>

#include "codec_error.h"
#include "samples.h"

namespace nerova_zel {

namespace {

/** An image's header, and where its pixels lie. */
struct Header {
  int width = 0;
  int height = 0;
  int greatest = 0;
  std::size_t pixels = 0;  ///< number of them
  std::size_t at = 0;      ///< of the first
  std::size_t bytes() const { return greatest > 255 ? 2 * pixels : pixels; }
};

/** The next number of a header, past white space and comments; -1 when there is none. */
int next_number(const Bytes& bytes, std::size_t& at) {
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

/** Of the image whose bytes, or at least the first, are given; `at` counts from there. */
Header parse_header(const Bytes& bytes, const std::string& name, std::uint64_t pixel_limit) {
  Header header;
  header.at = 2;
  header.width = next_number(bytes, header.at);
  header.height = next_number(bytes, header.at);
  header.greatest = next_number(bytes, header.at);
  ++header.at;  // the single white space between header and pixels
  if (header.width < 1 || header.height < 1 || header.greatest < 1 || header.greatest > 65535) {
    throw CodecError(CodecError::Reason::damaged, name + " has a broken PGM header");
  }
  header.pixels = checked_pixel_count(name, static_cast<std::uint64_t>(header.width),
                                      static_cast<std::uint64_t>(header.height), pixel_limit);
  return header;
}

/** Of the image that begins at `offset`. Comments may make a header long. */
Header read_header(ByteSource& source, const std::string& name, std::uint64_t offset, std::uint64_t pixel_limit) {
  constexpr std::size_t usual_room = 256;
  constexpr std::size_t greatest_room = std::size_t{1} << 20U;
  for (std::size_t room = usual_room; room < greatest_room; room *= 16) {
    const Bytes head = source.part(offset, room);
    std::size_t at = 2;
    for (int numbers = 0; numbers < 3; ++numbers) {
      next_number(head, at);
    }
    if (at < head.size()) {  // the last number has ended
      return parse_header(head, name, pixel_limit);
    }
  }
  return parse_header(source.part(offset, greatest_room), name, pixel_limit);
}

bool begins_here(const Bytes& bytes) { return bytes.size() >= 2 && bytes[0] == 'P' && bytes[1] == '5'; }

PageFacts facts_of(const Header& header) {
  PageFacts facts;
  facts.width = header.width;
  facts.height = header.height;
  facts.stored_bits = header.greatest > 255 ? 16 : 8;
  facts.greatest = header.greatest;
  return facts;
}

}  // namespace

bool is_pgm(const Bytes& bytes) { return begins_here(bytes); }

std::vector<std::uint64_t> pgm_pages(ByteSource& source, const std::string& name, std::uint64_t pixel_limit) {
  std::vector<std::uint64_t> offsets;
  for (std::uint64_t at = 0; begins_here(source.part(at, 2));) {
    offsets.push_back(at);
    const Header header = read_header(source, name, at, pixel_limit);
    at += header.at + header.bytes();
  }
  return offsets;
}

PageFacts pgm_facts(ByteSource& source, const std::string& name, std::uint64_t offset, std::uint64_t pixel_limit) {
  return facts_of(read_header(source, name, offset, pixel_limit));
}

void read_pgm(ByteSource& source, const std::string& name, std::uint64_t offset, std::uint64_t pixel_limit,
              GreyPage& page) {
  const Header header = read_header(source, name, offset, pixel_limit);
  const std::uint64_t at = offset + header.at;
  const std::uint64_t present = source.size() - std::min(at, source.size());
  if (present < header.bytes()) {
    throw CodecError(CodecError::Reason::damaged, name + " is cut short: " + std::to_string(header.width) + " x " +
                                                      std::to_string(header.height) + " pixels take " +
                                                      std::to_string(header.bytes()) + " bytes, and " +
                                                      std::to_string(present) + " are there");
  }
  page.facts = facts_of(header);
  page.pixels.resize(header.pixels);
  const Bytes samples = source.part(at, header.bytes());
  if (header.greatest > 255) {
    join_bytes(samples.data(), header.pixels, true, page.pixels.data());
  } else {
    widen(samples.data(), header.pixels, page.pixels.data());
  }
}

Bytes encode_pgm(const std::uint16_t* pixels, int width, int height, int greatest) {
  const std::string header =
      "P5\n" + std::to_string(width) + " " + std::to_string(height) + "\n" + std::to_string(greatest) + "\n";
  const std::size_t count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
  Bytes bytes(header.begin(), header.end());
  bytes.reserve(bytes.size() + (greatest > 255 ? 2 : 1) * count);
  for (std::size_t i = 0; i < count; ++i) {
    if (greatest > 255) {
      bytes.push_back(static_cast<unsigned char>(pixels[i] >> 8U));
    }
    bytes.push_back(static_cast<unsigned char>(pixels[i] & 0xFFU));
  }
  return bytes;
}

}  // namespace nerova_zel
