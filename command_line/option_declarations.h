#pragma once

#include <CLI/App.hpp>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace nerova_zel {

// What CLI11 does not declare in one go. Type names say what a value may be: {a,b} one of these, {a,b},... a list of
// them, FILE and DIR paths. The first line of a description is for help and completions, what follows for the manual
// page, too: all are made from the declarations. A value that makes no
// sense is a UsageError that names the option.

/** "{a,b,c}". */
std::string braced(const std::vector<std::string>& names);

/** "a, b or c"; with more than five "one of a, b, c". */
std::string spoken(const std::vector<std::string>& names);

/** An option whose value is made from its text; `parse` throws UsageError. */
template <class Value>
CLI::Option* add_parsed(CLI::App* command, const std::string& name, Value& value,
                        const std::function<Value(const std::string&)>& parse, const std::string& help) {
  return command->add_option_function<std::string>(
      name, [&value, parse](const std::string& text) { value = parse(text); }, help);
}

/** Throws the UsageError for a value that is none of the names. */
[[noreturn]] void refuse_choice(const std::string& option, const std::string& text,
                                const std::vector<std::string>& names);

/** An option that takes one of the names of `table`, whose default is what `value` holds, if anything. */
template <class Value, class Holder, class Table>
CLI::Option* add_choice(CLI::App* command, const std::string& name, Holder& value, const Table& table,
                        const std::string& help) {
  std::vector<std::string> names;
  std::string default_name;
  for (const auto& [known, meaning] : table) {
    names.emplace_back(known);
    if (std::optional<Value>(value) == meaning) {
      default_name = known;
    }
  }
  const std::string long_name = name.substr(name.find("--"));
  const auto choose = [&value, table, long_name, names](const std::string& text) {
    for (const auto& [known, meaning] : table) {
      if (text == known) {
        value = meaning;
        return;
      }
    }
    refuse_choice(long_name, text, names);
  };
  return command->add_option_function<std::string>(name, choose, help)
      ->type_name(braced(names))
      ->default_str(default_name);
}

/** Lets the command take the option by a name that it had in earlier versions, too, which no document mentions. */
void add_former_name(CLI::App* command, const std::string& former, CLI::Option* option);

/** Accepts an option that earlier versions had and that changes nothing any more. */
void add_former_flag(CLI::App* command, const std::string& former);

/** -q and -v, which set the verbosity at once. */
void add_verbosity(CLI::App* command);

/** Lets the option take whole numbers from `least` to `greatest`. */
CLI::Option* limit(CLI::Option* option, long long least, long long greatest);

/** Lets the option take the numbers that `accepts` does; `range` says which those are. */
CLI::Option* limit(CLI::Option* option, const std::function<bool(double)>& accepts, const std::string& range);

}  // namespace nerova_zel
