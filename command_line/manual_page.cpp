#include "manual_page.h"

#include <CLI/App.hpp>
#include <sstream>

#include "declared_options.h"

namespace nerova_zel {

namespace {

/** Text as roff takes it for itself. */
std::string roff(const std::string& text) {
  std::string escaped;
  for (const char c : text) {
    if (c == '\\') {
      escaped += "\\e";
    } else if (c == '-') {
      escaped += "\\-";
    } else if ((c == '.' || c == '\'') && (escaped.empty() || escaped.back() == '\n')) {
      escaped += "\\&" + std::string(1, c);
    } else {
      escaped += c;
    }
  }
  return escaped;
}

void describe(std::ostringstream& page, const DeclaredOption& option) {
  page << ".TP\n";
  if (option.name.empty()) {
    page << "\\fI" << roff(option.positional) << "\\fR";
  } else {
    page << (option.short_name.empty() ? "" : "\\fB" + roff(option.short_name) + "\\fR, ");
    page << "\\fB" << roff(option.name) << "\\fR";
    if (!option.is_flag()) {
      page << " \\fI" << roff(option.value) << "\\fR";
    }
    if (!option.positional.empty()) {
      page << ", or \\fI" << roff(option.positional) << "\\fR";
    }
  }
  if (option.takes_many) {
    page << " ...";
  }
  page << "\n" << roff(option.description) << ".\n";
  if (!option.details.empty()) {
    page << roff(option.details) << "\n";
  }
  if (!option.default_value.empty()) {
    page << "Default: " << roff(option.default_value) << (option.default_value.back() == '.' ? "\n" : ".\n");
  }
}

/** Lines of a footer that show commands. */
void show_examples(std::ostringstream& page, const std::string& footer) {
  std::istringstream lines(footer);
  for (std::string line; std::getline(lines, line);) {
    if (line.rfind("  ", 0) == 0) {
      page << roff(line.substr(2)) << "\n";
    }
  }
}

}  // namespace

std::string manual_page(const CLI::App& app) {
  const std::string name = roff(app.get_name());
  const auto commands = declared_commands(app);
  std::ostringstream page;
  page << R"(.TH NEROVA\-POLARIZE 1 "" ")" << name << " " << NEROVA_VERSION << "\"\n"
       << ".ad l\n.SH NAME\n"
       << name << " \\- " << roff(app.get_description()) << "\n"
       << ".SH SYNOPSIS\n";
  for (const CLI::App* command : commands) {
    page << ".B " << name << " " << roff(command->get_name()) << "\n";
    for (const DeclaredOption& option : declared_options(*command)) {
      if (!option.positional.empty()) {
        page << (option.is_required ? "" : "[") << "\\fI" << roff(option.positional) << "\\fR"
             << (option.is_required ? "" : "]") << (option.takes_many ? " ...\n" : "\n");
      }
    }
    page << "[\\fIoptions\\fR]\n.br\n";
  }
  page << ".B " << name << "\n\\fB\\-\\-version\\fR | \\fB\\-\\-help\\fR\n"
       << ".SH COMMANDS\n";
  for (const CLI::App* command : commands) {
    page << ".SS " << roff(command->get_name()) << "\n" << roff(command->get_description()) << ".\n";
    for (const DeclaredOption& option : declared_options(*command)) {
      if (option.name != "--help") {
        describe(page, option);
      }
    }
  }
  page
      << ".SH EXIT STATUS\n"
      << roff(
             "0 when everything is done. 1 when a frame or the whole failed, or standard output cannot be written: one "
             "sentence on the standard error stream says which and why. 2 when the command line makes no sense, "
             "whatever is in the files. After an interruption the signal's own status.\n")
      << ".SH EXAMPLES\n.nf\n";
  for (const CLI::App* command : commands) {
    show_examples(page, command->get_footer());
  }
  page << ".fi\n";
  return page.str();
}

}  // namespace nerova_zel
