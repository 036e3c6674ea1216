#pragma once

#include "cli_classes.h"

namespace nerova_zel {

/** record: lists cameras, and records the frames of one. */
void declare_record(CLI::App& app);

}  // namespace nerova_zel
