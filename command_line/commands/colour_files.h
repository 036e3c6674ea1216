#pragma once

#include <vector>

#include "commands/output_files.h"
#include "processor/sensor_transformer.h"

namespace nerova_zel {

/**
 * The files of a colour sensor's frame in place of those of a frame without colours: an array of all colours
 * (FRAME_power_r_g1_g2_b.npy, the colour is its first index), a picture for each (FRAME_power_r.png), and one sheet.
 */
std::vector<OutputFile> colour_files(const std::vector<OutputFile>& files, const ColourSettings& colour);

}  // namespace nerova_zel
