#pragma once

#include <array>
#include <cstddef>

namespace nerova_zel {

/** What the library computes of a frame, in the order of its arguments. */
enum class Output { stokes, power, hv, diagonal, azimuth, dolp };

enum class OutputElement { uint16, float32 };

/** Everything that follows from an output, once. */
struct OutputDescription {
  Output output;
  /** As users write it, and as files are named. */
  const char* name;
  const char* quantity;
  /** Of an element; 16-bit outputs hold it times the output maximum. */
  const char* unit;
  OutputElement element;
  /** Elements of a pixel. */
  std::size_t channels;
};

constexpr std::array<OutputDescription, 6> output_table = {
    {{Output::stokes, "stokes", "normalized Stokes pair S1 / P and S2 / P", "1", OutputElement::float32, 2},
     {Output::power, "power", "total power P", "full scale", OutputElement::uint16, 1},
     {Output::hv, "hv", "S1 where it is positive", "full scale", OutputElement::uint16, 1},
     {Output::diagonal, "diagonal", "S2 where it is positive", "full scale", OutputElement::uint16, 1},
     {Output::azimuth, "azimuth", "angle of linear polarization plus 90 degrees", "180 degrees", OutputElement::uint16,
      1},
     {Output::dolp, "dolp", "degree of linear polarization", "1", OutputElement::uint16, 1}}};

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
