#pragma once

#include "cli_classes.h"

namespace nerova_zel {

/** completion and manual: what the program says of itself. */
void declare_documents(CLI::App& app);

}  // namespace nerova_zel
