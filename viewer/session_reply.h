#pragma once

#include <string>

#include "viewer.h"

namespace nerova_zel {

/** What there is to look at and how it is shown at first, as JSON. `route` is what computes frames. */
std::string session_document(const ViewSettings& settings, ViewedFrames& frames, std::uint64_t revision,
                             const std::string& route);

/** The tables of colours, as JSON. */
std::string tables_document();

/** {"error": sentence}. */
std::string error_document(const std::string& sentence);

}  // namespace nerova_zel
