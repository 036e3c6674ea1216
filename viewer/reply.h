#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "viewing/image_cut.h"

namespace nerova_zel {

/** What goes back to the page: parts one after another, which are sent from where they lie. */
struct Reply {
  int status = 200;
  std::string media_type;
  /** Of what is to be saved; else empty. */
  std::string file_name;
  std::vector<CutBytes> parts;
  /** Set where the reply is not there yet: called now and then until it gives one. */
  std::function<std::optional<Reply>()> later{};

  /** Text in memory of its own. */
  void add(std::string text) {
    const auto owner = std::make_shared<const std::string>(std::move(text));
    parts.push_back({reinterpret_cast<const unsigned char*>(owner->data()), owner->size(), owner});
  }

  static Reply of(std::string media_type, std::string text, int status = 200) {
    Reply reply{status, std::move(media_type), "", {}};
    reply.add(std::move(text));
    return reply;
  }
};

constexpr const char* json_type = "application/json";

}  // namespace nerova_zel
