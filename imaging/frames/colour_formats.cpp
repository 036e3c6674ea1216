#include "frames/colour_formats.h"

namespace nerova_zel {

// The ordinary name with its first word replaced by the first row of the pattern: Mono12p, BayerRGPolarized12p.
std::vector<ColourFormat> colour_formats() {
  const std::string first_word = "Mono";
  std::vector<ColourFormat> formats;
  for (const auto& [pattern_name, pattern] : colour_patterns) {
    for (const auto& [name, format] : pixel_format_names()) {
      formats.push_back(
          {"Bayer" + std::string(pattern_name, 2) + "Polarized" + name.substr(first_word.size()), format, pattern});
    }
  }
  return formats;
}

}  // namespace nerova_zel
