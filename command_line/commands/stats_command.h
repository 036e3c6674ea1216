#pragma once

#include "cli_classes.h"

namespace nerova_zel {

/** stats: prints statistics of frames, and of all together. */
void declare_stats(CLI::App& app);

}  // namespace nerova_zel
