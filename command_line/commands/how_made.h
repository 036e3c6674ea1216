#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "batch/frame_sequence.h"
#include "commands/transform_job.h"

namespace nerova_zel {

// What every output says of itself: the texts Software, Output (its name, as --outputs takes it), Description (what its
// values mean), Source (the frame) and Options (all that its content depends on beside the frame).

/** What tells a frame from others, and from what its file held at another time. To be asked before it is read. */
std::string source_text(const FrameTicket& ticket);

/** The texts of a file of a frame's outputs. */
std::vector<TextEntry> how_made(const TransformRequest& request, const std::string& source, const OutputFile& file);

/** Whether a file has these texts: it was made from the same frame, in the same way, by this version. */
bool was_made_so(const std::filesystem::path& path, const std::vector<TextEntry>& texts);

/** What tells one calibration from another: a checksum of its file. */
std::string calibration_mark(const Bytes& file);

}  // namespace nerova_zel
