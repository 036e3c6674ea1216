#pragma once

#include <CLI/CLI.hpp>

#include "calibrate_command.h"
#include "simulate_command.h"
#include "stats_command.h"
#include "transform_request.h"

namespace nerova_zel {

/** Where the values of the command line go. */
struct CommandOptions {
  TransformOptions transform;
  StatsOptions stats;
  CalibrateOptions calibrate;
  SimulateOptions simulate;
  std::string shell;
};

/**
 * Declares all commands, which run as the command line is parsed. Help, completions and manual page are made from these
 * declarations. Type names say what a value may be: {a,b} one of these, {a,b},... a list of them, FILE and DIR paths.
 */
void declare_commands(CLI::App& app, CommandOptions& options);

}  // namespace nerova_zel
