#include "shell_completion.h"

#include <CLI/App.hpp>
#include <algorithm>
#include <sstream>

#include "declared_options.h"

namespace nerova_zel {

namespace {

std::string joined(const std::vector<std::string>& words, const char* separator) {
  std::string line;
  for (const std::string& word : words) {
    line += (line.empty() ? "" : separator) + word;
  }
  return line;
}

std::vector<std::string> names_of(const std::vector<const CLI::App*>& commands) {
  std::vector<std::string> names;
  names.reserve(commands.size());
  for (const CLI::App* command : commands) {
    names.push_back(command->get_name());
  }
  return names;
}

std::vector<std::string> names_of(const std::vector<DeclaredOption>& options) {
  std::vector<std::string> names;
  for (const DeclaredOption& option : options) {
    if (!option.name.empty()) {
      names.push_back(option.name);
    }
  }
  return names;
}

bool is_path(const DeclaredOption& option) {
  return option.value.find("FILE") != std::string::npos || option.value == "DIR";
}

/** What bash does for the value of an option, or for a positional argument. */
std::string bash_action(const DeclaredOption& option) {
  if (!option.choices.empty()) {
    return std::string(option.is_list ? "list" : "choices") + "=\"" + joined(option.choices, " ") + "\"";
  }
  return is_path(option) ? "return" : "compopt +o default 2> /dev/null; return";
}

/** A description up to where it goes into detail, between brackets and quotes of zsh. */
std::string zsh_description(const std::string& text) {
  std::string escaped;
  for (const char c : text.substr(0, text.find_first_of(".;:("))) {
    if (c == '\'') {
      escaped += "'\\''";
    } else {
      escaped += (c == '[' || c == ']' || c == '\\' ? "\\" : "") + std::string(1, c);
    }
  }
  escaped.erase(escaped.find_last_not_of(' ') + 1);
  return escaped;
}

std::string zsh_action(const DeclaredOption& option) {
  std::string name = option.choices.empty() ? option.value : "value";
  std::replace(name.begin(), name.end(), ':', ' ');
  const std::string head = ":" + name + ":";
  if (!option.choices.empty()) {
    return head + (option.is_list ? "_values -s , value " + joined(option.choices, " ")
                                  : "(" + joined(option.choices, " ") + ")");
  }
  if (option.value == "DIR") {
    return head + "_files -/";
  }
  return head + (is_path(option) ? "_files" : " ");
}

std::string zsh_action_of_value(const DeclaredOption& option) { return option.is_flag() ? "" : zsh_action(option); }

/** `exclusion` is what cannot follow; by default an option's other name. */
std::string zsh_specification(const DeclaredOption& option, const std::string& exclusion = "") {
  if (option.name.empty()) {
    return (option.takes_many ? "*" : "") + zsh_action(option);
  }
  std::string names = option.name + (option.is_flag() ? "" : "=");
  std::string head = option.takes_many ? "*" : exclusion;
  if (!option.short_name.empty()) {
    // Both names, of which either excludes the other; the braces are the shell's.
    head = exclusion.empty() ? "(" + option.short_name + " " + option.name + ")" : exclusion;
    names = "'{" + option.short_name + (option.is_flag() ? "" : "+") + "," + names + "}'";
  }
  return head + names + "[" + zsh_description(option.description) + "]" + zsh_action_of_value(option);
}

}  // namespace

std::string bash_completion(const CLI::App& app) {
  const std::string function = "_nerova_polarize";
  const auto commands = declared_commands(app);
  std::ostringstream script;
  script << "# bash completion of " << app.get_name() << "; made by: " << app.get_name() << " completion bash\n"
         << function << "() {\n"
         << "  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD-1]}\n"
         << "  local command='' choices='' list='' options='" << joined(names_of(declared_options(app)), " ") << "' i\n"
         << "  COMPREPLY=()\n"
         << "  # --name=value comes as three words.\n"
         << "  [[ $current == = ]] && current=\n"
         << "  [[ $previous == = ]] && previous=${COMP_WORDS[COMP_CWORD-2]}\n"
         << "  for ((i = 1; i < COMP_CWORD; ++i)); do\n"
         << "    case ${COMP_WORDS[i]} in\n"
         << "      " << joined(names_of(commands), "|") << ") command=${COMP_WORDS[i]}; break ;;\n"
         << "    esac\n"
         << "  done\n"
         << "  case $command,$previous in\n";
  for (const CLI::App* command : commands) {
    for (const DeclaredOption& option : declared_options(*command)) {
      if (!option.name.empty() && !option.is_flag()) {
        script << "    " << command->get_name() << "," << option.name;
        if (!option.short_name.empty()) {
          script << "|" << command->get_name() << "," << option.short_name;
        }
        script << ") " << bash_action(option) << " ;;\n";
      }
    }
  }
  script << "  esac\n"
         << "  if [[ -z $choices$list ]]; then\n"
         << "    case $command in\n"
         << "      '') choices='" << joined(names_of(commands), " ") << "' ;;\n";
  for (const CLI::App* command : commands) {
    const auto options = declared_options(*command);
    script << "      " << command->get_name() << ") options='" << joined(names_of(options), " ") << "'";
    for (const DeclaredOption& option : options) {
      if (option.name.empty() && !option.choices.empty()) {
        script << "; " << bash_action(option);
      }
    }
    script << " ;;\n";
  }
  script << "    esac\n"
         << "    [[ $current == -* ]] && choices=$options\n"
         << "  fi\n"
         << "  if [[ -n $list ]]; then\n"
         << "    compopt -o nospace 2> /dev/null\n"
         << "    COMPREPLY=($(compgen -P \"${current%\"${current##*,}\"}\" -W \"$list\" -- \"${current##*,}\"))\n"
         << "  elif [[ -n $choices ]]; then\n"
         << "    COMPREPLY=($(compgen -W \"$choices\" -- \"$current\"))\n"
         << "  fi\n"
         << "}\n"
         << "complete -o default -F " << function << " " << app.get_name() << "\n";
  return script.str();
}

std::string zsh_completion(const CLI::App& app) {
  const auto commands = declared_commands(app);
  std::ostringstream script;
  script << "#compdef " << app.get_name() << "\n"
         << "# zsh completion of " << app.get_name() << "; made by: " << app.get_name() << " completion zsh\n"
         << "_nerova_polarize() {\n"
         << "  local context state state_descr line\n"
         << "  typeset -A opt_args\n"
         << "  _arguments -C";
  for (const DeclaredOption& option : declared_options(app)) {
    script << " \\\n    '" << zsh_specification(option, "(- *)") << "'";
  }
  script << " \\\n    '1:command:->command' \\\n    '*::argument:->argument'\n"
         << "  case $state in\n"
         << "    command)\n"
         << "      local -a commands=(\n";
  for (const CLI::App* command : commands) {
    script << "        '" << command->get_name() << ":" << zsh_description(command->get_description()) << "'\n";
  }
  script << "      )\n"
         << "      _describe command commands ;;\n"
         << "    argument)\n"
         << "      case $words[1] in\n";
  for (const CLI::App* command : commands) {
    script << "        " << command->get_name() << ")\n          _arguments";
    for (const DeclaredOption& option : declared_options(*command)) {
      script << " \\\n            '" << zsh_specification(option) << "'";
    }
    script << " ;;\n";
  }
  script << "      esac ;;\n"
         << "  esac\n"
         << "}\n"
         << "_nerova_polarize \"$@\"\n";
  return script.str();
}

}  // namespace nerova_zel
