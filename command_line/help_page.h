#pragma once

#include <CLI/App.hpp>
#include <string>

namespace nerova_zel {

/** Help of the program or of a command, in lines of at most 100 columns. */
class HelpPage : public CLI::FormatterBase {
 public:
  std::string make_help(const CLI::App* app, std::string name, CLI::AppFormatMode mode) const override;
};

}  // namespace nerova_zel
