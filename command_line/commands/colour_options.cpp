#include "commands/colour_options.h"

#include <algorithm>
#include <cctype>

#include "formatted.h"
#include "option_declarations.h"
#include "option_values.h"
#include "usage_error.h"

namespace nerova_zel {

CLI::Option* add_colour(CLI::App* command, std::optional<ColourPattern>& pattern, const std::string& help) {
  return add_choice<ColourPattern>(
      command, "--colour", pattern, colour_patterns,
      help +
          "\nThe pattern names the colours of the sensor's first 2 x 2 cells, row by row; each cell is a 2 x 2 of "
          "polarizers.");
}

std::optional<ColourPattern> sensor_pattern(const std::optional<ColourPattern>& given,
                                            const std::optional<ColourPattern>& of_format) {
  if (given && of_format && *given != *of_format) {
    throw UsageError(formatted("--colour %s contradicts the frames' pixel format, whose pattern is %s.",
                               name_of(*given), name_of(*of_format)));
  }
  return given ? given : of_format;
}

void ColourOptions::declare(CLI::App* command) {
  add_colour(command, pattern_, "The frames are of a sensor with colour filters; compute each colour by itself");
  command->add_flag("--merge-green", merge_green_, "With --colour, average both greens before anything is computed");
  command->add_flag("--full-size", full_size_,
                    "With --colour, interpolate each colour to the frame's size\n"
                    "Bilinear, between pixels under one polarizer. Without it each colour has half the width and half "
                    "the height of the frame, and nothing is invented.");
}

std::optional<ColourSettings> ColourOptions::settings(const std::optional<ColourPattern>& of_format) const {
  const std::optional<ColourPattern> pattern = sensor_pattern(pattern_, of_format);
  if (!pattern) {
    if (merge_green_ || full_size_) {
      throw UsageError(std::string(merge_green_ ? "--merge-green" : "--full-size") +
                       " is for frames of a colour sensor; say its pattern with --colour.");
    }
    return std::nullopt;
  }
  return ColourSettings{*pattern, merge_green_, full_size_};
}

void add_white_balance(CLI::App* command, std::optional<WhiteBalance>& balance) {
  const auto parse = [](const std::string& text) { return std::optional(parse_white_balance(text)); };
  add_parsed<std::optional<WhiteBalance>>(command, "--white-balance", balance, parse,
                                          "In pictures of power in colour, the factors of red, green and blue\n"
                                          "Without it the factors of each frame make its means of red, green and blue "
                                          "equal (grey world).")
      ->type_name("R,G,B");
}

std::string colour_text(const std::optional<ColourSettings>& colour) {
  if (!colour) {
    return "";
  }
  return formatted(", colour %s%s%s", name_of(colour->pattern), colour->merge_green ? ", greens merged" : "",
                   colour->full_size ? ", full size" : "");
}

std::string colour_ending(const std::string& colour) {
  std::string ending = "_" + colour;
  std::transform(ending.begin(), ending.end(), ending.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return ending;
}

}  // namespace nerova_zel
