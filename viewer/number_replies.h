#pragma once

#include "frame_query.h"
#include "reply.h"

namespace nerova_zel {

// Numbers of frames, as docs/developer/view-protocol.md has them. All throw BadRequest and what reading does.

/** Statistics of a region, and how its angles are distributed. */
Reply region_reply(const Query& query, const ViewSettings& settings, ViewedFrames& frames, ComputedFrames& computed);

/** A pixel's values in frames of a source. */
Reply series_reply(const Query& query, const ViewSettings& settings, ViewedFrames& frames, ComputedFrames& computed);

/** An image as a file. */
Reply export_reply(const Query& query, const ViewSettings& settings, ViewedFrames& frames, ComputedFrames& computed);

}  // namespace nerova_zel
