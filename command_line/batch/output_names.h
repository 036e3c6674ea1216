#pragma once

#include <string>
#include <vector>

#include "batch/frame_inputs.h"

namespace nerova_zel {

/**
 * Throws UsageError if outputs of two inputs would have one name, or an output that of an input. `endings` are what the
 * names of outputs in `directory` end in ("_power.png").
 */
void check_output_names(const std::vector<FrameInput>& inputs, const std::string& directory,
                        const std::vector<std::string>& endings);

}  // namespace nerova_zel
