#include "commands/document_commands.h"

#include <CLI/App.hpp>
#include <memory>
#include <string>

#include "manual_page.h"
#include "option_declarations.h"
#include "results.h"
#include "shell_completion.h"
#include "usage_error.h"

namespace nerova_zel {

void declare_documents(CLI::App& app) {
  const auto shell = std::make_shared<std::string>();
  static const std::vector<std::string> shells = {"bash", "zsh"};
  CLI::App* completion = app.add_subcommand("completion", "Print what lets a shell complete this command");
  completion->add_option("SHELL", *shell, "Which shell")->type_name(braced(shells))->required();
  completion->footer("Examples:\n  source <(nerova-polarize completion bash)");
  completion->callback([&app, shell] {
    if (*shell != "bash" && *shell != "zsh") {
      throw UsageError("completion knows no shell " + *shell + "; it must be " + spoken(shells) + ".");
    }
    print_result(*shell == "bash" ? bash_completion(app) : zsh_completion(app));
  });
  CLI::App* manual = app.add_subcommand("manual", "Print the manual page, for man -l -");
  manual->callback([&app] { print_result(manual_page(app)); });
}

}  // namespace nerova_zel
