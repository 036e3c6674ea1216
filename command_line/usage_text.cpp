#include "usage_text.h"

#include <CLI/App.hpp>
#include <algorithm>
#include <numeric>

#include "declared_options.h"

namespace nerova_zel {

namespace {

/** Characters to insert, remove or replace until one word is the other. */
std::size_t distance(const std::string& one, const std::string& other) {
  std::vector<std::size_t> row(other.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < one.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i + 1;
    for (std::size_t k = 0; k < other.size(); ++k) {
      const std::size_t replaced = diagonal + (one[i] == other[k] ? 0 : 1);
      diagonal = row[k + 1];
      row[k + 1] = std::min({replaced, diagonal + 1, row[k] + 1});
    }
  }
  return row.back();
}

/** "; did you mean X?" where a name is near, else what leads to help. */
std::string suggestion(const std::string& word, const std::vector<std::string>& names, const std::string& program) {
  const std::string* nearest = nullptr;
  std::size_t least = std::max<std::size_t>(2, word.size() / 3) + 1;
  for (const std::string& name : names) {
    // A word that is cut short is near, however much is missing.
    const bool is_start = word.size() > 3 && name.rfind(word, 0) == 0;
    const std::size_t far = is_start ? 1 : distance(word, name);
    if (far < least) {
      least = far;
      nearest = &name;
    }
  }
  return nearest != nullptr ? "; did you mean " + *nearest + "?" : "; see " + program + " --help.";
}

std::string unknown_option(const std::string& word, const CLI::App& app, const CLI::App* command) {
  const std::string option = word.substr(0, word.find('='));
  std::vector<std::string> names;
  for (const DeclaredOption& declared : declared_options(command != nullptr ? *command : app)) {
    if (!declared.name.empty()) {
      names.push_back(declared.name);
    }
  }
  if (command == nullptr) {
    return "unknown option " + option + suggestion(option, names, app.get_name());
  }
  const std::string call = app.get_name() + " " + command->get_name();
  if (std::find(names.begin(), names.end(), option) != names.end()) {
    return option + " must follow the command: " + call + " " + option + ".";
  }
  return "unknown option " + option + " of " + command->get_name() + suggestion(option, names, call);
}

/** What the parser says of a value, in our words. */
std::string describe_value(const CLI::ParseError& error, const CLI::App& command) {
  std::string said = error.what();
  if (const std::string head = "Could not convert: "; said.rfind(head, 0) == 0) {
    return said.substr(head.size()) + " makes no sense";
  }
  if (const std::size_t colon = said.find(": 1 required "); colon != std::string::npos) {
    return said.substr(0, colon) + " needs a value";
  }
  if (const std::size_t colon = said.find(": At Most 1 required"); colon != std::string::npos) {
    return said.substr(0, colon) + " is given more than once";
  }
  if (const std::size_t end = said.find(" is required"); end != std::string::npos) {
    std::string name = said.substr(0, end);
    for (const DeclaredOption& option : declared_options(command)) {
      name = !option.positional.empty() && name == option.name ? option.positional : name;
    }
    return name + " is missing";
  }
  return said;
}

}  // namespace

std::string describe_parse_error(const CLI::App& app, const CLI::ParseError& error) {
  const auto parsed = app.get_subcommands();
  const CLI::App* const command = parsed.empty() ? nullptr : parsed.front();
  const std::vector<std::string> unknown = app.remaining(true);
  if (!unknown.empty() && unknown.front().size() > 1 && unknown.front()[0] == '-') {
    return unknown_option(unknown.front(), app, command);
  }
  std::vector<std::string> commands;
  for (const CLI::App* known : declared_commands(app)) {
    commands.push_back(known->get_name());
  }
  if (command == nullptr) {
    return unknown.empty()
               ? "a command is missing; see " + app.get_name() + " --help."
               : "unknown command " + unknown.front() + suggestion(unknown.front(), commands, app.get_name());
  }
  const std::string help = "; see " + app.get_name() + " " + command->get_name() + " --help.";
  return (unknown.empty() ? describe_value(error, *command) : "unexpected argument " + unknown.front()) + help;
}

}  // namespace nerova_zel
