#pragma once

#include "frame_query.h"
#include "reply.h"

namespace nerova_zel {

/** The images of a frame as docs/developer/view-protocol.md lays them out. Throws BadRequest and what reading does. */
Reply image_reply(const Query& query, const ViewSettings& settings, ViewedFrames& frames, ComputedFrames& computed);

}  // namespace nerova_zel
