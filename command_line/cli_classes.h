#pragma once

// What headers need of CLI11: names only. Sources that use them include <CLI/App.hpp>.
namespace CLI {  // NOLINT(readability-identifier-naming): not ours
class App;
class Option;
class ParseError;
}  // namespace CLI
