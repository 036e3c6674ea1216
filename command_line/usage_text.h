#pragma once

#include <string>

#include "cli_classes.h"

namespace nerova_zel {

/** The sentence for a command line that could not be parsed; of an unknown word it suggests the nearest known one. */
std::string describe_parse_error(const CLI::App& app, const CLI::ParseError& error);

}  // namespace nerova_zel
