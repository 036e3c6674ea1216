#pragma once

#include "cli_classes.h"

namespace nerova_zel {

/** transform: transforms frames, writes the wanted outputs and prints a line about each. */
void declare_transform(CLI::App& app);

}  // namespace nerova_zel
