#include "commands/document_commands.h"

#include <cstdio>
#include <memory>
#include <string>

#include "failure.h"
#include "manual_page.h"
#include "option_declarations.h"
#include "shell_completion.h"

namespace nerova_zel {

void declare_documents(CLI::App& app) {
  const auto shell = std::make_shared<std::string>();
  static const std::vector<std::string> shells = {"bash", "zsh"};
  CLI::App* completion = app.add_subcommand("completion", "Print the file that lets a shell complete this command");
  completion->add_option("SHELL", *shell, "Which shell")->type_name(braced(shells))->required();
  completion->footer("Examples:\n  source <(nerova-polarize completion bash)");
  completion->callback([&app, shell] {
    if (*shell != "bash" && *shell != "zsh") {
      throw Failure("completion knows no shell " + *shell + "; it must be " + spoken(shells) + ".");
    }
    std::fputs((*shell == "bash" ? bash_completion(app) : zsh_completion(app)).c_str(), stdout);
  });
  CLI::App* manual = app.add_subcommand("manual", "Print the manual page, for man -l -");
  manual->callback([&app] { std::fputs(manual_page(app).c_str(), stdout); });
}

}  // namespace nerova_zel
