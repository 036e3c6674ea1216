#pragma once

namespace nerova_zel {

/** Runs what the arguments ask for. Returns the exit code: 0, 1 for a failure, 2 for a line that makes no sense. */
int run_command_line(int argc, const char* const* argv);

}  // namespace nerova_zel
