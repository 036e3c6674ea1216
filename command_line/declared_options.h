#pragma once

#include <string>
#include <vector>

#include "cli_classes.h"

namespace nerova_zel {

/** An option or positional argument, as completions and the manual page need it. */
struct DeclaredOption {
  /** "--name"; empty for a positional argument. */
  std::string name;
  /** "-n"; empty for most. */
  std::string short_name;
  /** Of a positional argument. */
  std::string positional;
  /** What to call the value; empty for a flag. */
  std::string value;
  /** Without a full stop. */
  std::string description;
  /** What the manual page says beyond it, in sentences. */
  std::string details;
  std::string default_value;
  /** What the value may be, if that is a choice. */
  std::vector<std::string> choices;
  /** Whether the value is a list with commas between. */
  bool is_list = false;
  bool takes_many = false;
  bool is_required = false;

  bool is_flag() const { return value.empty(); }
};

/** In the order of declaration, --help first; without those that are not to be shown. */
std::vector<DeclaredOption> declared_options(const CLI::App& app);

/** Every command of the program. */
std::vector<const CLI::App*> declared_commands(const CLI::App& app);

}  // namespace nerova_zel
