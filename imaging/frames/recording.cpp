#include "frames/recording.h"

#include <algorithm>
#include <limits>
#include <nlohmann/json.hpp>

#include "failure.h"
#include "frames/colour_formats.h"
#include "frames/headerless_frame.h"

namespace nerova_zel {

namespace {

using Json = nlohmann::ordered_json;

constexpr const char* kind = "nerova-zel-recording";
constexpr int newest_version = 1;

class RecordingReader {
 public:
  explicit RecordingReader(const std::string& name) : name_(name) {}

  Recording read(const std::string& text) const {
    const Json file = Json::parse(text, nullptr, false);
    if (!file.is_object() || file.value("format", Json()) != kind) {
      refuse("does not describe a recording: it is not JSON with \"format\": \"" + std::string(kind) + "\"");
    }
    if (whole(file, "version", 1, std::numeric_limits<std::int32_t>::max()) > newest_version) {
      refuse("was written by a newer version; this one knows version " + std::to_string(newest_version));
    }
    Recording recording;
    read_format(text_of(file, "pixel_format"), recording);
    recording.size = {side(file, "width", 1), side(file, "height", 1)};
    check_size(recording.size);
    const Json& origin = member(file, "origin");
    recording.origin = {side(origin, "x", 0), side(origin, "y", 0)};
    const auto layout = static_cast<int>(whole(file, "layout", 0, 135));
    if (std::find(mosaic_layouts.begin(), mosaic_layouts.end(), layout) == mosaic_layouts.end()) {
      refuse("has the layout " + std::to_string(layout) + "; it must be 0, 45, 90 or 135");
    }
    recording.layout = MosaicLayout(layout);
    if (file.contains("colour")) {
      recording.colour = pattern(text_of(file, "colour"));
    }
    recording.frames = whole(file, "frames", 0, std::numeric_limits<std::int64_t>::max());
    read_notes(file, recording);
    return recording;
  }

 private:
  [[noreturn]] void refuse(const std::string& reason) const { throw Failure(name_ + " " + reason + "."); }

  const Json& member(const Json& object, const char* name) const {
    if (!object.is_object() || !object.contains(name)) {
      refuse("has no \"" + std::string(name) + "\"");
    }
    return object.at(name);
  }

  std::string text_of(const Json& object, const char* name) const {
    const Json& value = member(object, name);
    if (!value.is_string()) {
      refuse("has " + value.dump() + " for \"" + name + "\"; a text is needed there");
    }
    return value.get<std::string>();
  }

  std::uint64_t whole(const Json& object, const char* name, std::uint64_t least, std::uint64_t most) const {
    const Json& value = member(object, name);
    if (!value.is_number_unsigned() || value.get<std::uint64_t>() < least || value.get<std::uint64_t>() > most) {
      refuse("has " + value.dump() + " for \"" + name + "\"; a whole number from " + std::to_string(least) + " to " +
             std::to_string(most) + " is needed there");
    }
    return value.get<std::uint64_t>();
  }

  int side(const Json& object, const char* name, std::uint64_t least) const {
    constexpr int longest_side = 1 << 20;
    return static_cast<int>(whole(object, name, least, longest_side));
  }

  ColourPattern pattern(const std::string& name) const {
    for (const auto& [known, value] : colour_patterns) {
      if (known == name) {
        return value;
      }
    }
    refuse("has the unknown colour pattern \"" + name + "\"");
  }

  void read_format(const std::string& name, Recording& recording) const {
    for (const auto& [known, format] : pixel_format_names()) {
      if (known == name) {
        recording.format = format;
        return;
      }
    }
    for (const ColourFormat& known : colour_formats()) {
      if (known.name == name) {
        recording.format = known.format;
        recording.colour = known.pattern;
        return;
      }
    }
    refuse("has the unknown pixel format \"" + name + "\"");
  }

  /** A value of another type is as good as none: no result depends on these. */
  void read_notes(const Json& file, Recording& recording) const {
    const auto number = [&](const char* name) {
      return file.contains(name) && file.at(name).is_number() ? std::optional<double>(file.at(name).get<double>())
                                                              : std::nullopt;
    };
    recording.exposure_us = number("exposure_us");
    recording.gain = number("gain");
    if (file.contains("camera") && file.at("camera").is_string()) {
      recording.camera = file.at("camera").get<std::string>();
    }
    if (file.contains("timestamps_ns") && file.at("timestamps_ns").is_array()) {
      for (const Json& time : file.at("timestamps_ns")) {
        recording.timestamps_ns.push_back(time.is_number_unsigned() ? time.get<std::uint64_t>() : 0);
      }
    }
    if (file.contains("lost")) {
      const Json& lost = file.at("lost");
      constexpr auto most = std::numeric_limits<std::uint64_t>::max();
      recording.incomplete_frames = whole(lost, "incomplete", 0, most);
      recording.dropped_frames = whole(lost, "dropped", 0, most);
    }
  }

  const std::string& name_;
};

}  // namespace

std::string encode_recording(const Recording& recording) {
  Json file;
  file["format"] = kind;
  file["version"] = newest_version;
  file["pixel_format"] = name_of(recording.format);
  file["width"] = recording.size.width;
  file["height"] = recording.size.height;
  file["origin"] = {{"x", recording.origin.x}, {"y", recording.origin.y}};
  file["layout"] = recording.layout.angle_at(0, 0);
  if (recording.colour) {
    file["colour"] = name_of(*recording.colour);
  }
  file["frames"] = recording.frames;
  if (!recording.camera.empty()) {
    file["camera"] = recording.camera;
  }
  if (recording.exposure_us) {
    file["exposure_us"] = *recording.exposure_us;
  }
  if (recording.gain) {
    file["gain"] = *recording.gain;
  }
  file["lost"] = {{"incomplete", recording.incomplete_frames}, {"dropped", recording.dropped_frames}};
  file["timestamps_ns"] = recording.timestamps_ns;
  return file.dump(1, ' ', false, Json::error_handler_t::replace) + "\n";
}

Recording parse_recording(const std::string& text, const std::string& name) { return RecordingReader(name).read(text); }

}  // namespace nerova_zel
