#include "logger/log_directory.h"

#include <cstdlib>
#include <fstream>

namespace nerova_zel::test {

namespace {

// Before any test changes the working directory, and with it the drive.
const std::string logger_file = std::filesystem::absolute(NEROVA_LOGGER).string();
const std::string writer_file = std::filesystem::absolute(NEROVA_LOG_WRITER).string();

}  // namespace

Lines lines_of(const std::string& file) {
  Lines lines;
  std::ifstream stream(file, std::ios::binary);
  for (std::string line; std::getline(stream, line);) {
    lines.push_back(line);
  }
  return lines;
}

std::vector<std::string> files_of(const std::string& file) {
  std::vector<std::string> files{file};
  for (std::string name = file + ".1"; std::filesystem::exists(name);
       name = file + '.' + std::to_string(files.size())) {
    files.insert(files.begin(), name);
  }
  return files;
}

std::vector<int> numbers_of(const std::string& file) {
  std::vector<int> numbers;
  for (const std::string& name : files_of(file)) {
    for (const std::string& line : lines_of(name)) {
      numbers.push_back(std::stoi(line));
    }
  }
  return numbers;
}

int run_log_writer(const std::string& module_name, int records) {
  std::string command = '"' + writer_file + "\" \"" + logger_file + "\" nerova_zel_logger.cfg " + module_name + ' ' +
                        std::to_string(records);
#if defined(_WIN32)
  command = '"' + command + '"';  // of which its shell takes away the first and the last quote
#endif
  return std::system(command.c_str());
}

void LogDirectory::configure(const std::string& text) {
  std::ofstream("nerova_zel_logger.cfg", std::ios::binary) << text;
}

}  // namespace nerova_zel::test
