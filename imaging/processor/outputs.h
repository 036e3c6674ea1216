#pragma once

#include <array>
#include <cstddef>

namespace nerova_zel {

/** What can be computed of a frame: the library's outputs in the order of its arguments, then this module's own. */
enum class Output { stokes, power, hv, diagonal, azimuth, dolp, s0, s1, s2, angle };

enum class OutputElement { uint16, float32 };

/** What computes an output. */
enum class OutputSource {
  library,
  pixel_rules,   ///< this module, from the frame by the library's per-pixel rules, whatever the route
  library_pair,  ///< this module, from the library's Stokes pair
};

/** Everything that follows from an output, once. */
struct OutputDescription {
  Output output;
  /** As users write it, and as files are named. */
  const char* name;
  const char* quantity;
  /** Of an element; 16-bit outputs hold it times the output maximum. */
  const char* unit;
  /** What 0 and the output maximum of a 16-bit output stand for; empty for others. */
  const char* zero;
  const char* maximum;
  OutputElement element;
  /** Elements of a pixel. */
  std::size_t channels;
  OutputSource source;
};

constexpr std::array<OutputDescription, 10> output_table = {
    {{Output::stokes, "stokes", "normalized Stokes pair S1 / P and S2 / P", "1", "", "", OutputElement::float32, 2,
      OutputSource::library},
     {Output::power, "power", "total power P", "full scale", "0", "full scale", OutputElement::uint16, 1,
      OutputSource::library},
     {Output::hv, "hv", "S1 where it is positive", "full scale", "0", "full scale", OutputElement::uint16, 1,
      OutputSource::library},
     {Output::diagonal, "diagonal", "S2 where it is positive", "full scale", "0", "full scale", OutputElement::uint16,
      1, OutputSource::library},
     {Output::azimuth, "azimuth", "angle of linear polarization plus 90 degrees", "180 degrees",
      "an angle of -90 degrees", "+90 degrees from the image's horizontal axis, counter-clockwise",
      OutputElement::uint16, 1, OutputSource::library},
     {Output::dolp, "dolp", "degree of linear polarization", "1", "0", "1", OutputElement::uint16, 1,
      OutputSource::library},
     {Output::s0, "s0", "total power P, not clipped", "pixel value", "", "", OutputElement::float32, 1,
      OutputSource::pixel_rules},
     {Output::s1, "s1", "S1, I0 - I90", "pixel value", "", "", OutputElement::float32, 1, OutputSource::pixel_rules},
     {Output::s2, "s2", "S2, I45 - I135", "pixel value", "", "", OutputElement::float32, 1, OutputSource::pixel_rules},
     {Output::angle, "angle", "angle of linear polarization, 0 to 180; NaN where P is 0", "degree", "", "",
      OutputElement::float32, 1, OutputSource::library_pair}}};

constexpr const OutputDescription& describe(Output output) { return output_table[static_cast<std::size_t>(output)]; }

constexpr bool rows_are_in_order() {
  for (std::size_t i = 0; i < output_table.size(); ++i) {
    if (output_table[i].output != static_cast<Output>(i)) {
      return false;
    }
  }
  return true;
}
static_assert(rows_are_in_order(), "describe takes the row by the number of the output");

}  // namespace nerova_zel
