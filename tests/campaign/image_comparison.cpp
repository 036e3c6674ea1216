#include "campaign/image_comparison.h"

#include <cmath>
#include <cstring>
#include <sstream>
#include <vector>

namespace nerova_zel::test {

namespace {

constexpr std::array<const char*, output_count> output_names = {
    "normalized Stokes", "total power", "horizontal/vertical", "diagonal", "azimuth", "degree of linear polarization"};

std::uint32_t bits_of(float value) {
  std::uint32_t bits = 0;
  std::memcpy(&bits, &value, sizeof bits);
  return bits;
}

/** Equal bits, save that a NaN is a NaN. */
bool same(float actual, float expected) {
  return std::isnan(expected) ? std::isnan(actual) : bits_of(actual) == bits_of(expected);
}

bool same(std::uint16_t actual, std::uint16_t expected) { return actual == expected; }

void print(std::ostream& text, float value) {
  text << value << " (bits 0x" << std::hex << bits_of(value) << std::dec << ")";
}

void print(std::ostream& text, std::uint16_t value) { text << value; }

/** The first element that differs and how many there are. */
template <class Element>
std::optional<std::string> compare_image(const Element* actual, const std::vector<Element>& expected,
                                         std::size_t output, int width) {
  std::size_t differing = 0;
  std::ostringstream text;
  for (std::size_t i = 0; i < expected.size(); ++i) {
    if (same(actual[i], expected[i])) {
      continue;
    }
    if (differing == 0) {
      const std::size_t elements_per_pixel = output == 0 ? 2 : 1;
      const std::size_t pixel = i / elements_per_pixel;
      text << output_names[output] << " at x = " << pixel % static_cast<std::size_t>(width)
           << ", y = " << pixel / static_cast<std::size_t>(width);
      if (output == 0) {
        text << (i % 2 == 0 ? ", S1 / P" : ", S2 / P");
      }
      text << ": expected ";
      print(text, expected[i]);
      text << ", got ";
      print(text, actual[i]);
    }
    ++differing;
  }
  if (differing == 0) {
    return std::nullopt;
  }
  text << "; " << differing << " of " << expected.size() << " elements differ";
  return text.str();
}

}  // namespace

const char* output_name(std::size_t output) { return output_names[output]; }

std::optional<std::string> first_difference(const OutputImages& reference, const float* normalized_stokes,
                                            const std::array<std::uint16_t*, CodeImageCount>& codes, int width) {
  std::optional<std::string> difference;
  if (normalized_stokes != nullptr) {
    difference = compare_image(normalized_stokes, reference.normalized_stokes, 0, width);
  }
  for (std::size_t image = 0; image < CodeImageCount && !difference; ++image) {
    if (codes[image] != nullptr) {
      difference = compare_image(codes[image], reference.codes[image], image + 1, width);
    }
  }
  return difference;
}

}  // namespace nerova_zel::test
