#include "option_declarations.h"

#include "messages.h"
#include "usage_error.h"

namespace nerova_zel {

namespace {

std::string joined(const std::vector<std::string>& names, std::size_t count, const char* separator) {
  std::string list;
  for (std::size_t i = 0; i < count; ++i) {
    list += (i == 0 ? "" : separator) + names[i];
  }
  return list;
}

}  // namespace

std::string braced(const std::vector<std::string>& names) { return "{" + joined(names, names.size(), ",") + "}"; }

std::string spoken(const std::vector<std::string>& names) {
  if (names.size() > 5) {
    return "one of " + joined(names, names.size(), ", ");
  }
  return joined(names, names.size() - 1, ", ") + " or " + names.back();
}

void refuse_choice(const std::string& option, const std::string& text, const std::vector<std::string>& names) {
  throw UsageError(option + " " + text + " is unknown; it must be " + spoken(names) + ".");
}

void add_former_name(CLI::App* command, const std::string& former, CLI::Option* option) {
  command
      ->add_option_function<std::string>(former,
                                         [option](const std::string& text) {
                                           option->clear();
                                           option->add_result(text);
                                           option->run_callback();
                                         })
      ->group("");
}

void add_former_flag(CLI::App* command, const std::string& former) { command->add_flag(former)->group(""); }

void add_verbosity(CLI::App* command) {
  CLI::Option* quiet = command->add_flag_callback(
      "-q,--quiet", [] { set_verbosity(Verbosity::quiet); }, "Say only what goes wrong");
  command
      ->add_flag_callback(
          "-v,--verbose", [] { set_verbosity(Verbosity::verbose); }, "Say more: what is used, what is done")
      ->excludes(quiet);
}

CLI::Option* limit(CLI::Option* option, long long least, long long greatest) {
  const std::string name = option->get_name();
  option->check([=](const std::string& text) {
    long long value = 0;
    if (CLI::detail::lexical_cast(text, value) && (value < least || value > greatest)) {
      throw UsageError(name + " " + text + " is out of range; it must be " + std::to_string(least) + " to " +
                       std::to_string(greatest) + ".");
    }
    return std::string();  // what is no number is refused when it is converted
  });
  return option;
}

CLI::Option* limit(CLI::Option* option, const std::function<bool(double)>& accepts, const std::string& range) {
  const std::string name = option->get_name();
  option->check([=](const std::string& text) {
    double value = 0.0;
    if (CLI::detail::lexical_cast(text, value) && !accepts(value)) {
      throw UsageError(name + " must be " + range + ".");
    }
    return std::string();  // as above
  });
  return option;
}

}  // namespace nerova_zel
