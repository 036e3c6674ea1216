#pragma once

#include <CLI/CLI.hpp>

namespace nerova_zel {

void declare_view(CLI::App& app);

}  // namespace nerova_zel
