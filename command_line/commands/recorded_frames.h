#pragma once

#include <optional>
#include <string>
#include <vector>

#include "frames/recording.h"

namespace nerova_zel {

/**
 * What the descriptions beside the named files say, if they are recordings: FILE.raw with FILE.raw.json. All of a batch
 * must be alike in pixel format, size, origin, layout and colours. Nothing if none is a recording. Throws Failure.
 */
std::optional<Recording> find_recording(const std::vector<std::string>& files);

}  // namespace nerova_zel
