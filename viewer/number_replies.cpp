#include "number_replies.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <chrono>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "image_names.h"
#include "npy_file.h"
#include "statistics/frame_statistics.h"

namespace nerova_zel {

namespace {

using Json = nlohmann::ordered_json;

constexpr std::int64_t most_frames = 1000;
/** Then the page asks for the rest, so that it can show what there is and stop. */
constexpr std::chrono::milliseconds patience{500};
constexpr std::size_t most_numbers_as_text = std::size_t{1} << 23U;

Reply json_reply(const Json& document) {
  return Reply::of(json_type, document.dump(-1, ' ', false, Json::error_handler_t::replace));
}

/** JSON has no NaN: null. */
Json json_of(float value) { return std::isfinite(value) ? Json(value) : Json(nullptr); }

void add(Json& series, const char* name, const Json& value) { series[name].push_back(value); }

void add_pixel(Json& series, const ComputedFrames::Pixel& pixel) {
  add(series, "samples", pixel.samples);
  add(series, "s0", json_of(pixel.s0));
  add(series, "s1", json_of(pixel.s1));
  add(series, "s2", json_of(pixel.s2));
  add(series, "angle", json_of(pixel.angle));
  add(series, "dolp", pixel.dolp);
}

/** As transform names its outputs, of letters, digits, points, underscores and hyphens. */
std::string file_name(const ViewedSource& source, const FrameView& view, const ViewSettings& settings,
                      const std::string& image, const std::string& extension) {
  const bool is_file = source.kind == ViewedSource::Kind::file;
  std::string name = is_file ? std::filesystem::u8path(source.name).stem().u8string() : source.name;
  for (char& c : name) {
    const bool is_plain =
        (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '.' || c == '_' || c == '-';
    c = is_plain ? c : '_';
  }
  if (!is_file || source.frames > 1) {
    constexpr std::size_t digits = 6;
    const std::string number = std::to_string(view.frame);
    name += "_" + std::string(digits - std::min(digits, number.size()), '0') + number;
  }
  name += "_" + image;
  if (settings.frames.colour) {
    for (const char c : "_" + std::string(settings.frames.colour->name(view.plane))) {
      name += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
  }
  return name + "." + extension;
}

template <class Number>
std::string csv_of(const CutBytes& bytes, std::size_t numbers_of_row) {
  std::string text;
  const auto* const numbers = reinterpret_cast<const Number*>(bytes.data);
  std::array<char, 32> digits{};
  for (std::size_t i = 0; i < bytes.size / sizeof(Number); ++i) {
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), numbers[i]).ptr;
    text.append(digits.data(), end);
    text += (i + 1) % numbers_of_row == 0 ? '\n' : ',';
  }
  return text;
}

}  // namespace

Reply region_reply(const Query& query, const ViewSettings& settings, ViewedFrames& frames, ComputedFrames& computed) {
  const FrameQuery asked(query, settings, frames);
  const FrameFacts facts = computed.get(asked.view(), {}).facts;
  const Region region = FrameQuery::region(query, facts.width, facts.height);
  if (region.size.width < 2 || region.size.height < 2) {
    throw BadRequest("A region has at least 2 x 2 pixels.");
  }
  std::set<Output> outputs = statistics_outputs();
  outputs.insert(Output::angle);
  Json document = {{"name", facts.name}};
  computed.with_region(asked.view(), region, outputs, [&](const FrameTransformer& part) {
    const StatisticsSums sums = sum_up(part.frame(), part.full_scale(), part.outputs(),
                                       settings.frames.settings.output_maximum, StatisticsWeight::equal);
    for (const NamedStatistic& statistic : named_statistics(sums)) {
      Json& place = statistic.part.empty() ? document[statistic.name] : document[statistic.name][statistic.part];
      if (const auto* count = std::get_if<std::uint64_t>(&statistic.value)) {
        place = *count;
      } else if (const auto& number = std::get<std::optional<double>>(statistic.value)) {
        place = *number;
      }
    }
    document["histogram"] = angle_histogram(part.outputs().floats(Output::angle), part.frame().pixels.size());
  });
  return json_reply(document);
}

Reply series_reply(const Query& query, const ViewSettings& settings, ViewedFrames& frames, ComputedFrames& computed) {
  const FrameQuery asked(query, settings, frames);
  const ViewedSource& source = asked.source();
  const auto first = static_cast<std::int64_t>(source.first);
  const auto end = first + static_cast<std::int64_t>(source.frames);
  const std::int64_t from = query.number("from", 0, end - 1).value_or(first);
  const std::int64_t to = std::min(query.number("to", 0, std::int64_t{1} << 53).value_or(end), end);
  const std::int64_t start = std::max(first, from);
  if (to <= start) {
    throw BadRequest("There are no frames from " + std::to_string(from) + " to " + std::to_string(to) + ".");
  }
  constexpr std::int64_t last_pixel = (std::int64_t{1} << 28) - 1;
  const auto x = static_cast<int>(query.number("x", 0, last_pixel).value_or(0));
  const auto y = static_cast<int>(query.number("y", 0, last_pixel).value_or(0));
  const std::int64_t count = std::min(query.number("count", 1, most_frames).value_or(most_frames), to - start);
  const std::int64_t skipped = query.number("skip", 0, count - 1).value_or(0);
  Json series = {{"count", count},      {"frames", Json::array()}, {"samples", Json::array()}, {"s0", Json::array()},
                 {"s1", Json::array()}, {"s2", Json::array()},     {"angle", Json::array()},   {"dolp", Json::array()}};
  FrameView view = asked.view();
  const auto begin = std::chrono::steady_clock::now();
  for (std::int64_t i = skipped; i < count && (i == skipped || std::chrono::steady_clock::now() - begin < patience);
       ++i) {
    view.frame = static_cast<std::uint64_t>(start + (to - start) * i / count);
    add(series, "frames", view.frame);
    add_pixel(series, computed.pixel(view, x, y, source.size));
  }
  return json_reply(series);
}

Reply export_reply(const Query& query, const ViewSettings& settings, ViewedFrames& frames, ComputedFrames& computed) {
  const FrameQuery asked(query, settings, frames);
  const std::string name = query.text("image").value_or("");
  const std::string format = query.text("format").value_or("npy");
  if (format != "npy" && format != "csv") {
    throw BadRequest("format is npy or csv.");
  }
  std::set<Output> outputs;
  const std::optional<Output> output = image_of(name);
  if (output) {
    outputs.insert(*output);
  }
  const ComputedFrames::Images images = computed.get(asked.view(), outputs);
  const auto& image = output ? images.outputs.at(*output) : images.frame;
  const Cut cut{FrameQuery::region(query, images.facts.width, images.facts.height), 1};
  const CutBytes bytes = cut_image(image, cut);
  const bool is_float = image->element() == OutputElement::float32;
  Reply reply{200,
              format == "npy" ? "application/octet-stream" : "text/csv",
              file_name(asked.source(), asked.view(), settings, name, format),
              {}};
  if (format == "csv") {
    if (bytes.size / image->element_bytes() > most_numbers_as_text) {
      throw BadRequest("The image is too large for a table; save it as npy, or a region of it.");
    }
    const std::size_t numbers_of_row = static_cast<std::size_t>(cut.width()) * image->channels;
    reply.add(is_float ? csv_of<float>(bytes, numbers_of_row) : csv_of<std::uint16_t>(bytes, numbers_of_row));
    return reply;
  }
  std::vector<std::size_t> shape = {static_cast<std::size_t>(cut.height()), static_cast<std::size_t>(cut.width())};
  if (image->channels > 1) {
    shape.push_back(image->channels);
  }
  reply.add(npy_header(is_float ? Element::float32 : Element::uint16, shape));
  reply.parts.push_back(bytes);
  return reply;
}

}  // namespace nerova_zel
