#pragma once

#include <string>

#include "cli_classes.h"

namespace nerova_zel {

/** The manual page of section 1, in the macros of man(7). */
std::string manual_page(const CLI::App& app);

}  // namespace nerova_zel
