#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "nerova_zel/logger.h"

namespace {

struct Configuration {
  std::string file = "nerova_zel.log";
  std::int32_t level = 2;
};

std::string trimmed(const std::string& text) {
  constexpr char blanks[] = " \t\r";
  const std::size_t first = text.find_first_not_of(blanks);
  return first == std::string::npos ? std::string() : text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

Configuration read_configuration(const char* file_name) {
  Configuration configuration;
  std::ifstream stream(file_name);
  for (std::string line; std::getline(stream, line);) {
    line.erase(std::min(line.find('#'), line.size()));
    const std::size_t equals = line.find('=');
    if (equals == std::string::npos) {
      continue;
    }
    const std::string key = trimmed(line.substr(0, equals));
    const std::string value = trimmed(line.substr(equals + 1));
    if (key == "file" && !value.empty()) {
      configuration.file = value;
    } else if (key == "level" && value.find_first_not_of("0123456789") == std::string::npos && !value.empty()) {
      configuration.level = static_cast<std::int32_t>(std::min(std::strtoul(value.c_str(), nullptr, 10), 1000UL));
    }
  }
  return configuration;
}

/** Present time, UTC, to the millisecond. */
std::string timestamp() {
  const auto now = std::chrono::system_clock::now();
  const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
  const auto since_epoch = std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch());
  std::tm date = {};
#if defined(_WIN32)
  gmtime_s(&date, &seconds);
#else
  gmtime_r(&seconds, &date);
#endif
  char day_and_time[32];
  std::strftime(day_and_time, sizeof(day_and_time), "%Y-%m-%dT%H:%M:%S", &date);
  char text[48];
  std::snprintf(text, sizeof(text), "%s.%03dZ", day_and_time, static_cast<int>(since_epoch.count() % 1000));
  return text;
}

class Log {
 public:
  Log(std::string module_name, Configuration configuration)
      : module_name_(std::move(module_name)), configuration_(std::move(configuration)) {}

  bool write(std::int32_t level, const char* source_file, std::int32_t source_line, const char* function_name,
             const std::string& message) {
    if (level > configuration_.level) {
      return false;
    }
    std::string line = timestamp() + '\t' + std::to_string(level) + '\t' + module_name_ + '\t' + source_file + ':' +
                       std::to_string(source_line) + '\t' + function_name + '\t' + message;
    for (char& character : line) {
      if (character == '\n' || character == '\r') {
        character = ' ';
      }
    }
    line += '\n';
    const std::lock_guard<std::mutex> lock(mutex_);
    if (file_ == nullptr) {
      file_.reset(std::fopen(configuration_.file.c_str(), "ab"));
    }
    // Flushed at once: what was logged must survive a crash of the program.
    return file_ != nullptr && std::fwrite(line.data(), 1, line.size(), file_.get()) == line.size() &&
           std::fflush(file_.get()) == 0;
  }

  int references = 0;  ///< guarded by the registry's mutex

 private:
  struct Close {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };

  const std::string module_name_;
  const Configuration configuration_;
  std::mutex mutex_;
  std::unique_ptr<std::FILE, Close> file_;
};

std::mutex registry_mutex;
std::map<std::pair<std::string, std::string>, Log> registry;

}  // namespace

void* zel_get_log(const char* module_name, const char* second_name, const char* configuration_file_name) {
  try {
    const std::lock_guard<std::mutex> lock(registry_mutex);
    std::pair<std::string, std::string> names(module_name, second_name);
    auto place = registry.find(names);
    if (place == registry.end()) {
      place = registry
                  .emplace(std::piecewise_construct, std::forward_as_tuple(std::move(names)),
                           std::forward_as_tuple(module_name, read_configuration(configuration_file_name)))
                  .first;
    }
    ++place->second.references;
    return &place->second;
  } catch (...) {
    return nullptr;
  }
}

std::int32_t zel_log(void* log, std::int32_t level, const char* source_file, std::int32_t source_line,
                     const char* function_name, const char* message) {
  try {
    return log != nullptr && static_cast<Log*>(log)->write(level, source_file, source_line, function_name, message) ? 0
                                                                                                                    : 1;
  } catch (...) {
    return 1;
  }
}

void zel_free_log(const char* module_name, const char* second_name) {
  try {
    const std::lock_guard<std::mutex> lock(registry_mutex);
    const auto place = registry.find({module_name, second_name});
    if (place != registry.end() && --place->second.references == 0) {
      registry.erase(place);
    }
  } catch (...) {  // NOLINT(bugprone-empty-catch): out of memory while looking the log up; it stays open
  }
}
