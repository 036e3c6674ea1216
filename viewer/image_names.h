#pragma once

#include <optional>
#include <string>

#include "processor/outputs.h"
#include "query.h"

namespace nerova_zel {

/** The frame's own pixels among the names of images. */
constexpr const char* frame_image = "raw";

/** The output of that name; nothing for the frame's own pixels. Throws BadRequest for a name that is none. */
inline std::optional<Output> image_of(const std::string& name) {
  if (name == frame_image) {
    return std::nullopt;
  }
  for (const OutputDescription& row : output_table) {
    if (name == row.name) {
      return row.output;
    }
  }
  throw BadRequest("There is no such image; there are raw, raw4 and the outputs of transform.");
}

}  // namespace nerova_zel
