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

/** Equal bits, except that any NaN equals any other. */
bool same(float actual, float expected) {
  return std::isnan(expected) ? std::isnan(actual) : bits_of(actual) == bits_of(expected);
}

bool same(std::uint16_t actual, std::uint16_t expected) { return actual == expected; }

/** The first element that differs. */
template <class Element>
std::optional<std::string> compare_image(const void* actual, const std::vector<Element>& expected, std::size_t output,
                                         int width) {
  const auto* const elements = static_cast<const Element*>(actual);
  for (std::size_t i = 0; elements != nullptr && i < expected.size(); ++i) {
    if (!same(elements[i], expected[i])) {
      const std::size_t columns = static_cast<std::size_t>(width) * (output == 0 ? 2 : 1);
      std::ostringstream text;
      text << output_names[output] << ", element " << i % columns << " of row " << i / columns << ": expected "
           << std::hexfloat << expected[i] << ", got " << elements[i];
      return text.str();
    }
  }
  return std::nullopt;
}

}  // namespace

const char* output_name(std::size_t output) { return output_names[output]; }

std::optional<std::string> first_difference(const OutputImages& reference, const OutputPointers& outputs, int width) {
  auto difference = compare_image(outputs[0], reference.normalized_stokes, 0, width);
  for (std::size_t i = 1; i < output_count && !difference; ++i) {
    difference = compare_image(outputs[i], reference.codes[i - 1], i, width);
  }
  return difference;
}

}  // namespace nerova_zel::test
