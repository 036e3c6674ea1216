#pragma once

#include "cli_classes.h"

namespace nerova_zel {

/** calibrate: fits a calibration, writes it and its plot, and prints how good it is. */
void declare_calibrate(CLI::App& app);

}  // namespace nerova_zel
