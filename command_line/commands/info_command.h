#pragma once

#include "cli_classes.h"

namespace nerova_zel {

/** "info": what files of frames are. */
void declare_info(CLI::App& app);

}  // namespace nerova_zel
