#pragma once

#include "cli_classes.h"

namespace nerova_zel {

/** simulate: writes a simulated frame, and on request its truth, and says how to transform it. */
void declare_simulate(CLI::App& app);

}  // namespace nerova_zel
