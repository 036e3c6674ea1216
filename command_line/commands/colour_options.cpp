#include "commands/colour_options.h"

#include <algorithm>
#include <cctype>

#include "option_declarations.h"

namespace nerova_zel {

CLI::Option* add_colour(CLI::App* command, std::optional<ColourPattern>& pattern, const std::string& help) {
  return add_choice<ColourPattern>(
      command, "--colour", pattern, colour_patterns,
      help +
          "\nThe pattern names the colours of the sensor's first 2 x 2 cells, row by row; each cell is a 2 x 2 of "
          "polarizers.");
}

std::string colour_ending(const std::string& colour) {
  std::string ending = "_" + colour;
  std::transform(ending.begin(), ending.end(), ending.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return ending;
}

}  // namespace nerova_zel
