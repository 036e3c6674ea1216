// The readers of pictures: an input is a file. All pages of it are read, and what a file says of a page without its
// pixels must be what comes with them.

#include "picture_file.h"

#include <algorithm>
#include <cstdint>
#include <string>

#include "codec_error.h"
#include "fuzz/finding.h"

namespace nerova_zel::test {
namespace {

// A few bytes can name a picture of gigabytes, and whether memory holds that is not the question here.
constexpr std::uint64_t pixel_limit = 1U << 20U;
constexpr std::size_t page_limit = 8;

void check_facts(const PageFacts& facts) {
  require(facts.width > 0 && facts.height > 0, "a page without pixels");
  require(facts.stored_bits >= 8 && facts.stored_bits <= 16, "a page with strange samples");
  require(declared_depth(facts).bits >= 1 && declared_depth(facts).bits <= facts.stored_bits, "a strange bit depth");
  require(facts.orientation >= 1 && facts.orientation <= 8, "a strange orientation");
}

void check_page(const GreyPage& page) {
  check_facts(page.facts);
  require(
      page.pixels.size() == static_cast<std::size_t>(page.facts.width) * static_cast<std::size_t>(page.facts.height),
      "a page with another number of pixels than its size");
  const unsigned room = (1U << static_cast<unsigned>(page.facts.stored_bits)) - 1U;
  for (const std::uint16_t pixel : page.pixels) {
    require(pixel <= room, "a pixel above what there is room for");
  }
}

void read_pages(const std::uint8_t* bytes, std::size_t size) {
  const PictureFile file(Bytes(bytes, bytes + size), "FILE", pixel_limit);
  require(file.page_count() > 0, "a picture file without pages");
  GreyPage page;
  for (std::size_t number = 0; number < std::min(page_limit, file.page_count()); ++number) {
    const PageFacts facts = file.facts(number);
    check_facts(facts);
    file.read(number, page);
    check_page(page);
    require(facts.width == page.facts.width && facts.height == page.facts.height &&
                facts.stored_bits == page.facts.stored_bits && facts.greatest == page.facts.greatest,
            "facts that change when pixels are read");
  }
}

}  // namespace
}  // namespace nerova_zel::test

// NOLINTNEXTLINE(readability-identifier-naming): the name is libFuzzer's
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using nerova_zel::test::require;
  try {
    nerova_zel::test::read_pages(bytes, size);
  } catch (const nerova_zel::CodecError& error) {
    const std::string sentence = error.what();
    require(sentence.rfind("FILE ", 0) == 0, "a failure that does not say with what");
    require(sentence.find('\n') == std::string::npos && sentence.back() != '.', "a failure that is no fact");
  }
  return 0;
}
