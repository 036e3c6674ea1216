#pragma once

#include "batch_report.h"
#include "frame_job.h"
#include "frame_sequence.h"

namespace nerova_zel {

/**
 * Runs all frames through `request.jobs` threads at most, and reports each. A frame that fails does not keep the others
 * from being done. On an interruption the frames that were begun are ended and the rest is left. Throws Failure when
 * standard input cannot be read.
 */
void run_batch(FrameSequence& frames, const TransformRequest& request, const Library& library, BatchReport& report);

}  // namespace nerova_zel
