#include "commands/source_list.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <filesystem>
#include <optional>
#include <sstream>

#include "failure.h"
#include "input_bytes.h"
#include "number_text.h"
#include "usage_error.h"

namespace nerova_zel {

namespace {

constexpr std::size_t least_frames = 4;
constexpr std::size_t most_frames = 360;

/** Without blanks around, and without the quotes that spreadsheets put around a text. */
std::string trimmed(const std::string& text) {
  const std::size_t first = text.find_first_not_of(" \t\r");
  if (first == std::string::npos) {
    return "";
  }
  std::string inside = text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
  const bool is_quoted = inside.size() > 1 && inside.front() == '"' && inside.back() == '"';
  return is_quoted ? inside.substr(1, inside.size() - 2) : inside;
}

std::optional<SourceFile> source_of(std::string angle_text, const std::string& path, bool decimal_comma) {
  if (decimal_comma) {
    std::replace(angle_text.begin(), angle_text.end(), ',', '.');
  }
  const std::optional<double> angle = parse_number(angle_text);
  if (!angle || !(std::abs(*angle) <= 3600.0) || path.empty()) {
    return std::nullopt;
  }
  return SourceFile{*angle, path};
}

/** How the lines of a list are made up, as far as its first line says. */
struct ListForm {
  bool file_comes_first = false;
};

/** Angle and file of a line; semicolons and tabs part them before commas do, which may then be decimal ones. */
std::optional<SourceFile> parse_line(const std::string& line, const ListForm& form) {
  for (const char separator : {';', '\t', ','}) {
    const std::size_t at = form.file_comes_first ? line.rfind(separator) : line.find(separator);
    if (at == std::string::npos) {
      continue;
    }
    std::string angle = trimmed(line.substr(0, at));
    std::string path = trimmed(line.substr(at + 1));
    if (form.file_comes_first) {
      std::swap(angle, path);
    }
    if (auto source = source_of(angle, path, separator != ',')) {
      return source;
    }
  }
  return std::nullopt;
}

/** The form that a line with the names of columns tells; nothing for every other line. */
std::optional<ListForm> parse_header(std::string line) {
  std::transform(line.begin(), line.end(), line.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  const std::size_t angle = std::min(line.find("angle"), line.find("deg"));
  if (angle == std::string::npos) {
    return std::nullopt;
  }
  for (const char* const ending : {".png", ".tif", ".pgm", ".npy", ".raw", ".bin"}) {
    if (line.find(ending) != std::string::npos) {
      return std::nullopt;  // a frame that is called so
    }
  }
  return ListForm{line.find_first_of(";\t,") < angle};
}

bool same_angle(double first, double second) { return std::abs(std::remainder(first - second, 180.0)) < 0.01; }

}  // namespace

SourceFile parse_source(const std::string& text) {
  const std::size_t colon = text.find(':');
  const std::optional<SourceFile> source =
      colon == std::string::npos ? std::nullopt
                                 : source_of(trimmed(text.substr(0, colon)), trimmed(text.substr(colon + 1)), false);
  if (!source) {
    throw UsageError("--frame " + text +
                     " makes no sense; it should read like 30:frame.png, with the angle in degrees.");
  }
  return *source;
}

std::vector<SourceFile> read_source_list(const std::string& path) {
  const Bytes bytes = read_file(path, "a list of frames");
  static const std::string byte_order_mark = "\xEF\xBB\xBF";
  std::string text(bytes.begin(), bytes.end());
  if (text.rfind(byte_order_mark, 0) == 0) {
    text.erase(0, byte_order_mark.size());
  }
  std::istringstream lines(text);
  const std::filesystem::path folder = std::filesystem::u8path(path).parent_path();
  std::vector<SourceFile> sources;
  ListForm form;
  bool is_first = true;
  std::string line;
  for (int number = 1; std::getline(lines, line); ++number) {
    const std::string content = trimmed(line);
    if (content.empty() || content[0] == '#') {
      continue;
    }
    const std::optional<ListForm> header = is_first ? parse_header(line) : std::nullopt;
    is_first = false;
    if (header) {
      form = *header;
      continue;
    }
    std::optional<SourceFile> source = parse_line(line, form);
    if (!source) {
      throw Failure("line " + std::to_string(number) + " of " + path +
                    " makes no sense; it should read like 30,frame.png, with the angle in degrees.");
    }
    source->path = (folder / std::filesystem::u8path(source->path)).u8string();
    sources.push_back(*source);
  }
  return sources;
}

std::string why_sources_do_not_suffice(const std::vector<SourceFile>& sources) {
  if (sources.size() < least_frames || sources.size() > most_frames) {
    return "calibration takes " + std::to_string(least_frames) + " to " + std::to_string(most_frames) +
           " frames, and " + std::to_string(sources.size()) + (sources.size() == 1 ? " is" : " are") + " given.";
  }
  std::vector<double> angles;
  for (std::size_t i = 0; i < sources.size(); ++i) {
    bool known = false;
    for (const double angle : angles) {
      known = known || same_angle(angle, sources[i].angle);
    }
    if (!known) {
      angles.push_back(sources[i].angle);
    }
    for (std::size_t k = 0; k < i; ++k) {
      if (sources[k].path == sources[i].path) {
        return sources[i].path + " is given twice; each frame counts once, at the angle it was taken at.";
      }
    }
  }
  if (angles.size() < least_frames) {
    return "the frames show only " + std::to_string(angles.size()) +
           (angles.size() == 1 ? " angle" : " different angles") +
           ", counted within half a turn; calibration takes four or more.";
  }
  return "";
}

}  // namespace nerova_zel
