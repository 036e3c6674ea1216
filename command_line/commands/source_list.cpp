#include "commands/source_list.h"

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

std::string trimmed(const std::string& text) {
  const std::size_t first = text.find_first_not_of(" \t\r");
  return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

/** Angle and file around the first `separator`. */
std::optional<SourceFile> split(const std::string& text, char separator) {
  const std::size_t at = text.find(separator);
  if (at == std::string::npos) {
    return std::nullopt;
  }
  const std::optional<double> angle = parse_number(trimmed(text.substr(0, at)));
  const std::string path = trimmed(text.substr(at + 1));
  if (!angle || !(std::abs(*angle) <= 3600.0) || path.empty()) {
    return std::nullopt;
  }
  return SourceFile{*angle, path};
}

bool same_angle(double first, double second) { return std::abs(std::remainder(first - second, 180.0)) < 0.01; }

}  // namespace

SourceFile parse_source(const std::string& text) {
  const std::optional<SourceFile> source = split(text, ':');
  if (!source) {
    throw UsageError("--frame " + text +
                     " makes no sense; it should read like 30:frame.png, with the angle in degrees.");
  }
  return *source;
}

std::vector<SourceFile> read_source_list(const std::string& path) {
  const Bytes bytes = read_file(path, "a list of frames");
  std::istringstream lines(std::string(bytes.begin(), bytes.end()));
  const std::filesystem::path folder = std::filesystem::path(path).parent_path();
  std::vector<SourceFile> sources;
  std::string line;
  for (int number = 1; std::getline(lines, line); ++number) {
    line = trimmed(line);
    if (line.empty() || line[0] == '#' || (number == 1 && line.rfind("angle", 0) == 0)) {
      continue;
    }
    std::optional<SourceFile> source = split(line, ',');
    if (!source) {
      throw Failure("line " + std::to_string(number) + " of " + path +
                    " makes no sense; it should read like 30,frame.png, with the angle in degrees.");
    }
    source->path = (folder / source->path).string();
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
