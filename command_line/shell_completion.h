#pragma once

#include <string>

#include "cli_classes.h"

namespace nerova_zel {

/** A file for bash that completes commands, options, choices and file names. */
std::string bash_completion(const CLI::App& app);

/** The same for zsh, for a folder of its function path, to be called _nerova-polarize. */
std::string zsh_completion(const CLI::App& app);

}  // namespace nerova_zel
