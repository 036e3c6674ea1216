#pragma once

#include "cli_classes.h"

namespace nerova_zel {

/** view: serves a page that shows frames. */
void declare_view(CLI::App& app);

}  // namespace nerova_zel
