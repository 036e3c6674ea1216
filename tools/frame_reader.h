#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "headerless_frame.h"
#include "raw_frame.h"

namespace nerova_zel {

/**
 * Reads the frame `number` of the file at `path` into `frame`: a picture, or with `headerless` pixels without a header.
 * `name` is what to call the frame. `bytes` is room to work in, kept from frame to frame. Throws Failure.
 */
void read_frame(const std::string& path, std::uint64_t number, const std::string& name,
                const std::optional<HeaderlessLayout>& headerless, Bytes& bytes, RawFrame& frame);

/** The same of a file that must hold a single frame. */
RawFrame read_only_frame(const std::string& path, const std::optional<HeaderlessLayout>& headerless);

}  // namespace nerova_zel
