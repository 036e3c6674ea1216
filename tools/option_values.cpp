#include "option_values.h"

#include <charconv>
#include <map>
#include <sstream>
#include <utility>
#include <vector>

#include "failure.h"

namespace nerova_zel {

namespace {

constexpr int most_pixels = 1 << 28;

/** Two whole numbers from `least` to `greatest` with `separator` between, and nothing else. */
std::optional<std::pair<int, int>> two_numbers(const std::string& text, char separator, int least, int greatest) {
  std::istringstream stream(text);
  int first = 0;
  int second = 0;
  char between = 0;
  if (!(stream >> std::noskipws >> first >> between >> second) || between != separator || stream.peek() != EOF) {
    return std::nullopt;
  }
  if (first < least || first > greatest || second < least || second > greatest) {
    return std::nullopt;
  }
  return std::make_pair(first, second);
}

}  // namespace

FrameSize parse_size(const std::string& option, const std::string& text) {
  const auto numbers = two_numbers(text, 'x', 2, most_pixels);
  if (!numbers || numbers->second > most_pixels / numbers->first) {
    throw Failure(option + " " + text + " is not a size; it should read like 2448x2048, at least 2x2 and at most " +
                  std::to_string(most_pixels) + " pixels in all.");
  }
  return {numbers->first, numbers->second};
}

Origin parse_origin(const std::string& text) {
  const auto numbers = two_numbers(text, ',', 0, 1'000'000'000);
  if (!numbers) {
    throw Failure("--origin " + text + " is not a place on the sensor; it should read like 0,0 or 101,64.");
  }
  return {numbers->first, numbers->second};
}

Region parse_region(const std::string& text) {
  const std::size_t comma = text.find(',');
  const std::size_t second = comma == std::string::npos ? comma : text.find(',', comma + 1);
  const auto corner = two_numbers(text.substr(0, second), ',', 0, most_pixels);
  const auto size =
      second == std::string::npos ? std::nullopt : two_numbers(text.substr(second + 1), ',', 2, most_pixels);
  if (!corner || !size) {
    throw Failure("--roi " + text + " is not a region; it should read X,Y,W,H like 100,64,800,600, at least 2 x 2.");
  }
  return {corner->first, corner->second, {size->first, size->second}};
}

std::set<OutputKind> parse_outputs(const std::string& text) {
  static const std::map<std::string, OutputKind> kinds = {{"stokes", OutputKind::stokes},
                                                          {"power", OutputKind::power},
                                                          {"hv", OutputKind::hv},
                                                          {"diagonal", OutputKind::diagonal},
                                                          {"azimuth", OutputKind::azimuth},
                                                          {"dolp", OutputKind::dolp},
                                                          {"sheet", OutputKind::sheet},
                                                          {"azimuth-picture", OutputKind::azimuth_picture},
                                                          {"azimuth-legend", OutputKind::azimuth_legend}};
  static const std::string choice =
      "it takes all, or a list of stokes, power, hv, diagonal, azimuth, dolp, sheet, azimuth-picture and "
      "azimuth-legend.";
  std::set<OutputKind> wanted;
  std::istringstream stream(text);
  std::string name;
  while (std::getline(stream, name, ',')) {
    if (name == "all") {
      for (const auto& kind : kinds) {
        wanted.insert(kind.second);
      }
    } else if (const auto kind = kinds.find(name); kind != kinds.end()) {
      wanted.insert(kind->second);
    } else {
      throw Failure("--outputs knows no \"" + name + "\"; " + choice);
    }
  }
  if (wanted.empty()) {
    throw Failure("--outputs is empty; " + choice);
  }
  return wanted;
}

std::optional<double> parse_number(const std::string& text) {
  double value = 0.0;
  const char* const end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, value);
  return result.ec == std::errc() && result.ptr == end ? std::optional<double>(value) : std::nullopt;
}

std::array<double, 4> parse_four(const std::string& option, const std::string& text, double least, double greatest) {
  std::vector<double> values;
  std::istringstream stream(text);
  std::string part;
  bool good = true;
  while (std::getline(stream, part, ',')) {
    const std::optional<double> value = parse_number(part);
    good = good && value && *value >= least && *value <= greatest;
    values.push_back(value.value_or(0.0));
  }
  if (good && values.size() == 1) {
    values.resize(4, values[0]);
  }
  if (!good || values.size() != 4) {
    std::ostringstream range;
    range << least << " to " << greatest;
    throw Failure(option + " " + text + " makes no sense; it takes one number from " + range.str() +
                  ", or four with commas between for the polarizers 0, 45, 90 and 135.");
  }
  return {values[0], values[1], values[2], values[3]};
}

std::optional<HeaderlessLayout> parse_headerless(const std::optional<std::string>& raw,
                                                 const std::optional<std::string>& pixel_format) {
  if (!raw) {
    if (pixel_format) {
      throw Failure("--pixel-format is for headerless pixels; say their size with --raw WxH.");
    }
    return std::nullopt;
  }
  HeaderlessLayout layout{parse_size("--raw", *raw), std::nullopt};
  if (pixel_format) {
    layout.format = find_pixel_format(*pixel_format);
    if (!layout.format) {
      throw Failure("--pixel-format " + *pixel_format + " is unknown; it must be one of " + pixel_format_names() + ".");
    }
  }
  return layout;
}

void check_layout(int degrees) {
  if (degrees != 0 && degrees != 45 && degrees != 90 && degrees != 135) {
    throw Failure("--layout " + std::to_string(degrees) +
                  " is no polarizer of the mosaic; it must be 0, 45, 90 or 135.");
  }
}

void check_range(const std::string& option, long long value, long long least, long long greatest) {
  if (value < least || value > greatest) {
    throw Failure(option + " " + std::to_string(value) + " is out of range; it must be " + std::to_string(least) +
                  " to " + std::to_string(greatest) + ".");
  }
}

}  // namespace nerova_zel
