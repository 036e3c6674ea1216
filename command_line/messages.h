#pragma once

#include <cstdio>
#include <string>

namespace nerova_zel {

/** How much a command says beside its results. */
enum class Verbosity {
  quiet,   ///< what goes wrong, and nothing else
  usual,   ///< progress and notes too
  verbose  ///< and what a command uses and does in detail
};

/** Of the command that runs; set before its threads start. */
void set_verbosity(Verbosity verbosity);
Verbosity verbosity();

/** Where everything goes that is not a result: the standard error stream. */
std::FILE* messages();

/** Prints there. */
void print_message(const std::string& text);

/** Tells the user what is good to know though nothing fails, unless the command is to be quiet. */
void note(const std::string& sentence);

/** Tells a user who asked for more. */
void remark(const std::string& sentence);

}  // namespace nerova_zel
