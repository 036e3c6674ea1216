#include "image_reply.h"

#include <nlohmann/json.hpp>

#include "image_names.h"

namespace nerova_zel {

namespace {

constexpr std::size_t alignment = 8;
constexpr std::int64_t largest_step = 4096;

constexpr const char* windows_name = "raw4";

std::size_t padding_of(std::size_t bytes) { return (alignment - bytes % alignment) % alignment; }

const char* name_of(OutputElement element) { return element == OutputElement::uint16 ? "u16" : "f32"; }

std::string length_text(std::uint64_t length) {
  std::string text;
  for (unsigned i = 0; i < alignment; ++i) {
    text += static_cast<char>(length >> (8 * i) & 0xFFU);
  }
  return text;
}

}  // namespace

Reply image_reply(const Query& query, const ViewSettings& settings, ViewedFrames& frames, ComputedFrames& computed) {
  const FrameQuery asked(query, settings, frames);
  const int step = static_cast<int>(query.number("step", 1, largest_step).value_or(1));
  const std::vector<std::string> names = query.list("images");
  if (names.size() > output_table.size() + 2) {
    throw BadRequest("images is a list of raw, raw4 and outputs, each once.");
  }
  std::set<Output> outputs;
  for (const std::string& name : names) {
    if (const auto output = name == windows_name ? std::nullopt : image_of(name)) {
      outputs.insert(*output);
    }
  }
  const ComputedFrames::Images images = computed.get(asked.view(), {});
  const FrameFacts& facts = images.facts;
  const Cut cut{FrameQuery::region(query, facts.width, facts.height), step};
  const std::map<Output, CutBytes> cuts = computed.cut_outputs(asked.view(), images, outputs, cut);

  nlohmann::ordered_json head = {{"frame", asked.view().frame},
                                 {"name", facts.name},
                                 {"width", facts.width},
                                 {"height", facts.height},
                                 {"bit_depth", facts.bit_depth},
                                 {"full_scale", facts.full_scale},
                                 {"saturated_from", facts.full_scale},
                                 {"saturated_pixels", facts.counts.saturated},
                                 {"output_maximum", settings.frames.settings.output_maximum},
                                 {"notes", facts.notes},
                                 {"images", nlohmann::ordered_json::array()}};
  Reply reply{200, "application/octet-stream", "", {}};
  std::size_t offset = 0;
  for (const std::string& name : names) {
    const bool is_window = name == windows_name;
    const auto output = is_window ? std::nullopt : image_of(name);
    const CutBytes bytes = is_window ? cut_windows(*images.frame, cut)
                           : output  ? cuts.at(*output)
                                     : cut_image(images.frame, cut);
    head["images"].push_back({{"name", name},
                              {"element", name_of(output ? describe(*output).element : OutputElement::uint16)},
                              {"channels", is_window ? 4
                                           : output  ? describe(*output).channels
                                                     : 1},
                              {"width", cut.width()},
                              {"height", cut.height()},
                              {"offset", offset},
                              {"bytes", bytes.size}});
    offset += bytes.size;
    reply.parts.push_back(bytes);
    if (const std::size_t padding = padding_of(bytes.size); padding > 0) {
      reply.add(std::string(padding, '\0'));
      offset += padding;
    }
  }
  std::string text = head.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
  text.append(padding_of(text.size()), ' ');
  Reply lead;
  lead.add(length_text(text.size()) + text);
  reply.parts.insert(reply.parts.begin(), lead.parts.front());
  return reply;
}

}  // namespace nerova_zel
