#pragma once

#include "cli_classes.h"
#include "frame_pictures.h"

namespace nerova_zel {

// Options of pictures to look at. All refer to what must outlive parsing.

/** --azimuth-style. */
void add_azimuth_style(CLI::App* command, AzimuthStyle& style);

/** --degree-max and --power-max; an end that is not said stays 0. */
void add_scale_ends(CLI::App* command, PictureScales& ends);

/** --output-max. */
void add_output_maximum(CLI::App* command, int& output_maximum);

}  // namespace nerova_zel
