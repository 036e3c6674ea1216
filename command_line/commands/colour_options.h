#pragma once

#include <CLI/CLI.hpp>
#include <optional>
#include <string>

#include "frames/colour_mosaic.h"

namespace nerova_zel {

/** --colour, for frames of a sensor with colour filters. `pattern` must outlive parsing. */
CLI::Option* add_colour(CLI::App* command, std::optional<ColourPattern>& pattern, const std::string& help);

/** What names of files end in that hold one colour: "_g1" of "G1". */
std::string colour_ending(const std::string& colour);

}  // namespace nerova_zel
