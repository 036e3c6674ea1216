#include "declared_options.h"

#include <CLI/App.hpp>
#include <sstream>

namespace nerova_zel {

std::vector<DeclaredOption> declared_options(const CLI::App& app) {
  std::vector<DeclaredOption> options;
  for (const CLI::Option* option : app.get_options()) {
    if (option->get_group().empty()) {
      continue;
    }
    DeclaredOption declared;
    if (!option->get_lnames().empty()) {
      declared.name = "--" + option->get_lnames().front();
    }
    if (!option->get_snames().empty()) {
      declared.short_name = "-" + option->get_snames().front();
    }
    if (option->get_positional()) {
      declared.positional = option->get_name(true, false);
    }
    const std::string& text = option->get_description();
    const std::size_t line = text.find('\n');
    declared.description = text.substr(0, line);
    declared.details = line == std::string::npos ? "" : text.substr(line + 1);
    declared.is_required = option->get_required();
    declared.takes_many = option->get_items_expected_max() > 1;
    if (option->get_items_expected_max() > 0) {
      declared.value = option->get_type_name();
      declared.default_value = option->get_default_str();
    }
    const std::size_t end = declared.value.find('}');
    if (declared.value.rfind('{', 0) == 0 && end != std::string::npos) {
      declared.is_list = end + 1 < declared.value.size();
      std::istringstream names(declared.value.substr(1, end - 1));
      for (std::string name; std::getline(names, name, ',');) {
        declared.choices.push_back(name);
      }
    }
    options.push_back(declared);
  }
  return options;
}

std::vector<const CLI::App*> declared_commands(const CLI::App& app) { return app.get_subcommands({}); }

}  // namespace nerova_zel
