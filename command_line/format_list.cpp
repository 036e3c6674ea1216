#include "format_list.h"

#include "formatted.h"
#include "frames/pixel_formats.h"
#include "processor/outputs.h"

namespace nerova_zel {

std::string format_list() {
  std::string text = "pixel formats of headerless frames\n";
  for (const auto& [name, format] : pixel_format_names()) {
    text += formatted("  %-13s %2d bits in %2d", name.c_str(), significant_bits(format), storage_bits(format));
    std::string separator = "; also ";
    for (const auto& [alias, same] : pixel_format_aliases()) {
      if (same == format) {
        text += separator + alias;
        separator = ", ";
      }
    }
    text += "\n";
  }
  text += "outputs\n";
  for (const OutputDescription& output : output_table) {
    const bool is_integer = output.element == OutputElement::uint16;
    text += formatted("  %-13s %s%s; %s", output.name, output.channels > 1 ? "2 x " : "",
                      is_integer ? "16 bits" : "float", output.quantity);
    text += is_integer ? formatted("; 0 is %s, the output maximum %s", output.zero, output.maximum)
                       : formatted("; in %s", output.unit);
    text += "\n";
  }
  text.pop_back();
  return text;
}

}  // namespace nerova_zel
