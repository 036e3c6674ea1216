// Writes numbered records and ends without giving the log back: log_writer LOGGER CONFIGURATION NAME COUNT

#include <cstdlib>
#include <string>

#include "logger/loaded_logger.h"

int main(int argument_count, char** arguments) {
  if (argument_count != 5) {
    return 2;
  }
  static const auto* const logger = new nerova_zel::test::LoadedLogger(arguments[1]);  // stays loaded to the end
  const std::string name = arguments[3];
  void* const log = logger->get_log(name.c_str(), "", arguments[2]);
  const int count = std::atoi(arguments[4]);
  for (int i = 0; i < count; ++i) {
    const std::string message = std::to_string(i) + ' ' + std::string(static_cast<std::size_t>(i % 97), name[0]);
    if (logger->log(log, 7, "source.cpp", 1, "function", message.c_str()) != 0) {
      return 1;
    }
  }
  return 0;
}
