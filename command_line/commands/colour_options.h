#pragma once

#include <optional>
#include <string>

#include "cli_classes.h"
#include "power_colours.h"
#include "processor/sensor_transformer.h"

namespace nerova_zel {

/** --colour, for frames of a sensor with colour filters. `pattern` must outlive parsing. */
CLI::Option* add_colour(CLI::App* command, std::optional<ColourPattern>& pattern, const std::string& help);

/** The pattern of --colour, else that of the pixel format, if any. Throws UsageError where they contradict. */
std::optional<ColourPattern> sensor_pattern(const std::optional<ColourPattern>& given,
                                            const std::optional<ColourPattern>& of_format);

/** --colour, --merge-green and --full-size, which belong together. */
class ColourOptions {
 public:
  /** It must live as long as the command. */
  void declare(CLI::App* command);

  /** Nothing for a grey sensor. Throws UsageError for another of them without a pattern. */
  std::optional<ColourSettings> settings(const std::optional<ColourPattern>& of_format) const;

 private:
  std::optional<ColourPattern> pattern_;
  bool merge_green_ = false;
  bool full_size_ = false;
};

/** --white-balance: three factors, or nothing for the grey world's. `balance` must outlive parsing. */
void add_white_balance(CLI::App* command, std::optional<WhiteBalance>& balance);

/** What names of files end in that hold one colour: "_g1" of "G1". */
std::string colour_ending(const std::string& colour);

/** The settings in words; empty without. */
std::string colour_text(const std::optional<ColourSettings>& colour);

}  // namespace nerova_zel
