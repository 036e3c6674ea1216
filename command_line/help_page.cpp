#include "help_page.h"

#include <sstream>

#include "declared_options.h"

namespace nerova_zel {

namespace {

constexpr std::size_t line_width = 100;
constexpr std::size_t text_column = 32;

/** Words from `column` on, in lines that end before line_width; the first line begins there already. */
std::string wrapped(const std::string& text, std::size_t column) {
  std::istringstream words(text);
  std::string lines;
  std::size_t at = column;
  for (std::string word; words >> word;) {
    if (at > column && at + 1 + word.size() > line_width) {
      lines += "\n" + std::string(column, ' ');
      at = column;
    }
    lines += (at > column ? " " : "") + word;
    at += word.size() + (at > column ? 1 : 0);
  }
  return lines + "\n";
}

/** A name and what it is about, beside it or, where the name is long, below. */
std::string entry(const std::string& name, const std::string& text) {
  std::string line = "  " + name;
  if (line.size() + 2 > text_column) {
    line += "\n" + std::string(text_column, ' ');
  } else {
    line.resize(text_column, ' ');
  }
  return line + wrapped(text, text_column);
}

std::string joined(const std::vector<std::string>& names) {
  std::string list;
  for (const std::string& name : names) {
    list += (list.empty() ? "" : ", ") + name;
  }
  return list;
}

std::string entry(const DeclaredOption& option) {
  constexpr std::size_t longest_value = 34;
  std::string name = option.name.empty()
                         ? option.positional + (option.takes_many ? "..." : "")
                         : (option.short_name.empty() ? "    " : option.short_name + ", ") + option.name;
  std::string text = option.description;
  if (!option.name.empty() && !option.is_flag()) {
    const bool is_short = option.value.size() <= longest_value;
    name += " " + (is_short ? option.value : option.is_list ? "NAME,..." : "NAME");
    text += is_short ? "" : ": " + joined(option.choices);
  }
  if (!option.default_value.empty()) {
    text += " [" + option.default_value + "]";
  }
  return entry(name, text);
}

std::string usage(const CLI::App& app, const std::string& name, bool has_commands) {
  std::string line = "Usage: " + name + " ";
  if (has_commands) {
    return line + "COMMAND [options]\n";
  }
  for (const DeclaredOption& option : declared_options(app)) {
    const std::string argument = option.positional + (option.takes_many ? "..." : "");
    if (!option.positional.empty()) {
      line += (option.is_required ? argument : "[" + argument + "]") + " ";
    }
  }
  return line + "[options]\n";
}

}  // namespace

std::string HelpPage::make_help(const CLI::App* app, std::string name, CLI::AppFormatMode /*mode*/) const {
  const auto commands = declared_commands(*app);
  const auto options = declared_options(*app);
  std::ostringstream page;
  if (app->get_parent() != nullptr) {
    name = app->get_parent()->get_name() + " " + app->get_name();
  }
  page << wrapped(app->get_description() + ".", 0) << "\n" << usage(*app, name, !commands.empty());
  std::string arguments;
  for (const DeclaredOption& option : options) {
    arguments += option.name.empty() ? entry(option) : "";
  }
  for (const CLI::App* command : commands) {
    arguments += entry(command->get_name(), command->get_description());
  }
  page << (arguments.empty() ? "" : "\n" + arguments) << "\nOptions:\n";
  for (const DeclaredOption& option : options) {
    page << (option.name.empty() ? "" : entry(option));
  }
  return page.str() + (app->get_footer().empty() ? "" : "\n" + app->get_footer() + "\n");
}

}  // namespace nerova_zel
