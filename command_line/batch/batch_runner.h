#pragma once

#include <functional>
#include <memory>

#include "batch/batch_report.h"
#include "batch/frame_job.h"
#include "batch/frame_sequence.h"

namespace nerova_zel {

/** Called by each thread for a job of its own. */
using MakeJob = std::function<std::unique_ptr<FrameJob>()>;

/**
 * Runs all frames through `jobs` threads at most, and reports each. A frame that fails does not keep the others
 * from being done. On an interruption the frames that were begun are ended and the rest is left. Throws Failure when
 * standard input cannot be read or standard output cannot be written; frames that were begun are ended then too.
 */
void run_batch(FrameSequence& frames, int jobs, const MakeJob& make_job, BatchReport& report);

}  // namespace nerova_zel
