// The logger's reader of its configuration; every pattern that it takes also has to print a record.

#include "configuration.h"

#include <spdlog/formatter.h>

#include <algorithm>
#include <cstdint>
#include <memory>

#include "fuzz/finding.h"
#include "fuzz/memory_file.h"
#include "record.h"

namespace nerova_zel::test {
namespace {

using logger::Configuration;

void check(const Configuration& configuration) {
  require(!configuration.file.empty(), "a log file without a name");
  require(configuration.level >= 0, "a negative level");
  require(configuration.kept_files <= 999, "more kept files than there may be");
}

void print_record(const std::string& pattern) {
  const spdlog::source_loc source("D:\\folder/source.cpp", 0, "function");
  logger::Record record(source, "MODULE", spdlog::level::info, "message {} %");
  record.number = 7;
  spdlog::memory_buf_t line;
  logger::make_record_formatter(pattern)->format(record, line);
  require(line.size() > 0 && line[line.size() - 1] == '\n', "a record without its line's end");
}

}  // namespace
}  // namespace nerova_zel::test

// NOLINTNEXTLINE(readability-identifier-naming): the name is libFuzzer's
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using namespace nerova_zel::test;
  const MemoryFile file(bytes, size);
  const auto reading = nerova_zel::logger::read_configuration(file.path().c_str());
  check(reading.configuration);
  print_record(reading.configuration.pattern);
  const auto most_lines = 1 + std::count(bytes, bytes + size, '\n');
  std::int32_t last = 0;
  for (const auto& fault : reading.faults) {
    require(fault.line > last && fault.line <= most_lines, "a fault at a line that is not there, or out of order");
    require(!fault.reason.empty(), "a fault without a reason");
    last = fault.line;
  }
  return 0;
}
