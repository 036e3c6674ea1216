#include "session_reply.h"

#include <nlohmann/json.hpp>
#include <string_view>

#include "colour_tables.h"
#include "frame_query.h"

namespace nerova_zel {

namespace {

using Json = nlohmann::ordered_json;

const char* name_of(ViewedSource::Kind kind) {
  return kind == ViewedSource::Kind::file ? "file" : kind == ViewedSource::Kind::stream ? "stream" : "camera";
}

template <class Value>
Json json_of(const std::optional<Value>& value) {
  return value ? Json(*value) : Json(nullptr);
}

/** Three bytes make four characters, so no entry is padded. */
std::string base64_of(const std::vector<Rgb>& entries) {
  constexpr std::string_view characters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  for (const Rgb& entry : entries) {
    const unsigned bits = unsigned{entry.red} << 16U | unsigned{entry.green} << 8U | entry.blue;
    for (const unsigned shift : {18U, 12U, 6U, 0U}) {
      text += characters[bits >> shift & 63U];
    }
  }
  return text;
}

/** File names need not be UTF-8. */
std::string text_of(const Json& document) { return document.dump(-1, ' ', false, Json::error_handler_t::replace); }

/** The sensor's size is not that of its planes. */
Json json_of(const ViewedSource& source, bool has_planes) {
  Json json = {{"name", source.name},
               {"kind", name_of(source.kind)},
               {"first", source.first},
               {"frames", source.frames},
               {"width", nullptr},
               {"height", nullptr},
               {"bit_depth", json_of(source.bit_depth)},
               {"live", source.live},
               {"error", nullptr}};
  if (source.size && !has_planes) {
    json["width"] = source.size->width;
    json["height"] = source.size->height;
  }
  if (!source.error.empty()) {
    json["error"] = source.error;
  }
  return json;
}

}  // namespace

std::string session_document(const ViewSettings& settings, ViewedFrames& frames, std::uint64_t revision,
                             const std::string& route) {
  const FrameView view = default_view(settings);
  Json document = {{"version", settings.version}, {"revision", revision}, {"route", route}, {"once", settings.once}};
  document["sources"] = Json::array();
  for (const ViewedSource& source : frames.sources()) {
    document["sources"].push_back(json_of(source, settings.frames.colour.has_value()));
  }
  document["calibrations"] = Json::array();
  for (const ViewedCalibration& calibration : settings.frames.calibrations) {
    document["calibrations"].push_back(calibration.name);
  }
  document["notes"] = settings.notes;
  document["planes"] = Json::array();
  for (std::size_t i = 0; settings.frames.colour && i < settings.frames.colour->plane_count(); ++i) {
    document["planes"].push_back(settings.frames.colour->name(i));
  }
  document["defaults"] = {{"layout", view.layout},
                          {"layout_given", settings.layout_is_given},
                          {"origin", {view.origin.x, view.origin.y}},
                          {"bit_depth", settings.frames.settings.depth.bit_depth.value_or(0)},
                          {"style", name_of(settings.style)},
                          {"degree_end", json_of(settings.degree_end)},
                          {"power_end", json_of(settings.power_end)},
                          {"calibration", settings.calibration},
                          {"output_maximum", settings.frames.settings.output_maximum}};
  return text_of(document);
}

std::string tables_document() {
  Json document;
  for (const auto& [name, table] :
       {std::pair("grey", ColourTable::grey), std::pair("hue", ColourTable::hue),
        std::pair("sequential", ColourTable::sequential), std::pair("diverging", ColourTable::diverging)}) {
    const std::vector<Rgb> entries = entries_of(table);
    document[name] = {{"entries", entries.size()}, {"rgb", base64_of(entries)}};
  }
  return text_of(document);
}

std::string error_document(const std::string& sentence) { return text_of({{"error", sentence}}); }

}  // namespace nerova_zel
