#include "option_values.h"

#include <sstream>
#include <utility>
#include <vector>

#include "number_text.h"
#include "usage_error.h"

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

/** The numbers from `least` to `greatest` between commas, and nothing else. */
std::optional<std::vector<double>> numbers_in(const std::string& text, double least, double greatest) {
  std::vector<double> values;
  std::istringstream stream(text);
  std::string part;
  while (std::getline(stream, part, ',')) {
    const std::optional<double> value = parse_number(part);
    if (!value || !(*value >= least && *value <= greatest)) {
      return std::nullopt;
    }
    values.push_back(*value);
  }
  return values;
}

}  // namespace

FrameSize parse_size(const std::string& option, const std::string& text) {
  const auto numbers = two_numbers(text, 'x', 2, most_pixels);
  if (!numbers || numbers->second > most_pixels / numbers->first) {
    throw UsageError(option + " " + text + " is not a size; it should read like 2448x2048, at least 2x2 and at most " +
                     std::to_string(most_pixels) + " pixels in all.");
  }
  return {numbers->first, numbers->second};
}

Origin parse_origin(const std::string& text) {
  const auto numbers = two_numbers(text, ',', 0, 1'000'000'000);
  if (!numbers) {
    throw UsageError("--origin " + text + " is not a place on the sensor; it should read like 0,0 or 101,64.");
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
    throw UsageError("--roi " + text + " is not a region; it should read X,Y,W,H like 100,64,800,600, at least 2 x 2.");
  }
  return {corner->first, corner->second, {size->first, size->second}};
}

FrameRange parse_frames(const std::string& text) {
  const std::size_t colon = text.find(':');
  const auto number = [](const std::string& digits) -> std::optional<std::uint64_t> {
    if (digits.empty() || digits.size() > 18 || digits.find_first_not_of("0123456789") != std::string::npos) {
      return std::nullopt;
    }
    return std::stoull(digits);
  };
  if (colon != std::string::npos) {
    const std::string first = text.substr(0, colon);
    const std::string end = text.substr(colon + 1);
    const FrameRange range{number(first).value_or(0), number(end)};
    const bool good = (first.empty() || number(first)) && (end.empty() || range.end) && (!first.empty() || range.end);
    if (good && range.first < range.end.value_or(range.first + 1)) {
      return range;
    }
  }
  throw UsageError("--frames " + text +
                   " is no range; it should read A:B for frames A to B - 1, A: or :B, counted from 0.");
}

WhiteBalance parse_white_balance(const std::string& text) {
  const std::optional<std::vector<double>> factors = numbers_in(text, 0.01, 100.0);
  if (!factors || factors->size() != 3) {
    throw UsageError("--white-balance " + text +
                     " makes no sense; it takes three factors from 0.01 to 100, like 1.8,1,1.5 for red, green and "
                     "blue.");
  }
  return {(*factors)[0], (*factors)[1], (*factors)[2]};
}

std::array<double, 4> parse_four(const std::string& option, const std::string& text, double least, double greatest) {
  std::vector<double> values = numbers_in(text, least, greatest).value_or(std::vector<double>());
  if (values.size() == 1) {
    values.resize(4, values[0]);
  }
  if (values.size() != 4) {
    std::ostringstream range;
    range << least << " to " << greatest;
    throw UsageError(option + " " + text + " makes no sense; it takes one number from " + range.str() +
                     ", or four with commas between for the polarizers 0, 45, 90 and 135.");
  }
  return {values[0], values[1], values[2], values[3]};
}

}  // namespace nerova_zel
