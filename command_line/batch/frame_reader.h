#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "batch/frame_sequence.h"
#include "frames/bit_depth.h"
#include "frames/headerless_frame.h"
#include "frames/raw_frame.h"
#include "image.h"

namespace nerova_zel {

/**
 * Finds out how many frames the input's file holds: pages of a picture file, or headerless frames, a last one that is
 * cut short included. 1 for what cannot be read.
 */
void count_frames_of(FrameInput& input, const std::optional<HeaderlessLayout>& headerless);

/**
 * Reads the ticket's frame into `frame`: a picture, or with `headerless` pixels without a header. Of standard input
 * `bytes` are the frame's; of a file they are room to work in, kept from frame to frame. `depth` is what will be made
 * of it, where that is known: pixels that need no unpacking are counted by it. Throws Failure.
 */
void read_frame(const FrameTicket& ticket, const std::optional<HeaderlessLayout>& headerless, Bytes& bytes,
                RawFrame& frame, const DepthChoice& depth = {});

/** The frame of a file that must hold a single one. Throws Failure. */
RawFrame read_only_frame(const std::string& path, const std::optional<HeaderlessLayout>& headerless);

}  // namespace nerova_zel
