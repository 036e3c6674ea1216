#include "commands/picture_options.h"

#include <iterator>
#include <utility>
#include <vector>

#include "option_declarations.h"

namespace nerova_zel {

namespace {

std::vector<std::pair<const char*, AzimuthStyle>> style_names() {
  std::vector<std::pair<const char*, AzimuthStyle>> names;
  names.reserve(std::size(azimuth_styles));
  for (const NamedAzimuthStyle& style : azimuth_styles) {
    names.emplace_back(style.name, style.style);
  }
  return names;
}

void limit_scale_end(CLI::Option* option) {
  limit(
      option->type_name("SHARE"), [](double end) { return end > 0.0 && end <= 1.0; }, "above 0 and at most 1");
}

}  // namespace

void add_azimuth_style(CLI::App* command, AzimuthStyle& style) {
  add_choice<AzimuthStyle>(
      command, "--azimuth-style", style, style_names(),
      "How azimuth pictures show more than the angle\n"
      "plain: not at all. light: the degree as saturation. dark: the degree as brightness. composite: the degree as "
      "saturation and the power as brightness.");
}

void add_scale_ends(CLI::App* command, PictureScales& ends) {
  limit_scale_end(command->add_option("--degree-max", ends.degree,
                                      "In pictures, the degree at which scales end; else chosen for each frame"));
  limit_scale_end(command->add_option(
      "--power-max", ends.power, "In pictures, the power at which scales end, as a share of full scale; likewise"));
}

void add_output_maximum(CLI::App* command, int& output_maximum) {
  limit(command
            ->add_option("--output-max", output_maximum,
                         "Full scale, degree 1, and azimuth +90 degrees (0 is -90) in 16-bit outputs")
            ->type_name("N")
            ->capture_default_str(),
        1, 65535);
}

}  // namespace nerova_zel
